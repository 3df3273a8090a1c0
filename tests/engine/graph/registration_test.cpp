#include "GraphFixture.h"

#include "graph/ManagerImpl.h"
#include "graph/Nodes.h"
#include "graph/PortChange.h"
#include "graph/Values.h"
#include "graph/collections/Catalogue.h"
#include "graph/preview/ColumnDescriptions.h"

namespace velmorak::test {
namespace {

using testing::HasSubstr;
using testing::Not;

/// The collection whose kinds are invalid, and the messages of loading it.
class Registration : public testing::Test {
protected:
    Registration() : catalogue({{TEST_HOSTILE "/Wrong"}, {}}, "QzAnalysisFactory") {}

    bool has(const std::string& kind) const { return catalogue.find(kind) < catalogue.kinds().size(); }
    void expectRefused(const std::string& kind, const std::string& reason) const {
        EXPECT_FALSE(has(kind));
        const std::string subject = kind.empty() ? "A kind" : "The kind " + kind;
        EXPECT_THAT(errors.text(),
                    HasSubstr(subject + " of the collection " TEST_HOSTILE "/Wrong/Wrong/Wrong.so is skipped: " +
                              reason + ".\n"));
    }

    Errors errors;
    Catalogue catalogue;
};

TEST_F(Registration, refusesOneKindWithASentenceAndAddsTheOthers) {
    EXPECT_EQ(catalogue.kinds().size(), 2U);
    EXPECT_TRUE(has("Later"));
    EXPECT_TRUE(has("Opener"));
    EXPECT_EQ(errors.lines(), 22);
}

TEST_F(Registration, refusesInvalidNames) {
    expectRefused("", "it is null");
    expectRefused("", "its name \"\" is empty");
    expectRefused("", "its name \"two words\" is not one word");
    expectRefused("", "its name \"line\\nend\" has a control character");
    expectRefused("Lost", "the name \"Line\\nend\" of its group has a control character");
    expectRefused("Nameless", "the name \"\" of an input is empty");
    expectRefused("Blank", "the name \"a b\" of an input is not one word");
    expectRefused("Doubled", "two of its outputs have the name \"o\"");
    EXPECT_THAT(errors.text(), HasSubstr("is not UTF-8"));
    expectRefused("Control", "the name \"\\u001b[31m\" of an output has a control character");
}

TEST_F(Registration, refusesInputsThatContradictThemselves) {
    expectRefused("NoLimit", "its input \"i\" has a limit that is not a number");
    expectRefused("Crossed", "its input \"i\" allows no value: its lower limit 2 is above its upper one 1");
    expectRefused("Outside",
                  "its input \"i\" has a default value that it refuses: \"5\" is above 1, the largest value allowed");
    expectRefused("Halved", "its input \"i\" has a default value that it refuses: \"0.5\" is not a whole number");
    expectRefused("NoNumber", "its input \"i\" has a default value that it refuses: \"one\" is not a number");
    expectRefused("LimitedText", "its input \"i\" has limits, but is not a number");
    expectRefused("NoChoices", "its input \"i\" has no choices");
    expectRefused("TwiceChosen", "its input \"i\" has the choice \"a\" twice");
    expectRefused("NotChosen",
                  "its input \"i\" has a default value that it refuses: \"c\" is not one of the choices: a, b");
    expectRefused("ChoosyText", "its input \"i\" has choices, but is not of type choice");
    expectRefused("WiredValue", "its input \"i\" has a default value, though only a wire can supply one");
}

TEST_F(Registration, refusesAKindThatThrowsSomethingOtherThanAnException) {
    expectRefused("Always", "it failed without saying why");
}

TEST_F(Registration, refusesAPortWithoutANameLater) {
    const Kind& later = catalogue.kind(catalogue.find("Later"));
    Ports ports;
    EXPECT_EQ(tryPorts(later, {{"text", "plain"}}, ports), "");
    EXPECT_EQ(tryPorts(later, {{"text", "nameless"}}, ports), "the name \"\" of an input is empty");
    EXPECT_EQ(ports.inputs.at(1).name, "named");
}

TEST_F(Registration, survivesSomethingOtherThanAnExceptionOutsideARun) {
    const Kind& later = catalogue.kind(catalogue.find("Later"));
    Ports ports;
    EXPECT_EQ(tryPorts(later, {{"text", "throw"}}, ports), "it failed without saying why");
    const InputSpec text{.name = "text", .type = ValueType::Text};
    EXPECT_EQ(valueError(&later, text, "refuse"), "it failed without saying why");
    EXPECT_EQ(valueError(&later, text, "take"), "");
}

TEST_F(Registration, survivesATableThatCannotBeOpened) {
    const Kind& opener = catalogue.kind(catalogue.find("Opener"));
    QzManager manager("QzAnalysisFactory");
    QzBase& node = *manager.CreatePlugin(0, "Reader");
    QzBase::Part& part = QzBase::Part::of(node);
    part.kind = &opener;
    changePorts(node, portsOf(opener, {}), {});
    for (const char* how : {"null", "throw", "throw early"}) {
        part.inputs.front().value = how;
        refreshColumns({&node});
        EXPECT_THAT(node.Outputs().front().description, Not(HasSubstr("Column"))) << how;
    }
}

}  // namespace
}  // namespace velmorak::test
