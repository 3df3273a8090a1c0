#include "KindHarness.h"
#include "PlotScripts.h"

#include <gtest/gtest.h>

#include <array>

namespace {

using namespace velmorak;
using test::counts;
using test::fitted;
using test::hasText;
using test::KindHarness;
using test::quick;
using test::script;

/// Ends of the first rectangle in a script: left, bottom, right, top, in fractions of the frame.
std::array<double, 4> boxIn(const std::string& text) {
    std::array<double, 4> ends{};
    std::size_t at = text.find("set object 1 rectangle from graph ");
    for (double& end : ends) {
        at = text.find("graph ", at) + 6;
        EXPECT_TRUE(readNumber(text.substr(at, text.find_first_of(", ", at) - at), end));
    }
    return ends;
}

TEST(PlotStatistics, chooseTheEmptiestCorner) {
    KindHarness bench("Plot");
    quick(bench).wire("object", counts({1, 1, 1, 1, 100})).run();
    // The peak is at the right.
    EXPECT_TRUE(hasText(script(bench), "set object 1 rectangle from graph 0.0"));
    bench.wire("object", counts({100, 1, 1, 1, 1})).run();
    EXPECT_FALSE(hasText(script(bench), "set object 1 rectangle from graph 0.0"));
    bench.set("statistics", "top left").run();
    EXPECT_TRUE(hasText(script(bench), "set object 1 rectangle from graph 0.0"));
    bench.set("statistics", "no").run();
    EXPECT_FALSE(hasText(script(bench), "set object"));
}

std::string yRangeIn(const std::string& text) {
    const std::size_t at = text.find("set yrange ");
    return text.substr(at, text.find('\n', at) - at);
}

TEST(PlotStatistics, areWhereverTheUserWantsThem) {
    KindHarness bench("Plot");
    quick(bench).set("statisticsplace", "0.3 0.6").wire("object", counts({1, 1, 1, 1, 100})).run();
    const std::array<double, 4> box = boxIn(script(bench));
    EXPECT_DOUBLE_EQ(box[0], 0.3);
    EXPECT_DOUBLE_EQ(box[3], 0.6);
    const std::string range = yRangeIn(script(bench));
    bench.set("statisticsplace", "1 0").run();
    EXPECT_NEAR(boxIn(script(bench))[2], 1.0, 1e-4) << "it stays within the frame";
    EXPECT_NEAR(boxIn(script(bench))[1], 0.0, 1e-4);
    bench.set("statisticsplace", "bottom left").set("statistics", "top right").run();
    EXPECT_LT(boxIn(script(bench))[1], 0.1);
    EXPECT_LT(boxIn(script(bench))[0], 0.1);
    bench.set("statisticsplace", "0.3 0.6").set("statistics", "no").run();
    EXPECT_FALSE(hasText(script(bench), "set object"));
    EXPECT_EQ(yRangeIn(script(bench)), range) << "the frame makes no room for a box at a point";
    const Kind& plot = test::shippedKind("Plot");
    for (const std::string place : {"", "top left", "0 1", " 0.5  0.25 "}) {
        EXPECT_EQ(plot.refusal("statisticsplace", place), "") << place;
    }
    for (const std::string place :
         {"0.5", "1.1 0", "-0.1 0", "nan 0", "top", "left top", "0 0 0", "0 0; 1 1", "\"0\" 0"}) {
        EXPECT_TRUE(hasText(plot.refusal("statisticsplace", place), "corner")) << place;
    }
}

TEST(PlotStatistics, atAPlaceOfTheirOwnAreNotCoveredByTheLegend) {
    KindHarness bench("Plot");
    quick(bench)
        .set("objects", "2")
        .set("style", "steps")
        .set("statisticsplace", "0 1")
        .wire("object", counts({5, 5, 5}));
    bench.wire("object2", fitted(0, 3)).run();
    EXPECT_TRUE(hasText(script(bench), " right top Left reverse")) << script(bench);
    bench.set("statisticsplace", "0.8 1").run();
    EXPECT_TRUE(hasText(script(bench), " left top Left reverse")) << script(bench);
}

TEST(PlotStatistics, countFillsAndSumsOfWeightsUnderTheirOwnNames) {
    auto weighted = std::make_shared<Histogram1D>(Axis(2, 0, 2));
    weighted->fill(0.5, 2.5);
    weighted->fill(1.5, 0.5);
    weighted->fill(7.0, 4.0);
    KindHarness bench("Plot");
    quick(bench).wire("object", DataObjectPtr(weighted)).run();
    const std::string text = script(bench);
    const std::size_t at = text.find("'Entries'");
    for (const std::string part :
         {"'Entries'", "'2'", "'Sum of weights'", "'3'", "'Overflow'", "'1'", "'Overflow weight'", "'4'"}) {
        EXPECT_NE(text.find(part, at), std::string::npos) << part;
    }
}

TEST(PlotStatistics, dropNoLineInSilence) {
    auto function = std::make_shared<FunctionObject>();
    function->codelet = "codelet:line:verbatim:jel : 1 : a+b*x[0] : a,b : null";
    function->arguments = {{.name = "x", .ranges = {{.low = 0, .high = 1}}}};
    function->parameters = {{.name = "a", .value = 2.0}, {.name = "b", .value = 0.5}};
    for (int i = 0; i < 18; ++i) {
        function->parameters.push_back({.name = "extra" + std::to_string(i), .value = 1.0});
    }
    KindHarness bench("Plot");
    quick(bench).wire("object", DataObjectPtr(function)).run();
    EXPECT_TRUE(hasText(script(bench), "'extra17'"));
    for (int i = 18; i < 80; ++i) {
        function->parameters.push_back({.name = "extra" + std::to_string(i), .value = 1.0});
    }
    bench.expectWarnings().run();
    ASSERT_EQ(bench.warnings().size(), 1U);
    EXPECT_TRUE(bench.warnings().front().starts_with("statistics: ")) << bench.warnings().front();
    EXPECT_TRUE(hasText(script(bench), " more'"));
}

TEST(PlotLegend, isBelowATextThatItWouldMeet) {
    const std::string wide(80, 'w');
    KindHarness bench("Plot");
    quick(bench).set("objects", "2").set("text", "a text in the left corner of the picture").set("labels", wide);
    bench.wire("object", counts({1, 1, 1})).wire("object2", counts({1, 2, 1})).run();
    const std::string text = script(bench);
    const std::size_t at = text.find("set key at graph ");
    ASSERT_NE(at, std::string::npos);
    double y = 0.0;
    const std::size_t from = text.find(", graph ", at) + 8;
    ASSERT_TRUE(readNumber(text.substr(from, text.find(' ', from) - from), y));
    EXPECT_LT(y, 0.95) << text.substr(at, 60);
}

}  // namespace
