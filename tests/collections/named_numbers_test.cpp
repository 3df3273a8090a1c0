#include "KindHarness.h"

#include <QzManager.h>
#include <gmock/gmock.h>

#include <fstream>
#include <iostream>
#include <sstream>

namespace {

using namespace velmorak;
using test::KindHarness;
using test::tableOf;
using testing::ElementsAre;
using testing::HasSubstr;

using Reals = std::vector<double>;

std::vector<std::string> namesOf(const std::vector<InputSpec>& inputs) {
    std::vector<std::string> names;
    for (const InputSpec& input : inputs) {
        names.push_back(input.name);
    }
    return names;
}

std::vector<std::string> shown(QzBase& node) {
    std::vector<std::string> inputs;
    for (const QzBase::Input& input : node.Inputs()) {
        inputs.push_back(input.name + "=" + input.value);
    }
    return inputs;
}

TEST(NamedNumbers, aNameWithAnAtIsAnInputAndABareOneOnlyIfItIsGivenANumber) {
    KindHarness bench("Formula");
    bench.set("column", "y").set("expression", "@slope * x + offset + `x` + pi");
    EXPECT_THAT(namesOf(bench.ports().inputs), ElementsAre("table", "column", "expression", "unit", "slope"));
    const InputSpec slope = bench.ports().inputs.back();
    EXPECT_EQ(slope.type, ValueType::Number);
    EXPECT_TRUE(slope.isOptional);
    EXPECT_EQ(slope.value, "");
    bench.set("offset", "0.5").wire("slope", 2.0).wire("table", tableOf({{"x", {1, 2}}}, 2));
    EXPECT_THAT(namesOf(bench.ports().inputs), ElementsAre("table", "column", "expression", "unit", "slope", "offset"));
    bench.set("expression", "@slope * x + offset").run();
    EXPECT_EQ(bench.table().column("y"), (Reals{2.5, 4.5}));
}

TEST(NamedNumbers, theFormulaOfAMassHasNoInputsThatNobodyWires) {
    const Ports ports = test::shippedKind("Formula").ports(
        {{"expression", "sqrt(2 * pt1 * pt2 * (cosh(eta1 - eta2) - cos(phi1 - phi2)))"}});
    EXPECT_THAT(namesOf(ports.inputs), ElementsAre("table", "column", "expression", "unit"));
}

TEST(NamedNumbers, anAtMeansTheNumberAlsoWhereAColumnHasTheName) {
    KindHarness bench("Formula");
    bench.set("column", "y").set("expression", "x + 10 * @x").set("x", "7");
    bench.wire("table", tableOf({{"x", {1, 2}}}, 1)).run();
    EXPECT_EQ(bench.table().column("y"), (Reals{71, 72}));
    bench.set("expression", "`@x` + 0");
    EXPECT_THAT(bench.failure(), HasSubstr("there is no column \"@x\""));
}

TEST(NamedNumbers, namesOfConstantsAreNumbersWithAnAt) {
    KindHarness bench("Filter");
    bench.set("condition", "x > @e").set("e", "1").wire("table", tableOf({{"x", {1, 2}}}, 1)).run();
    EXPECT_EQ(bench.table().column("x"), (Reals{2}));
}

TEST(NamedNumbers, missingAndImpossibleOnesAreNamed) {
    KindHarness bench("Formula");
    bench.set("column", "y").set("expression", "x + @cut").wire("table", tableOf({{"x", {1}}}, 1));
    EXPECT_EQ(bench.failure(), "expression: there is no number \"cut\" at an input of that name\n  x + @cut\n      ^");
    bench.set("expression", "x + @unit");
    EXPECT_THAT(bench.failure(), HasSubstr("there is no number \"unit\", and no number can have the name, which an"));
    EXPECT_THAT(bench.kind().refusal("expression", "x + @"), HasSubstr("a name must follow @"));
    KindHarness fill("Histogram1D");
    fill.set("expression", "x + @cut").wire("table", tableOf({{"x", {1}}}, 1));
    EXPECT_THAT(fill.failure(), HasSubstr("no number can be entered or wired for \"@cut\" here"));
    KindHarness fit("Fit");
    EXPECT_THAT(fit.kind().refusal("model", "@a * x"), HasSubstr("parameter"));
}

TEST(NamedNumbers, aFunctionHasAnInputForEachNameWithAtOrWithout) {
    KindHarness bench("Function");
    bench.set("expression", "a + 2 * @b + a * @a");
    EXPECT_THAT(namesOf(bench.ports().inputs), ElementsAre("expression", "a", "b"));
    const NumberWithError a = numbersWithErrors({3}, {.origin = "fit", .names = {"a"}, .elements = {0.25}}).front();
    bench.wire("a", a).set("b", "4").run();
    EXPECT_EQ(bench.number("value"), 20.0);
    EXPECT_NEAR(bench.number("error"), 7 * 0.5, 1e-9);
}

/// A manager, and what it prints.
class NamedNumbersInDocuments : public testing::Test {
protected:
    void read(const std::string& plugins) {
        const std::filesystem::path file = folder.folder() / "old.zedra";
        std::ofstream(file) << R"({"zedra": 1, "plugins": [)" << plugins << "]}";
        manager.ReadDocument(file.string());
    }
    void set(std::size_t plugin, const std::string& input, const std::string& value) {
        manager.SetInputValue(static_cast<int>(plugin), manager.plugins[plugin]->InputIndex(input), value);
    }
    std::string saidWhenSetting(std::size_t plugin, const std::string& input, const std::string& value) {
        std::ostringstream heard;
        std::streambuf* const before = std::cerr.rdbuf(heard.rdbuf());
        set(plugin, input, value);
        std::cerr.rdbuf(before);
        return heard.str();
    }

