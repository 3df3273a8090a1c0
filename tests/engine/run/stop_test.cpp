#include "RunFixture.h"

#include <array>
#include <future>
#include <random>
#include <thread>

namespace velmorak::test {
namespace {

/// A source that waits in its third chunk until the run is asked to end.
class RunnerStop : public RunTest {
protected:
    RunnerStop() {
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

TEST_F(RunnerStop, endsTheRunInTheMiddleAndKeepsWhatIsComplete) {
    runAnd([&] { runner.stop(); });
    EXPECT_TRUE(report.wasStopped);
    EXPECT_FALSE(report.hasFailure());
    EXPECT_EQ(status("first"), NodeStatus::Done);
    EXPECT_EQ(status("rows"), NodeStatus::Unfinished);
    EXPECT_EQ(status("sum"), NodeStatus::Unfinished);
    EXPECT_EQ(status("after"), NodeStatus::Unfinished);
    EXPECT_EQ(sum.finished, 0);
    EXPECT_TRUE(wasSaid("Sum \"sum\": not finished because the run was stopped"));
    EXPECT_TRUE(wasSaid("The run was stopped."));
}

TEST_F(RunnerStop, doesNotReachTheNextRun) {
    runAnd([&] { runner.stop(); });
    run();
    EXPECT_FALSE(report.wasStopped);
    EXPECT_EQ(status("after"), NodeStatus::Done);
}

TEST_F(RunnerStop, keepsNoIncompleteResult) {
    start("after");
    runAnd([&] { runner.stop(); });
    run();
    EXPECT_EQ(status("sum"), NodeStatus::Done);
    EXPECT_EQ(status("first"), NodeStatus::Reused);
}

TEST_F(RunnerStop, withoutARunIsHarmless) {
    isWaiting = false;
    runner.stop();
    run();
    EXPECT_FALSE(report.wasStopped);
    EXPECT_EQ(status("after"), NodeStatus::Done);
    runner.stop();
    runner.reset();
    run();
    EXPECT_FALSE(report.wasStopped);
    EXPECT_EQ(status("after"), NodeStatus::Done);
}

TEST_F(RunnerStop, ofAFunctionLeavesItUnfinished) {
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
    EXPECT_EQ(status("wait"), NodeStatus::Unfinished);
    EXPECT_EQ(sentence("wait"), "not finished because the run was stopped");
}

TEST_F(RunnerStop, leavesNoFileUnderItsFinalName) {
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
    EXPECT_EQ(status("write"), NodeStatus::Unfinished);
    EXPECT_TRUE(std::filesystem::is_empty(pipeline.resultsFolder));
}

TEST_F(RunnerStop, resetEndsTheRunAndItsResultsAreNotKept) {
    start("after");
    runAnd([&] { runner.reset(); });
    EXPECT_TRUE(report.wasStopped);
    run();
    EXPECT_EQ(status("first"), NodeStatus::Done) << "what the ended run made is forgotten too";
}

TEST_F(RunnerStop, manyStopsAtAnyMomentLeaveTheRunnerWhole) {
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
        EXPECT_TRUE(report.wasStopped || status("after") == NodeStatus::Done);
    }
    isOver = true;
    caller.get();
    runner.reset();
    run();
    EXPECT_EQ(status("after"), NodeStatus::Done);
}

/// Stops a run from inside of it, at a random moment of one of its phases, and times how long it goes on.
class RunnerStopPhases : public RunTest {
protected:
    RunnerStopPhases() {
        rows.beforeChunk = [this](std::uint64_t, RunContext&) { maybeStop(0); };
        cut.beforeApply = [this](const Chunk&) { maybeStop(1); };
        sum.beforeFill = [this](const Chunk&) { maybeStop(2); };
        sum.beforeFinish = [this](RunContext&) { maybeStop(3); };
        add(rows, "rows", {{"rows", std::to_string(20 * chunkRows)}});
        add(cut, "cut");
        add(sum, "sum");
        add(writing, "write");
        wire("rows", "table", "cut", "table");
        wire("cut", "table", "sum", "table");
        wire("sum", "sum", "write", "value");
    }

    void maybeStop(int at) {
        if (at == phase && before-- == 0) {
            asked = std::chrono::steady_clock::now();
            runner.stop();
        }
    }

    std::chrono::duration<double> timeOfStop(int inPhase, int calls) {
        phase = inPhase;
        before = calls;
        runner.reset();
        run();
        EXPECT_TRUE(report.wasStopped) << "phase " << inPhase;
        return std::chrono::steady_clock::now() - asked.load();
    }

    RowSource rows;
    CutKind cut;
    SumKind sum;
    FreeFunction writing{
        "Write", {{numberInput("value")}, {}}, [this](const Arguments&, Results&, RunContext& context) {
            context.writeResult("note.txt", [this](const std::filesystem::path& path) {
                std::ofstream(path) << "note";
                maybeStop(4);
            });
        }};
    int phase = 0;
    std::atomic<int> before = 0;
    std::atomic<std::chrono::steady_clock::time_point> asked{};
};

TEST_F(RunnerStopPhases, areShortInTwoHundredStopsOfEveryPhase) {
    constexpr std::array<int, 5> callsOfPhase{20, 20, 20, 1, 1};
    std::mt19937 random(20);
    std::vector<double> seconds;
    for (int i = 0; i < 200; ++i) {
        const int inPhase = i % 5;
        const auto calls =
            static_cast<int>(random() % static_cast<unsigned>(callsOfPhase.at(static_cast<std::size_t>(inPhase))));
        seconds.push_back(timeOfStop(inPhase, calls).count());
        EXPECT_FALSE(std::filesystem::exists(pipeline.resultsFolder / "note.txt"));
    }
    std::sort(seconds.begin(), seconds.end());
    RecordProperty("p99ms", static_cast<int>(1000.0 * seconds[197]));
    EXPECT_LT(seconds[197], 0.25);
}

}  // namespace
}  // namespace velmorak::test
