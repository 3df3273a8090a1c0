#include "RunFixture.h"

#include "run/RunListener.h"
#include "run/plan/Plan.h"

#include <functional>

namespace velmorak::test {
namespace {

/// Stops the run when it begins: before it is planned.
class StopAtBegin : public RunListener {
public:
    explicit StopAtBegin(Runner& runner) : runner(runner) {}
    void began(const Pipeline&, int) override { runner.stop(); }
    bool isProgressDue() override { return false; }
    void progressed(const ProgressNow&) override {}
    void nodeFinished(const PipelineNode&, const NodeReport&) override {}
    void ended(const RunReport&) override {}

private:
    Runner& runner;
};

/// Pipelines of as many plug-ins as nobody draws by hand.
class LargePipelines : public RunTest {
protected:
    static constexpr std::size_t count = 10'000;

    void addChain(std::size_t length = count) {
        pipeline.nodes.reserve(length);
        for (std::size_t i = 0; i < length; ++i) {
            add(pass, "p" + std::to_string(i), {{"value", "1"}});
            if (i > 0) {
                pipeline.nodes[i].inputs[0].wire = PipelineWire{i - 1, "number"};
            }
        }
    }

    std::size_t times(const std::string& text) const {
        std::size_t found = 0;
        const std::string said = messages.str();
        for (std::size_t at = said.find(text); at != std::string::npos; at = said.find(text, at + 1)) {
            ++found;
        }
        return found;
    }

    PassKind pass;
};

TEST_F(LargePipelines, ofAChainAreAllExecuted) {
    addChain();
    run();
    EXPECT_EQ(pass.evaluated, static_cast<int>(count));
    EXPECT_EQ(std::get<double>(report.nodes.back().outputs.at(0)), 1.0);
    run();
    EXPECT_EQ(report.nodes.back().status, NodeStatus::Reused);
    EXPECT_EQ(pass.evaluated, static_cast<int>(count));
}

TEST_F(LargePipelines, onACycleNameItOnceWithTenMembers) {
    addChain();
    pipeline.nodes[0].inputs[0].wire = PipelineWire{count - 1, "number"};
    run();
    EXPECT_EQ(report.nodes[0].sentence,
              "input \"value\": dependency cycle: \"p0\" -> \"p1\" -> \"p2\" -> \"p3\" -> \"p4\" -> \"p5\" -> "
              "\"p6\" -> \"p7\" -> \"p8\" -> \"p9\" -> (9990 more) -> \"p0\"");
    EXPECT_EQ(report.nodes[1].sentence, "dependency cycle with \"p0\"");
    EXPECT_EQ(times("\"p1\" -> \"p2\""), 1U);
    EXPECT_LT(messages.str().size(), 1'000'000U);
}

TEST_F(LargePipelines, onTwoCyclesThatShareNoneNameEachOfThem) {
    for (const char* name : {"a", "b", "c", "d", "e"}) {
        add(pass, name);
    }
    wire("a", "number", "b", "value");
    wire("b", "number", "a", "value");
    wire("d", "number", "c", "value");
    wire("e", "number", "d", "value");
    wire("c", "number", "e", "value");
    start("a");
    run();
    EXPECT_EQ(sentence("a"), "input \"value\": dependency cycle: \"a\" -> \"b\" -> \"a\"");
    EXPECT_EQ(sentence("b"), "dependency cycle with \"a\"");
    start("c");
    run();
    EXPECT_EQ(sentence("c"), "input \"value\": dependency cycle: \"c\" -> \"e\" -> \"d\" -> \"c\"");
    EXPECT_EQ(sentence("d"), "dependency cycle with \"c\"");
    EXPECT_EQ(sentence("e"), "dependency cycle with \"c\"");
}

/// Counts the polls of a plan, and stops it at one of them.
class PlanStop {
public:
    explicit PlanStop(int stopAt = -1) : stopAt(stopAt) {}
    std::function<bool()> poll() {
        return [this] { return polls++ == stopAt; };
    }
    int polls = 0;

private:
    int stopAt;
};

TEST_F(LargePipelines, areNotPlannedToTheEndWhenTheRunIsStopped) {
    for (const bool isCycle : {false, true}) {
        pipeline.nodes.clear();
        addChain();
        if (isCycle) {
            pipeline.nodes[0].inputs[0].wire = PipelineWire{count - 1, "number"};
        }
        PlanStop whole;
        const Plan plan(pipeline, whole.poll());
        EXPECT_GT(whole.polls, 4 * static_cast<int>(count / StopPoll::interval) - 4) << "in four loops over all";
        for (int at = 0; at < whole.polls; ++at) {
            PlanStop stopped(at);
            EXPECT_THROW(Plan(pipeline, stopped.poll()), Stopped) << at;
            EXPECT_EQ(stopped.polls, at + 1);
        }
    }
}

TEST_F(LargePipelines, arePlannedInStepsInProportionToTheirPlugIns) {
    for (const bool isCycle : {false, true}) {
        std::vector<int> polls;
        for (const std::size_t length : {count, 10 * count}) {
            pipeline.nodes.clear();
            addChain(length);
            if (isCycle) {
                pipeline.nodes[0].inputs[0].wire = PipelineWire{length - 1, "number"};
            }
            PlanStop counted;
            const Plan plan(pipeline, counted.poll());
            polls.push_back(counted.polls);
        }
        EXPECT_GT(polls[0], 30) << isCycle;
        EXPECT_LE(polls[1], 10 * polls[0] + 10) << isCycle;
    }
}

TEST_F(LargePipelines, areUnfinishedAfterAStopDuringThePlanning) {
    addChain();
    StopAtBegin listener(runner);
    runner.setListener(&listener);
    run();
    EXPECT_TRUE(report.wasStopped);
    EXPECT_EQ(report.nodes.size(), count);
    EXPECT_EQ(report.nodes.front().status, NodeStatus::Unfinished);
    EXPECT_EQ(report.nodes.back().sentence, "not finished because the run was stopped");
    EXPECT_EQ(pass.evaluated, 0);
    runner.setListener(nullptr);
    run();
    EXPECT_EQ(pass.evaluated, static_cast<int>(count)) << "the next run is whole";
}

TEST_F(LargePipelines, withTablesOfTheirOwnArePassedEachOnce) {
    constexpr std::size_t tables = 2'000;
    RowSource rows;
    SumKind sum;
    add(pass, "first");
    for (std::size_t i = 0; i < tables; ++i) {
        const std::string number = std::to_string(i);
        const std::size_t source = add(rows, "rows" + number, {{"rows", "3"}});
        const std::size_t total = add(sum, "sum" + number);
        for (PipelineInput& input : pipeline.nodes[total].inputs) {
            if (input.spec.name == "table") {
                input.wire = PipelineWire{source, "table"};
            } else if (input.spec.name == "scale") {
                input.wire = PipelineWire{0, "number"};
            }
        }
    }
    run();
    EXPECT_EQ(rows.opened, static_cast<int>(tables));
    EXPECT_EQ(sum.finished, static_cast<int>(tables));
    EXPECT_FALSE(report.hasFailure());
}

}  // namespace
}  // namespace velmorak::test
