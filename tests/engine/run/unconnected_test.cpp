#include "RunFixture.h"

#include "run/plan/Unconnected.h"

namespace velmorak::test {
namespace {

class UnconnectedPlugIns : public RunTest {
protected:
    UnconnectedPlugIns() {
        add(pass, "begin");
        add(pass, "next");
        add(pass, "feeds");
        add(see, "sum");
        wire("begin", "number", "next", "value");
        wire("next", "number", "sum", "object");
    }

    PassKind pass;
    SeeKind see;
};

TEST_F(UnconnectedPlugIns, areNamedOnceAtTheEnd) {
    add(pass, "alone");
    run();
    EXPECT_TRUE(wasSaid("Not run, because nothing leads to them from \"begin\": \"feeds\", \"alone\""))
        << messages.str();
}

TEST_F(UnconnectedPlugIns, areNotThoseThatFeedOthersOfTheRun) {
    const FreeFunction two("Two", {{numberInput("one"), numberInput("two")}, {}},
                           [](const Arguments&, Results&, RunContext&) {});
    add(two, "two");
    wire("feeds", "number", "two", "one");
    EXPECT_EQ(unconnectedText(pipeline), "Not run, because nothing leads to them from \"begin\": \"feeds\", \"two\"");
    wire("next", "number", "two", "two");
    EXPECT_EQ(unconnectedText(pipeline), "");
}

TEST_F(UnconnectedPlugIns, areAtMostTwentyInTheMessage) {
    for (int i = 0; i < 25; ++i) {
        add(pass, "p" + std::to_string(i));
    }
    const std::string text = unconnectedText(pipeline);
    EXPECT_NE(text.find("\"p18\" and 6 more"), std::string::npos) << text;
}

TEST_F(UnconnectedPlugIns, areNoneInAnEmptyPipeline) {
    EXPECT_EQ(unconnectedText(Pipeline{}), "");
}

class LostRows : public RunTest {
protected:
    LostRows() {
        add(rows, "rows", {{"rows", "1000"}});
        add(cut, "cut");
        add(sum, "sum");
        wire("rows", "table", "cut", "table");
        wire("cut", "table", "sum", "table");
    }

    RowSource rows;
    CutKind cut;
    SumKind sum;
};

TEST_F(LostRows, areWarnedOfWhenNoneIsLeft) {
    set("cut", "cut", "1e308");
    run();
    EXPECT_TRUE(wasSaid("Cut \"cut\": warning: keeps none of its 1000 rows")) << messages.str();
}

TEST_F(LostRows, areNoWarningWhenSomeAreLeftOrNoneCame) {
    set("cut", "cut", "-1e308");
    run();
    EXPECT_EQ(messages.str().find("warning"), std::string::npos);
    set("rows", "rows", "0");
    run();
    EXPECT_EQ(messages.str().find("warning"), std::string::npos);
}

}  // namespace
}  // namespace velmorak::test
