#include "RunFixture.h"

#include "run/messages/Messages.h"
#include "run/results/Summary.h"

#include <locale>

namespace velmorak::test {
namespace {

using namespace std::chrono_literals;

/// Time that passes when the test says so.
class ProgressMessages : public ::testing::Test {
protected:
    void showAfter(Messages& messages, std::chrono::milliseconds pause, const std::string& text) {
        now += pause;
        if (messages.isProgressDue()) {
            messages.showProgress(text);
        }
    }

    std::ostringstream stream;
    std::chrono::steady_clock::time_point now{};
    Messages::Clock clock = [this] { return now; };
};

TEST_F(ProgressMessages, isALineAtMostOnceInFiveSecondsInAPipe) {
    Messages messages(stream, false, clock);
    messages.beginProgress();
    showAfter(messages, 4999ms, "a");
    showAfter(messages, 1ms, "b");
    showAfter(messages, 4000ms, "c");
    showAfter(messages, 1000ms, "d");
    messages.endProgress();
    EXPECT_EQ(stream.str(), "b\nd\n");
}

TEST_F(ProgressMessages, redrawsAtMostTenTimesASecondOnATerminal) {
    Messages messages(stream, true, clock);
    messages.beginProgress();
    showAfter(messages, 99ms, "a");
    showAfter(messages, 1ms, "b");
    showAfter(messages, 99ms, "c");
    showAfter(messages, 1ms, "d");
    EXPECT_EQ(stream.str(), "b\r\x1b[Kd");
}

TEST_F(ProgressMessages, makesWayForALine) {
    Messages messages(stream, true, clock);
    messages.beginProgress();
    showAfter(messages, 100ms, "half");
    messages.line("Plot \"p\": warning");
    messages.endProgress();
    EXPECT_EQ(stream.str(), "half\r\x1b[KPlot \"p\": warning\n");
}

class HostileMessages : public RunTest {};

TEST_F(HostileMessages, ofAMegabyteKeepTheirEnds) {
    const FreeFunction loud("Loud", {}, [](const Arguments&, Results&, RunContext& context) {
        context.warn("the column \"" + std::string(1'000'000, 'x') + "\" is unknown");
        throw Failure("line 7:\n  " + std::string(1'000'000, 'y') + "\n  ^ here");
    });
    add(loud, "one");
    run();
    const std::string said = messages.str();
    for (const char* end : {"Loud \"one\": warning: the column \"xxx", "xxx\" is unknown\n",
                            "Loud \"one\" failed: line 7:\n", "\n  ^ here\n"}) {
        EXPECT_NE(said.find(end), std::string::npos) << end;
    }
    EXPECT_LT(said.size(), 20'000U);
}

class SummaryLines : public RunTest {
protected:
    RowSource rows;
    CutKind cut;
    SumKind sum;
};

TEST(ProgressText, saysRateAndTheTimeThatIsLeft) {
    EXPECT_EQ(progressText({"events", 1, 2000, 0.4, 2.0}),
              "Reading \"events\": 40 %, 2000 rows, 1000 rows/s, 3 s left");
    EXPECT_EQ(progressText({"events", 1, 2000, 1.0, 2.0}),
              "Reading \"events\": 100 %, 2000 rows, 1000 rows/s, 0 s left");
}

TEST(ProgressText, namesThePassWhereThereIsMoreThanOne) {
    EXPECT_EQ(progressText({"events", 2, 5, 0.5, 0.0}), "Reading \"events\", pass 2: 50 %, 5 rows, 0 s left");
}

TEST(ProgressText, namesTheFileWhereThereIsMoreThanOne) {
    EXPECT_EQ(progressText({"events", 1, 5, 0.5, 0.0, 16, 1000}),
              "Reading \"events\": file 17 of 1000, 50 %, 5 rows, 0 s left");
}

TEST(ProgressText, foreseesNothingFromTooLittle) {
    EXPECT_EQ(progressText({"events", 1, 20, 0.001, 2.0}), "Reading \"events\": 0 %, 20 rows, 10 rows/s");
    EXPECT_EQ(progressText({"events", 1, 1, std::nullopt, 0.0}), "Reading \"events\": 1 row");
}

TEST_F(SummaryLines, oneForEachPlugInWithItsRowsAndTime) {
    add(rows, "rows", {{"rows", "2000"}});
    add(cut, "cut", {{"cut", "1e300"}});
    add(sum, "sum");
    wire("rows", "table", "cut", "table");
    wire("cut", "table", "sum", "table");
    run();
    std::istringstream lines(messages.str());
    std::vector<std::string> beginnings;
    ASSERT_TRUE(wasSaid("Cut \"cut\": warning: keeps none of its 2000 rows"));
    std::string warning;
    std::getline(lines, warning);
    for (std::string line; std::getline(lines, line);) {
        EXPECT_EQ(line.substr(line.size() - 2), " s") << line;
        beginnings.push_back(line.substr(0, line.rfind(", ")));
    }
    EXPECT_EQ(beginnings, (std::vector<std::string>{"Rows \"rows\": 2000 rows", "Cut \"cut\": 2000 rows in, 0 rows out",
                                                    "Sum \"sum\": 0 rows"}));
}

TEST_F(SummaryLines, sayNumbersTheSameWayEverywhere) {
    class Grouping : public std::numpunct<char> {
        char do_thousands_sep() const override { return '.'; }
        char do_decimal_point() const override { return ','; }
        std::string do_grouping() const override { return "\3"; }
    };
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Grouping));
    PipelineNode node{"mass", "Sum", &sum, {}, {}};
    const std::string line = summaryLine(node, {NodeStatus::Done, "", 1234567, 0, 0.0149, {}, {}, {}, true});
    std::locale::global(before);
    EXPECT_EQ(line, "Sum \"mass\": 1234567 rows, 0.01 s");
}

TEST_F(SummaryLines, sayNoRowsWhereNoTableCame) {
    const SeeKind see;
    const PipelineNode node{"see", "See", &see, {}, {}};
    EXPECT_EQ(summaryLine(node, {NodeStatus::Done, "", 0, 0, 0.0149, {}}), "See \"see\": 0.01 s");
}

TEST_F(SummaryLines, aWarningDoesNotEndThePlugIn) {
    const FreeFunction warning(
        "Warn", {}, [](const Arguments&, Results&, RunContext& context) { context.warn("three rows were odd"); });
    add(warning, "w");
    run();
    EXPECT_TRUE(wasSaid("Warn \"w\": warning: three rows were odd"));
    EXPECT_EQ(status("w"), NodeStatus::Done);
}

}  // namespace
}  // namespace velmorak::test
