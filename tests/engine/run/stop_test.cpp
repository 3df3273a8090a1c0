#include "RunFixture.h"

#include <future>
#include <thread>

namespace velmorak::test {
namespace {

/// A source that waits in its third chunk until the run is asked to end.
class Stop : public RunTest {
protected:
    Stop() {
        rows.beforeChunk = [this](std::uint64_t chunk, RunContext& context) {
            if (chunk == 2 && isWaiting) {
                isWaiting = false;
                reached.set_value();
                waitForStop(context);
            }
        };
        add(pass, "first", {{"value", "2"}});
        add(rows, "rows", {{"rows", std::to_string(5 * chunkRows)}});
        add(sum, "sum");
        add(pass, "after");
        wire("first", "number", "sum", "scale");
        wire("rows", "table", "sum", "table");
        wire("sum", "sum", "after", "value");
    }

    static void waitForStop(const RunContext& context) {
        while (!context.isStopping()) {
            std::this_thread::yield();
        }
        throw Stopped();
    }

    /// Runs, and calls on another thread when the source waits.
    template <typename Call>
    void runAnd(Call&& call) {
        auto caller = std::async(std::launch::async, [&] {
            reached.get_future().wait();
            call();
        });
        run();
        caller.get();
    }

    RowSource rows;
    SumKind sum;
    PassKind pass;
    std::promise<void> reached;
    std::atomic<bool> isWaiting = true;
};

TEST_F(Stop, endsTheRunInTheMiddleAndKeepsWhatIsComplete) {
    runAnd([&] { runner.stop(); });
    EXPECT_TRUE(report.wasStopped);
    EXPECT_FALSE(report.hasFailure());
    EXPECT_EQ(outcome("first"), Outcome::Done);
    EXPECT_EQ(outcome("rows"), Outcome::Unfinished);
    EXPECT_EQ(outcome("sum"), Outcome::Unfinished);
    EXPECT_EQ(outcome("after"), Outcome::Unfinished);
    EXPECT_EQ(sum.finished, 0);
    EXPECT_TRUE(wasSaid("Sum \"sum\": not finished because the run was stopped"));
    EXPECT_TRUE(wasSaid("The run was stopped."));
}

TEST_F(Stop, doesNotReachTheNextRun) {
    runAnd([&] { runner.stop(); });
    run();
    EXPECT_FALSE(report.wasStopped);
    EXPECT_EQ(outcome("after"), Outcome::Done);
}

TEST_F(Stop, keepsNoIncompleteResult) {
    start("after");
    runAnd([&] { runner.stop(); });
    run();
    EXPECT_EQ(outcome("sum"), Outcome::Done);
    EXPECT_EQ(outcome("first"), Outcome::Reused);
}

TEST_F(Stop, withoutARunIsHarmless) {
    isWaiting = false;
    runner.stop();
    run();
    EXPECT_FALSE(report.wasStopped);
    EXPECT_EQ(outcome("after"), Outcome::Done);
    runner.stop();
    runner.reset();
    run();
    EXPECT_FALSE(report.wasStopped);
    EXPECT_EQ(outcome("after"), Outcome::Done);
}

TEST_F(Stop, ofAFunctionLeavesItUnfinished) {
    std::promise<void> started;
    const FreeFunction waiting("Wait", {}, [&](const Arguments&, Results&, RunContext& context) {
        started.set_value();
        waitForStop(context);
    });
    pipeline.nodes.clear();
    add(waiting, "wait");
    auto caller = std::async(std::launch::async, [&] {
        started.get_future().wait();
        runner.stop();
    });
    run();
    EXPECT_EQ(outcome("wait"), Outcome::Unfinished);
    EXPECT_EQ(sentence("wait"), "not finished because the run was stopped");
}

TEST_F(Stop, leavesNoFileUnderItsFinalName) {
    std::promise<void> started;
    const FreeFunction writing("Write", {}, [&](const Arguments&, Results&, RunContext& context) {
        context.writeResult("half.txt", [&](const std::filesystem::path& path) {
            std::ofstream(path) << "half";
            started.set_value();
            while (!context.isStopping()) {
                std::this_thread::yield();
            }
        });
    });
    pipeline.nodes.clear();
    add(writing, "write");
    auto caller = std::async(std::launch::async, [&] {
        started.get_future().wait();
        runner.stop();
    });
    run();
    EXPECT_EQ(outcome("write"), Outcome::Unfinished);
    EXPECT_TRUE(std::filesystem::is_empty(pipeline.resultsFolder));
}

TEST_F(Stop, resetEndsTheRunAndItsResultsAreNotKept) {
    start("after");
    runAnd([&] { runner.reset(); });
    EXPECT_TRUE(report.wasStopped);
    run();
    EXPECT_EQ(outcome("first"), Outcome::Done) << "what the ended run made is forgotten too";
}

TEST_F(Stop, manyStopsAtAnyMomentLeaveTheRunnerWhole) {
    isWaiting = false;
    std::atomic<bool> isOver = false;
    auto caller = std::async(std::launch::async, [&] {
        while (!isOver) {
            runner.stop();
            std::this_thread::yield();
        }
    });
    for (int i = 0; i < 50; ++i) {
        runner.reset();
        run();
        EXPECT_FALSE(report.hasFailure());
        EXPECT_TRUE(report.wasStopped || outcome("after") == Outcome::Done);
    }
    isOver = true;
    caller.get();
    runner.reset();
    run();
    EXPECT_EQ(outcome("after"), Outcome::Done);
}

}  // namespace
}  // namespace velmorak::test
