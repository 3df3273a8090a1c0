#include "Bench.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using namespace velmorak;
using test::Bench;
using test::tableOf;
using testing::Test;

using Reals = std::vector<double>;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

std::vector<std::string> inputNames(const Ports& ports) {
    std::vector<std::string> names;
    for (const InputSpec& input : ports.inputs)
        names.push_back(input.name);
    return names;
}

TEST(Formula, appendsAColumnWithItsUnit) {
    Bench bench("Formula");
    bench.set("column", "pt").set("expression", "sqrt(px*px + py*py)").set("unit", "GeV");
    bench.wire("table", tableOf({{"px", {3, 0, 5}}, {"py", {4, 2, 12}}}, 2)).run();
    EXPECT_EQ(bench.table().column("pt"), (Reals{5, 2, 13}));
    EXPECT_EQ(bench.table().column("px"), (Reals{3, 0, 5}));
    EXPECT_EQ(bench.table().schema[2].name, "pt");
    EXPECT_EQ(bench.table().schema[2].unit, "GeV");
}

TEST(Formula, aColumnOfThatNameIsReplacedInItsPlace) {
    Bench bench("Formula");
    bench.set("column", "e").set("expression", "e * 1000").set("unit", "MeV");
    bench.wire("table", tableOf({{"e", {1, 2}}, {"n", {7, 8}}}, 4)).run();
    ASSERT_EQ(bench.table().schema.size(), 2U);
    EXPECT_EQ(bench.table().schema[0].name, "e");
    EXPECT_EQ(bench.table().column("e"), (Reals{1000, 2000}));
}

TEST(Formula, aTableWithoutRowsGetsTheColumnToo) {
    Bench bench("Formula");
    bench.set("column", "y").set("expression", "2*x").wire("table", tableOf({{"x", {}}}, 4)).run();
    EXPECT_TRUE(bench.table().schema.find("y").has_value());
    EXPECT_TRUE(bench.table().chunks.empty());
}

TEST(Formula, chunksKeepTheirNumberAndFirstRow) {
    Bench bench("Formula");
    bench.set("column", "y").set("expression", "x").wire("table", tableOf({{"x", {1, 2, 3}}}, 2)).run();
    EXPECT_EQ(bench.table().chunks.at(1).number, 1U);
    EXPECT_EQ(bench.table().chunks.at(1).firstRow, 2U);
}

TEST(Formula, parametersAreInputsThatAWireCanFeed) {
    Bench bench("Formula");
    bench.set("column", "y").set("expression", "slope * x + offset").set("parameters", "slope, offset");
    EXPECT_EQ(inputNames(bench.ports()),
              (std::vector<std::string>{"table", "column", "expression", "unit", "parameters", "slope", "offset"}));
    bench.set("offset", "0.5").wire("slope", 2.0).wire("table", tableOf({{"x", {1, 2}}}, 2)).run();
    EXPECT_EQ(bench.table().column("y"), (Reals{2.5, 4.5}));
}

TEST(Formula, portsThatStayKeepTheirPlace) {
    const Kind& formula = test::shippedKind("Formula");
    const Ports without = formula.ports({});
    const Ports with = formula.ports({{"parameters", "a b"}});
    for (std::size_t i = 0; i < without.inputs.size(); ++i)
        EXPECT_EQ(with.inputs[i].name, without.inputs[i].name);
    EXPECT_EQ(with.inputs.size(), without.inputs.size() + 2);
}

TEST(Formula, anUnusableListOfParametersGivesNoPortsButDoesNoHarm) {
    const Kind& formula = test::shippedKind("Formula");
    EXPECT_EQ(formula.ports({{"parameters", "1x, table, a, a, ((("}}).inputs.size(),
              formula.ports({}).inputs.size() + 1);
}

TEST(Formula, refusesParametersThatNoExpressionCouldUse) {
    const Kind& formula = test::shippedKind("Formula");
    EXPECT_EQ(formula.refusal("parameters", ""), "");
    EXPECT_EQ(formula.refusal("parameters", "ptMin etaMax"), "");
    for (const std::string list : {"2pt", "a a", "table", "true", "a-b", "expression"})
        EXPECT_NE(formula.refusal("parameters", list), "") << list;
    EXPECT_NE(formula.refusal("parameters", "a b c d e f g h i j k l m n o p q"), "");
}

