#include "RunFixture.h"

#include <condition_variable>
#include <future>
#include <mutex>

namespace velmorak::test {
namespace {

/// Where a kind waits until the test releases it. Shared by both, because either may be the last.
class Gate {
public:
    /// Called in the kind.
    void pass() {
        std::unique_lock lock(mutex);
        if (isOpen) {
            return;
        }
        isEntered = true;
        change.notify_all();
        change.wait(lock, [this] { return isOpen; });
        isPassed = true;
        change.notify_all();
    }
    void waitUntilEntered() {
        std::unique_lock lock(mutex);
        change.wait(lock, [this] { return isEntered; });
    }
    void open() {
        const std::scoped_lock lock(mutex);
        isOpen = true;
        change.notify_all();
    }
    void waitUntilPassed() {
        std::unique_lock lock(mutex);
        change.wait(lock, [this] { return isPassed || !isEntered; });
    }

private:
    std::mutex mutex;
    std::condition_variable change;
    bool isEntered = false;
    bool isOpen = false;
    bool isPassed = false;
};

/// Kinds that ignore a stop until the test releases them, in runs without a period of grace.
class UnresponsiveKinds : public RunTest {
protected:
    UnresponsiveKinds() {
        runner.waitWith([](auto&, auto&, const auto&) {});
        add(pass, "first", {{"value", "2"}});
        add(deaf, "deaf");
        add(pass, "after");
        wire("first", "number", "deaf", "value");
        wire("deaf", "number", "after", "value");
    }
    ~UnresponsiveKinds() override { letGo(); }

    void letGo() {
        gate->open();
        gate->waitUntilPassed();
    }

    void runAndStopWhenItBlocks() {
        auto caller = std::async(std::launch::async, [this] {
            gate->waitUntilEntered();
            runner.stop();
        });
        run();
        caller.get();
    }

    std::shared_ptr<Gate> gate = std::make_shared<Gate>();
    PassKind pass;
    FreeFunction deaf{"Deaf",
                      {{numberInput("value")}, {output("number", ValueType::Number)}},
                      [gate = gate](const Arguments& arguments, Results& results, RunContext& context) {
                          const std::shared_ptr<Gate> own = gate;  // The kind may go meanwhile.
                          own->pass();
                          context.warn("it hears again");
                          results.set("number", arguments.number("value"));
                      }};
};

TEST_F(UnresponsiveKinds, areNamedAndLeftBehindAndTheRunEnds) {
    runAndStopWhenItBlocks();
    EXPECT_TRUE(report.wasStopped);
    EXPECT_EQ(status("first"), NodeStatus::Done);
    EXPECT_EQ(status("deaf"), NodeStatus::Unfinished);
    EXPECT_EQ(status("after"), NodeStatus::Unfinished);
    EXPECT_TRUE(
        wasSaid("Deaf \"deaf\" does not stop; its thread is left behind, and its kind is refused until the "
                "program is restarted"));
    EXPECT_TRUE(wasSaid("Deaf \"deaf\": not finished because the run was stopped"));
    EXPECT_TRUE(wasSaid("The run was stopped."));
}

TEST_F(UnresponsiveKinds, areRefusedFromThenOnAndTheOthersRun) {
    runAndStopWhenItBlocks();
    run();
    EXPECT_EQ(status("first"), NodeStatus::Reused);
    EXPECT_EQ(status("deaf"), NodeStatus::Failed);
    EXPECT_EQ(sentence("deaf"),
              "its kind did not stop in an earlier run and is refused until the program is restarted");
    EXPECT_EQ(sentence("after"), "not run because of \"deaf\"");
    EXPECT_EQ(deaf.evaluated, 1);
}

TEST_F(UnresponsiveKinds, sayAndChangeNothingMoreWhenTheyReturn) {
    runAndStopWhenItBlocks();
    messages.str("");
    letGo();
    run();
    EXPECT_FALSE(wasSaid("Deaf \"deaf\": warning: it hears again"));
    EXPECT_EQ(status("deaf"), NodeStatus::Failed);
}

TEST_F(UnresponsiveKinds, amongTheThreadsOfAStreamAreLeftBehindToo) {
    // Kinds are never unloaded: a thread that is left behind is still in its call of one.
    static RowSource rows;
    static SumKind sum;
    sum.beforeFill = [gate = gate](const Chunk& chunk) {
        if (chunk.number == 1) {
            const std::shared_ptr<Gate> own = gate;
            own->pass();
        }
    };
    pipeline.nodes.clear();
    add(rows, "rows", {{"rows", std::to_string(6 * chunkRows)}});
    add(sum, "sum");
    wire("rows", "table", "sum", "table");
    runner.setThreads(2);
    runAndStopWhenItBlocks();
    EXPECT_TRUE(report.wasStopped);
    EXPECT_EQ(status("sum"), NodeStatus::Unfinished);
    EXPECT_TRUE(
        wasSaid("Sum \"sum\" does not stop; its thread is left behind, and its kind is refused until the "
                "program is restarted"));
    EXPECT_EQ(sum.finished, 0);
    letGo();
}

TEST_F(UnresponsiveKinds, thatStopInTimeAreNotRefused) {
    runner.waitWith([this](Mutex& mutex, ConditionVariable& change, const auto& isOver)
                        VELMORAK_NO_THREAD_SAFETY_ANALYSIS {
                            gate->open();
                            while (!isOver()) {
                                change.wait(mutex);
                            }
                        });
    runAndStopWhenItBlocks();
    EXPECT_EQ(status("first"), NodeStatus::Done);
    run();
    EXPECT_EQ(status("after"), NodeStatus::Done);
}

}  // namespace
}  // namespace velmorak::test
