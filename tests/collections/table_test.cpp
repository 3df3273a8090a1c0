#include "KindHarness.h"

#include <QzManager.h>

#include <gtest/gtest.h>

#include <fstream>
#include <limits>

namespace {

using namespace velmorak;
using test::KindHarness;
using test::tableOf;
using testing::Test;

using Reals = std::vector<double>;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

TEST(Formula, appendsAColumnWithItsUnit) {
    KindHarness bench("Formula");
    bench.set("column", "pt").set("expression", "sqrt(px*px + py*py)").set("unit", "GeV");
    bench.wire("table", tableOf({{"px", {3, 0, 5}}, {"py", {4, 2, 12}}}, 2)).run();
    EXPECT_EQ(bench.table().column("pt"), (Reals{5, 2, 13}));
    EXPECT_EQ(bench.table().column("px"), (Reals{3, 0, 5}));
    EXPECT_EQ(bench.table().schema[2].name, "pt");
    EXPECT_EQ(bench.table().schema[2].unit, "GeV");
}

TEST(Formula, aColumnOfThatNameIsReplacedInItsPlace) {
    KindHarness bench("Formula");
    bench.set("column", "e").set("expression", "e * 1000").set("unit", "MeV");
    bench.wire("table", tableOf({{"e", {1, 2}}, {"n", {7, 8}}}, 4)).run();
    ASSERT_EQ(bench.table().schema.size(), 2U);
    EXPECT_EQ(bench.table().schema[0].name, "e");
    EXPECT_EQ(bench.table().column("e"), (Reals{1000, 2000}));
}

TEST(Formula, aTableWithoutRowsGetsTheColumnToo) {
    KindHarness bench("Formula");
    bench.set("column", "y").set("expression", "2*x").wire("table", tableOf({{"x", {}}}, 4)).run();
    EXPECT_TRUE(bench.table().schema.find("y").has_value());
    EXPECT_TRUE(bench.table().chunks.empty());
}

TEST(Formula, chunksKeepTheirNumberAndFirstRow) {
    KindHarness bench("Formula");
    bench.set("column", "y").set("expression", "x").wire("table", tableOf({{"x", {1, 2, 3}}}, 2)).run();
    EXPECT_EQ(bench.table().chunks.at(1).number, 1U);
    EXPECT_EQ(bench.table().chunks.at(1).firstRow, 2U);
}

TEST(Formula, aNameThatIsAColumnIsTheColumnAndANumberThereIsWarnedAbout) {
    KindHarness bench("Formula");
    bench.set("column", "y").set("expression", "x * x + cut").set("x", "7").set("cut", "1");
    bench.expectWarnings().wire("table", tableOf({{"x", {1, 2}}}, 1)).run();
    EXPECT_EQ(bench.table().column("y"), (Reals{2, 5}));
    ASSERT_EQ(bench.warnings().size(), 1U);
    EXPECT_EQ(bench.warnings()[0], "the number at input \"x\" is not used: the table has a column of that name");
}

TEST(Formula, aNameThatIsNeitherColumnNorNumberIsShown) {
    KindHarness bench("Formula");
    bench.set("column", "y").set("expression", "2 * energi").wire("table", tableOf({{"energy", {1}}}, 1));
    EXPECT_EQ(bench.failure(),
              "expression: there is no column \"energi\" (a number at an input is written @energi); the only "
              "column is \"energy\"; did you mean \"energy\"?\n  2 * energi\n      ^");
}

TEST(Formula, theNameOfAnInputThatItHasAnywayIsAColumn) {
    KindHarness bench("Formula");
    bench.set("column", "y").set("expression", "unit + table");
    EXPECT_EQ(bench.ports().inputs.size(), 4U);
    bench.wire("table", tableOf({{"unit", {1}}, {"table", {2}}}, 1)).run();
    EXPECT_EQ(bench.table().column("y"), (Reals{3}));
    bench.wire("table", tableOf({{"unit", {1}}}, 1));
    EXPECT_NE(bench.failure().find("there is no column \"table\", and no number can have the name, which an input"),
              std::string::npos)
        << bench.failure();
}

TEST(Formula, anExpressionThatCameByWireHasColumnsOnly) {
    KindHarness bench("Formula");
    bench.set("column", "y").set("expression", "a").set("a", "5").wire("expression", std::string("2 * x"));
    bench.wire("table", tableOf({{"x", {1}}}, 1)).run();
    EXPECT_EQ(bench.table().column("y"), (Reals{2}));
    EXPECT_NE(bench.wire("expression", std::string("a")).failure().find("there is no column \"a\""), std::string::npos);
}

TEST(Formula, aNumberThatIsNanIsANumber) {
    KindHarness bench("Formula");
    bench.set("column", "y").set("expression", "isnan(cut) + x").wire("cut", nan);
    bench.wire("table", tableOf({{"x", {1}}}, 1)).run();
    EXPECT_EQ(bench.table().column("y"), (Reals{2}));
}

TEST(Formula, refusesMistakesWhenTheValueIsSet) {
    const Kind& formula = test::shippedKind("Formula");
    EXPECT_EQ(formula.refusal("expression", "a + b"), "");
    EXPECT_EQ(formula.refusal("expression", ""), "");
    EXPECT_NE(formula.refusal("expression", "a +"), "");
    EXPECT_NE(formula.refusal("column", "two words"), "");
    EXPECT_EQ(formula.refusal("column", "twoWords"), "");
    EXPECT_EQ(formula.refusal("column", "e"), "");
    EXPECT_NE(formula.refusal("column", "true"), "");
}

TEST(Formula, saysWhatIsMissing) {
    KindHarness bench("Formula");
    bench.wire("table", tableOf({{"x", {1}}}, 2));
    EXPECT_TRUE(bench.failure().starts_with("expression: ")) << bench.failure();
    EXPECT_NE(bench.set("expression", "2 * nothing").failure().find("nothing"), std::string::npos);
    EXPECT_TRUE(bench.set("expression", "x").set("column", "").failure().starts_with("column: "));
}

TEST(Filter, keepsTheRowsThatPass) {
    KindHarness bench("Filter");
    bench.set("condition", "x > 1 and x < 4");
    bench.wire("table", tableOf({{"x", {0, 1, 2, 3, 4}}, {"y", {5, 6, 7, 8, 9}}}, 3)).run();
    EXPECT_EQ(bench.table().column("x"), (Reals{2, 3}));
    EXPECT_EQ(bench.table().column("y"), (Reals{7, 8}));
    EXPECT_EQ(bench.table().chunks.at(1).rows, 1U);
    EXPECT_EQ(bench.table().chunks.at(1).firstRow, 3U);
}

TEST(Filter, aNumberIsTrueUnlessItIsZeroOrNan) {
    KindHarness bench("Filter");
    const double inf = std::numeric_limits<double>::infinity();
    bench.set("condition", "x").wire("table", tableOf({{"x", {0, -0.0, nan, -1, 1e-300, inf}}}, 8)).run();
    EXPECT_EQ(bench.table().column("x"), (Reals{-1, 1e-300, inf}));
}

TEST(Filter, aComparisonWithNanIsFalse) {
    KindHarness bench("Filter");
    bench.set("condition", "x >= 0").wire("table", tableOf({{"x", {nan, 1}}}, 8)).run();
    EXPECT_EQ(bench.table().column("x"), (Reals{1}));
}

TEST(Filter, beginsWithLettingEverythingPass) {
    KindHarness bench("Filter");
    bench.wire("table", tableOf({{"x", {1, nan, 0}}}, 2)).run();
    EXPECT_EQ(bench.table().column("x").size(), 3U);
}

TEST(Filter, mayLetNothingPass) {
    KindHarness bench("Filter");
    bench.set("condition", "x > 10").wire("table", tableOf({{"x", {1, 2, 3}}}, 2)).run();
    EXPECT_TRUE(bench.table().column("x").empty());
    EXPECT_EQ(bench.table().chunks.size(), 2U);
}

TEST(Filter, theCutCanComeByWire) {
    KindHarness bench("Filter");
    bench.set("condition", "x > cut").wire("cut", 1.5);
    bench.wire("table", tableOf({{"x", {1, 2, 3}}}, 2)).run();
    EXPECT_EQ(bench.table().column("x"), (Reals{2, 3}));
}

TEST(Filter, aDocumentFromTheTimeOfTheListOfParametersKeepsItAndItsNumbers) {
    const KindHarness folder("Filter");
    const std::filesystem::path file = folder.folder() / "old.zedra";
    const std::string list = R"({"name": "parameters", "value": "cut"})";
    std::ofstream(file) << R"({"zedra": 1, "plugins": [{"name": "Old", "kind": "Filter", "inputs": [
        {"name": "condition", "value": "cut < x"}, )"
                        << list << R"(, {"name": "cut", "value": "1.5"}]}]})";
    QzManager manager("QzAnalysisFactory");
    manager.ReadDocument(file.string());
    ASSERT_EQ(manager.plugins.size(), 1U);
    std::vector<std::string> inputs;
    for (const QzBase::Input& input : manager.plugins[0]->Inputs()) {
        inputs.push_back(input.name + "=" + input.value);
    }
    EXPECT_EQ(inputs, (std::vector<std::string>{"table=", "condition=cut < x", "cut=1.5"}));
    EXPECT_NE(manager.DocumentText().find(list), std::string::npos) << manager.DocumentText();
}

TEST(Filter, aTextOrAnEmptyConditionIsAFailure) {
    KindHarness bench("Filter");
    bench.wire("table", tableOf({{"x", {1}}}, 2));
    EXPECT_TRUE(bench.set("condition", "\"yes\"").failure().starts_with("condition: ")) << bench.failure();
    EXPECT_TRUE(bench.set("condition", "").failure().starts_with("condition: "));
    EXPECT_NE(bench.kind().refusal("condition", "x >"), "");
}

TEST(Filter, aListIsNoCondition) {
    test::SmallTable table;
    table.schema = Schema({{.name = "hits", .type = ColumnType::Real, .isList = true, .unit = ""}});
    KindHarness bench("Filter");
    bench.set("condition", "hits").wire("table", table);
    EXPECT_TRUE(bench.failure().starts_with("condition: ")) << bench.failure();
}

}  // namespace
