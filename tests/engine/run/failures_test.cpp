#include "RunFixture.h"

#include <new>

namespace velmorak::test {
namespace {

class NodeFailures : public RunTest {
protected:
    NodeFailures() {
        add(rows, "rows", {{"rows", std::to_string(8 * chunkRows)}});
        add(cut, "cut");
        add(sum, "all");
        add(sum, "some");
        wire("rows", "table", "cut", "table");
        wire("rows", "table", "all", "table");
        wire("cut", "table", "some", "table");
    }

    RowSource rows;
    CutKind cut;
    SumKind sum;
    PassKind pass;
    SeeKind see;
};

TEST_F(NodeFailures, aRowWisePlugInEndsItsOwnBranchOnly) {
    cut.beforeApply = [](const Chunk& chunk) {
        if (chunk.number >= 3) {
            throw Failure("cut", "no good in row " + std::to_string(chunk.firstRow));
        }
    };
    run();
    EXPECT_EQ(status("cut"), NodeStatus::Failed);
    EXPECT_EQ(sentence("cut"), "input \"cut\": no good in row 98304") << "the first chunk that fails is the one named";
    EXPECT_EQ(status("some"), NodeStatus::Skipped);
    EXPECT_EQ(sentence("some"), "not run because of \"cut\"");
    EXPECT_EQ(status("all"), NodeStatus::Done);
    EXPECT_EQ(of("all").rowsIn, 8 * chunkRows);
    EXPECT_TRUE(wasSaid("Cut \"cut\" failed: input \"cut\": no good in row 98304"));
    EXPECT_TRUE(wasSaid("Sum \"some\": not run because of \"cut\""));
    EXPECT_TRUE(report.hasFailure());
    EXPECT_FALSE(report.wasStopped);
}

TEST_F(NodeFailures, anAccumulatorLeavesTheOthersOnItsStreamAlone) {
    SumKind failing;
    failing.beforeFill = [](const Chunk&) { throw std::bad_alloc(); };
    add(failing, "failing");
    wire("rows", "table", "failing", "table");
    add(pass, "after");
    wire("failing", "sum", "after", "value");
    run();
    EXPECT_EQ(sentence("failing"), "there was not enough memory");
    EXPECT_EQ(sentence("after"), "not run because of \"failing\"");
    EXPECT_EQ(failing.finished, 0);
    EXPECT_EQ(status("all"), NodeStatus::Done);
    EXPECT_EQ(status("some"), NodeStatus::Done);
}

TEST_F(NodeFailures, aSourceEndsAllThatHangsOnItAndNothingElse) {
    add(rows, "other");
    add(sum, "ofOther");
    wire("other", "table", "ofOther", "table");
    wire("all", "sum", "ofOther", "scale");
    add(see, "beside");
    wire("rows", "table", "beside", "object");
    rows.beforeChunk = [](std::uint64_t chunk, RunContext& context) {
        if (chunk == 5 && context.pluginName() == "rows") {
            throw Failure("the file is damaged at byte 1234");
        }
    };
    run();
    EXPECT_EQ(sentence("rows"), "the file is damaged at byte 1234");
    for (const char* name : {"cut", "all", "some", "ofOther", "beside"}) {
        EXPECT_EQ(sentence(name), "not run because of \"rows\"") << name;
    }
    EXPECT_EQ(sum.finished, 0);
}

TEST_F(NodeFailures, whatNeedsAFailureTwoStepsAwayNamesTheFailure) {
    add(pass, "unlucky", {{"value", "13"}});
    add(pass, "next");
    add(pass, "last");
    wire("unlucky", "number", "next", "value");
    wire("next", "number", "last", "value");
    wire("all", "sum", "next", "value");
    wire("unlucky", "number", "some", "scale");
    start("unlucky");
    run();
    EXPECT_EQ(sentence("unlucky"), "input \"value\": 13 brings bad luck");
    EXPECT_EQ(sentence("some"), "not run because of \"unlucky\"");
    EXPECT_EQ(sentence("rows"), "not run because nothing that it feeds could run");
    EXPECT_EQ(rows.opened, 0);
}

/// "late" fails when all else has failed already, because it waits for what a whole table gives.
TEST_F(NodeFailures, ofSeveralTheFirstValueIsNamedWhicheverFailedFirst) {
    const FreeFunction two("Two", {{numberInput("a"), numberInput("b")}, {}},
                           [](const Arguments&, Results&, RunContext&) {});
    cut.beforeApply = [](const Chunk&) { throw Failure("no good"); };
    sum.beforeFinish = [](RunContext& context) {
        if (context.pluginName() == "late") {
            throw Failure("too late");
        }
    };
    add(pass, "unlucky", {{"value", "13"}});
    add(rows, "other");
    add(sum, "late");
    add(two, "two");
    add(sum, "both");
    wire("other", "table", "late", "table");
    wire("all", "sum", "late", "scale");
    wire("late", "sum", "two", "a");
    wire("unlucky", "number", "two", "b");
    wire("cut", "table", "both", "table");
    wire("late", "sum", "both", "scale");
    start("unlucky");
    start("rows");
    run();
    EXPECT_EQ(sentence("late"), "too late");
    EXPECT_EQ(sentence("unlucky"), "input \"value\": 13 brings bad luck");
    EXPECT_EQ(sentence("two"), "not run because of \"late\"");
    EXPECT_EQ(status("cut"), NodeStatus::Failed);
    EXPECT_EQ(sentence("both"), "not run because of \"late\"");
}

TEST_F(NodeFailures, finishingFailsAloneToo) {
    sum.beforeFinish = [](RunContext& context) {
        if (context.pluginName() == "all") {
            throw std::runtime_error("nothing to finish");
        }
    };
    run();
    EXPECT_EQ(sentence("all"), "nothing to finish");
    EXPECT_EQ(status("some"), NodeStatus::Done);
}

TEST_F(NodeFailures, somethingThatIsNoExceptionIsAFailure) {
    sum.beforeFinish = [](RunContext&) { throw 42; };
    run();
    EXPECT_EQ(sentence("all"), "it failed without saying why");
}

TEST_F(NodeFailures, stoppingWithoutBeingAskedIsAFailure) {
    sum.beforeFinish = [](RunContext&) { throw Stopped(); };
    run();
    EXPECT_EQ(sentence("all"), "it stopped without being asked to");
    EXPECT_FALSE(report.wasStopped);
}

TEST_F(NodeFailures, anUnknownKindFailsByName) {
    pipeline.nodes[positionOf("cut")].kind = nullptr;
    pipeline.nodes[positionOf("cut")].kindName = "Foreign";
    run();
    EXPECT_EQ(sentence("cut"), "no collection of this build offers the kind \"Foreign\"");
    EXPECT_EQ(sentence("some"), "not run because of \"cut\"");
    EXPECT_EQ(status("all"), NodeStatus::Done);
}

TEST_F(NodeFailures, aMissingWireNamesTheInput) {
    inputOf("cut", "table").wire.reset();
    start("cut");
    run();
    EXPECT_EQ(sentence("cut"), "input \"table\": nothing is wired where a table is needed");
}

TEST_F(NodeFailures, aMissingWireOfAnyTypeNamesTheInputToo) {
    add(see, "see");
    start("see");
    run();
    EXPECT_EQ(sentence("see"), "input \"object\": nothing is wired where something is needed");
}

TEST_F(NodeFailures, aWireOfTheWrongTypeNamesBothEnds) {
    wire("all", "sum", "some", "table");
    run();
    EXPECT_EQ(sentence("some"), "input \"table\": output \"sum\" of \"all\" is a number, where a table is needed");
}

TEST_F(NodeFailures, anOutputThatIsGoneIsNamed) {
    wire("rows", "events", "all", "table");
    run();
    EXPECT_EQ(sentence("all"), "input \"table\": \"rows\" has no output \"events\"");
}

TEST_F(NodeFailures, twoTablesInOnePlugInAreOneTooMany) {
    add(see, "see");
    wire("rows", "table", "see", "object");
    wire("cut", "table", "see", "other");
    run();
    EXPECT_EQ(sentence("see"),
              "input \"other\": input \"object\" is wired to a table already; a plug-in takes only one");
}

TEST_F(NodeFailures, aCycleIsNamedByTheFirstPlugInOnIt) {
    add(pass, "a");
    add(pass, "b");
    add(pass, "after");
    wire("a", "number", "b", "value");
    wire("b", "number", "a", "value");
    wire("b", "number", "after", "value");
    wire("after", "number", "some", "scale");
    run();
    EXPECT_EQ(sentence("a"), "input \"value\": dependency cycle: \"a\" -> \"b\" -> \"a\"");
    EXPECT_EQ(sentence("b"), "dependency cycle with \"a\"");
    EXPECT_EQ(status("after"), NodeStatus::Skipped);
    EXPECT_EQ(sentence("some"), "not run because of \"b\"");
    EXPECT_EQ(status("all"), NodeStatus::Done);
}

TEST_F(NodeFailures, aPlugInThatFeedsItselfIsACycle) {
    add(pass, "a");
    wire("a", "number", "a", "value");
    start("a");
    run();
    EXPECT_EQ(sentence("a"), "input \"value\": dependency cycle: \"a\" -> \"a\"");
}

TEST_F(NodeFailures, whatFollowsACycleIsSkippedInWhateverOrderItStands) {
    pipeline.nodes.clear();
    for (const char* name : {"last", "next", "a", "b"}) {
        add(pass, name);
    }
    wire("a", "number", "b", "value");
    wire("b", "number", "a", "value");
    wire("b", "number", "next", "value");
    wire("next", "number", "last", "value");
    run();
    EXPECT_EQ(sentence("next"), "not run because of \"b\"");
    EXPECT_EQ(sentence("last"), "not run because of \"b\"");
}

TEST_F(NodeFailures, aSourceIsNotReadOnWhenNothingTakesItsRows) {
    inputOf("all", "table").wire.reset();
    cut.beforeApply = [](const Chunk& chunk) {
        if (chunk.number == 1) {
            throw Failure("no good");
        }
    };
    run();
    EXPECT_EQ(status("rows"), NodeStatus::Skipped);
    EXPECT_EQ(sentence("rows"), "not read to its end because nothing that it feeds could go on");
}

TEST_F(NodeFailures, anEmptyPipelineHasNothingToReport) {
    pipeline.nodes.clear();
    run();
    EXPECT_TRUE(report.nodes.empty());
    EXPECT_EQ(messages.str(), "");
}

}  // namespace
}  // namespace velmorak::test