TEST(Formula, refusesMistakesWhenTheValueIsSet) {
    const Kind& formula = test::shippedKind("Formula");
    EXPECT_EQ(formula.refusal("expression", "a + b"), "");
    EXPECT_EQ(formula.refusal("expression", ""), "");
    EXPECT_NE(formula.refusal("expression", "a +"), "");
    EXPECT_NE(formula.refusal("column", "two words"), "");
    EXPECT_EQ(formula.refusal("column", "twoWords"), "");
}

TEST(Formula, saysWhatIsMissing) {
    Bench bench("Formula");
    bench.wire("table", tableOf({{"x", {1}}}, 2));
    EXPECT_TRUE(bench.failure().starts_with("expression: ")) << bench.failure();
    EXPECT_NE(bench.set("expression", "2 * nothing").failure().find("nothing"), std::string::npos);
    EXPECT_TRUE(bench.set("expression", "x").set("column", "").failure().starts_with("column: "));
}

TEST(Formula, aParameterThatIsAlsoAColumnIsAFailure) {
    Bench bench("Formula");
    bench.set("expression", "x").set("parameters", "x").wire("table", tableOf({{"x", {1}}}, 2));
    EXPECT_TRUE(bench.failure().starts_with("parameters: ")) << bench.failure();
}

TEST(Formula, theListOfParametersCannotComeByWire) {
    Bench bench("Formula");
    bench.set("expression", "x").wire("parameters", std::string("a")).wire("table", tableOf({{"x", {1}}}, 2));
    EXPECT_TRUE(bench.failure().starts_with("parameters: ")) << bench.failure();
}

TEST(Filter, keepsTheRowsThatPass) {
    Bench bench("Filter");
    bench.set("condition", "x > 1 and x < 4");
    bench.wire("table", tableOf({{"x", {0, 1, 2, 3, 4}}, {"y", {5, 6, 7, 8, 9}}}, 3)).run();
    EXPECT_EQ(bench.table().column("x"), (Reals{2, 3}));
    EXPECT_EQ(bench.table().column("y"), (Reals{7, 8}));
    EXPECT_EQ(bench.table().chunks.at(1).rows, 1U);
    EXPECT_EQ(bench.table().chunks.at(1).firstRow, 3U);
}

TEST(Filter, aNumberIsTrueUnlessItIsZeroOrNan) {
    Bench bench("Filter");
    const double inf = std::numeric_limits<double>::infinity();
    bench.set("condition", "x").wire("table", tableOf({{"x", {0, -0.0, nan, -1, 1e-300, inf}}}, 8)).run();
    EXPECT_EQ(bench.table().column("x"), (Reals{-1, 1e-300, inf}));
}

TEST(Filter, aComparisonWithNanIsFalse) {
    Bench bench("Filter");
    bench.set("condition", "x >= 0").wire("table", tableOf({{"x", {nan, 1}}}, 8)).run();
    EXPECT_EQ(bench.table().column("x"), (Reals{1}));
}

TEST(Filter, beginsWithLettingEverythingPass) {
    Bench bench("Filter");
    bench.wire("table", tableOf({{"x", {1, nan, 0}}}, 2)).run();
    EXPECT_EQ(bench.table().column("x").size(), 3U);
}

TEST(Filter, mayLetNothingPass) {
    Bench bench("Filter");
    bench.set("condition", "x > 10").wire("table", tableOf({{"x", {1, 2, 3}}}, 2)).run();
    EXPECT_TRUE(bench.table().column("x").empty());
    EXPECT_EQ(bench.table().chunks.size(), 2U);
}

TEST(Filter, theCutCanComeByWire) {
    Bench bench("Filter");
    bench.set("condition", "x > cut").set("parameters", "cut").wire("cut", 1.5);
    bench.wire("table", tableOf({{"x", {1, 2, 3}}}, 2)).run();
    EXPECT_EQ(bench.table().column("x"), (Reals{2, 3}));
}

TEST(Filter, aTextOrAnEmptyConditionIsAFailure) {
    Bench bench("Filter");
    bench.wire("table", tableOf({{"x", {1}}}, 2));
    EXPECT_TRUE(bench.set("condition", "\"yes\"").failure().starts_with("condition: ")) << bench.failure();
    EXPECT_TRUE(bench.set("condition", "").failure().starts_with("condition: "));
    EXPECT_NE(bench.kind().refusal("condition", "x >"), "");
}

TEST(Filter, aListIsNoCondition) {
    test::SmallTable table;
    table.schema = Schema({{.name = "hits", .type = ColumnType::Real, .isList = true, .unit = ""}});
    Bench bench("Filter");
    bench.set("condition", "hits").wire("table", table);
    EXPECT_TRUE(bench.failure().starts_with("condition: ")) << bench.failure();
}

}  // namespace
