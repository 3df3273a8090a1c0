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
                throw Stopped();
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
        throw Stopped();
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
            waitForStop(context);
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

/// Stops a run from inside a kind, at a given call of one of its phases, and counts the calls of kinds after that.
class RunnerStopPhases : public RunTest {
protected:
    enum Phase { Reading, Applying, Filling, Finishing, Writing };

    RunnerStopPhases() {
        rows.beforeChunk = [this](std::uint64_t, RunContext&) { enter(Reading); };
        cut.beforeApply = [this](const Chunk&) { enter(Applying); };
        sum.beforeFill = [this](const Chunk&) { enter(Filling); };
        sum.beforeFinish = [this](RunContext&) { enter(Finishing); };
        add(rows, "rows", {{"rows", std::to_string(20 * chunkRows)}});
        add(cut, "cut");
        add(sum, "sum");
        add(writing, "write");
        wire("rows", "table", "cut", "table");
        wire("cut", "table", "sum", "table");
        wire("sum", "sum", "write", "value");
    }

    void enter(Phase at) {
        if (isStopped) {
            ++callsAfterStop;
        }
        if (at == phase && callsBefore-- == 0) {
            runner.stop();
            isStopped = true;
        }
    }

    void runAndStop(Phase at, int calls) {
        phase = at;
        callsBefore = calls;
        isStopped = false;
        callsAfterStop = 0;
        runner.reset();
        run();
        EXPECT_TRUE(report.wasStopped) << "phase " << at;
    }

    RowSource rows;
    CutKind cut;
    SumKind sum;
    FreeFunction writing{
        "Write", {{numberInput("value")}, {}}, [this](const Arguments&, Results&, RunContext& context) {
            context.writeResult("note.txt", [this](const std::filesystem::path& path) {
                std::ofstream(path) << "note";
                enter(Writing);
            });
        }};
    Phase phase = Reading;
    std::atomic<int> callsBefore = 0;
    std::atomic<bool> isStopped = false;
    std::atomic<int> callsAfterStop = 0;
};

TEST_F(RunnerStopPhases, beginNoCallButThoseThatOtherThreadsHadDecidedOn) {
    constexpr std::array<int, 5> callsOfPhase{20, 20, 20, 1, 1};
    std::mt19937 random(20);
    for (unsigned i = 0; i < 200; ++i) {
        const auto at = static_cast<Phase>(i % 5);
        runAndStop(at, static_cast<int>(random() % static_cast<unsigned>(callsOfPhase.at(i % 5))));
        EXPECT_LT(callsAfterStop, std::max(report.threads, 1)) << "one for each other thread at most; phase " << at;
        EXPECT_FALSE(std::filesystem::exists(pipeline.resultsFolder / "note.txt"));
    }
}

}  // namespace
}  // namespace velmorak::test