    const KindHarness folder{"Filter"};
    QzManager manager{"QzAnalysisFactory"};
};

TEST_F(NamedNumbersInDocuments, wiredAndGivenNamesKeepTheirInputsAndIdleOnesGo) {
    read(R"({"name": "Low", "kind": "Number", "inputs": [{"name": "value", "value": "2"}]},
            {"name": "Cut", "kind": "Filter", "position": [10, 20], "inputs": [
                {"name": "condition", "value": "m > low and m < high and eta < 2"}, {"name": "m", "value": ""},
                {"name": "low", "value": "", "from": ["Low", "number"]}, {"name": "high", "value": "5"},
                {"name": "eta", "value": ""}, {"name": "parameters", "value": "kept"}]})");
    ASSERT_EQ(manager.plugins.size(), 2U);
    QzBase& cut = *manager.plugins[1];
    EXPECT_THAT(shown(cut), ElementsAre("table=", "condition=m > low and m < high and eta < 2", "low=", "high=5"));
    EXPECT_EQ(cut.Inputs()[2].source, manager.plugins[0]);
    float x = 0;
    float y = 0;
    cut.GetPosition(x, y);
    EXPECT_EQ(std::pair(x, y), std::pair(10.0F, 60.0F)) << "the head of the box stays where it was";
    EXPECT_EQ(manager.DocumentText().find("\"eta\""), std::string::npos) << manager.DocumentText();
    EXPECT_NE(manager.DocumentText().find("\"parameters\""), std::string::npos) << manager.DocumentText();
}

TEST_F(NamedNumbersInDocuments, aWiredInputStaysWhileOtherValuesChange) {
    read(R"({"name": "Low", "kind": "Number", "inputs": []},
            {"name": "Cut", "kind": "Filter", "inputs": [{"name": "condition", "value": "m > low"},
                {"name": "low", "from": ["Low", "number"]}]})");
    set(1, "condition", "m > 2 * low and m < @high");
    QzBase& cut = *manager.plugins[1];
    EXPECT_THAT(shown(cut), ElementsAre("table=", "condition=m > 2 * low and m < @high", "low=", "high="));
    EXPECT_EQ(cut.Inputs()[2].source, manager.plugins[0]);
    manager.plugins[0]->Disconnect("number", &cut, "low");
    set(1, "high", "5");
    EXPECT_THAT(shown(cut), ElementsAre("table=", "condition=m > 2 * low and m < @high", "high=5"));
}

TEST_F(NamedNumbersInDocuments, aColumnThatTheTableLacksIsToldWhenTheExpressionIsSet) {
    const std::filesystem::path rows = folder.folder() / "rows.csv";
    std::ofstream(rows) << "energy,tag\n1,2\n";
    read(R"({"name": "Rows", "kind": "CsvTable", "inputs": [{"name": "file", "value": ")" + rows.string() + R"("}]},
            {"name": "Twice", "kind": "Formula", "inputs": [{"name": "table", "from": ["Rows", "table"]},
                {"name": "column", "value": "twice"}, {"name": "expression", "value": "2 * energy"}]},
            {"name": "Cut", "kind": "Filter", "inputs": [{"name": "table", "from": ["Twice", "table"]}]},
            {"name": "Ordered", "kind": "Sort", "inputs": [{"name": "table", "from": ["Cut", "table"]}]})");
    EXPECT_EQ(saidWhenSetting(2, "condition", "twice > 2 and tag < @most"), "");
    EXPECT_THAT(saidWhenSetting(2, "condition", "twise > 2"),
                HasSubstr("Cut (Filter), input \"condition\": there is no column \"twise\""));
    EXPECT_EQ(manager.plugins[2]->Inputs()[1].value, "twise > 2");
    set(2, "condition", "twice > 2");
    EXPECT_THAT(saidWhenSetting(3, "by", "energi"), HasSubstr("did you mean \"energy\"?"));
    EXPECT_EQ(saidWhenSetting(3, "by", "energy; twice"), "");
}

}  // namespace
