#include "GraphFixture.h"

namespace velmorak::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class Values : public Graph {
protected:
    Values() { add("Pair", "P"); }

    void expectTaken(const std::string& name, const std::string& value) {
        const Errors errors;
        setValue("P", name, value);
        EXPECT_EQ(input("P", name).value, value);
        EXPECT_EQ(errors.text(), "");
    }
    void expectRefused(const std::string& name, const std::string& value, const std::string& reason) {
        const std::string before = input("P", name).value;
        const Errors errors;
        setValue("P", name, value);
        EXPECT_EQ(input("P", name).value, before);
        EXPECT_EQ(errors.lines(), 1);
        EXPECT_THAT(errors.text(),
                    HasSubstr("P (Pair), input " + name + ": " + reason + "; the value stays \"" + before + "\"."));
    }
    std::vector<std::string> inputNames(const std::string& plugin) {
        std::vector<std::string> all;
        for (const QzBase::Input& each : node(plugin).Inputs()) {
            all.push_back(each.name);
        }
        return all;
    }
};

TEST_F(Values, aNumberIsKeptAsTyped) {
    expectTaken("a", "1.50");
    expectTaken("a", " -2e3 ");
    expectTaken("b", "-10");
}

TEST_F(Values, aTextThatIsNotANumberIsRefused) {
    expectRefused("a", "one", "\"one\" is not a number");
    expectRefused("a", "1,5", "\"1,5\" is not a number");
    expectRefused("a", "", "\"\" is not a number");
}

TEST_F(Values, nanIsANumberButWithinNoLimits) {
    expectTaken("a", "NaN");
    expectRefused("b", "NaN", "\"NaN\" is not a number");
    expectRefused("count", "NaN", "\"NaN\" is not a number");
}

TEST_F(Values, aNumberOutOfItsBoundsIsRefused) {
    expectRefused("b", "-10.5", "\"-10.5\" is below -10, the smallest value allowed");
    expectRefused("b", "11", "\"11\" is above 10, the largest value allowed");
    expectRefused("count", "1.5", "\"1.5\" is not a whole number");
    expectTaken("count", "7");
}

TEST_F(Values, aChoiceIsOneOfItsTexts) {
    expectTaken("mode", "weighted");
    expectRefused("mode", "Plain", "\"Plain\" is not one of the choices: plain, weighted");
}

TEST_F(Values, theKindDecidesLast) {
    expectTaken("label", "good");
    expectRefused("label", "bad", "bad is no label");
    expectRefused("label", "throw", "the kind is at a loss");
    expectRefused("label", "\xFF", "the text is not UTF-8");
}

TEST_F(Values, aValueThatIsSetAgainIsTakenAgain) {
    expectTaken("a", "5");
    expectTaken("a", "5");
}

TEST_F(Values, anInputThatOnlyAWireCanFeedTakesNoText) {
    add("Drain", "D");
    const Errors errors;
    setValue("D", "histogram", "x");
    EXPECT_THAT(errors.text(), HasSubstr("D (Drain), input histogram: only a wire can supply a histogram"));
    EXPECT_EQ(input("D", "histogram").value, "");
}

TEST_F(Values, positionsOutOfRangeDoNothing) {
    const Errors errors;
    for (const auto& [index, position] : {std::pair(-1, 0), {1, 0}, {0, -1}, {0, 5}}) {
        manager.SetInputValue(index, position, "3");
    }
    EXPECT_EQ(errors.text(), "");
    EXPECT_EQ(input("P", "a").value, "0");
}

TEST_F(Values, portsComeAndGoWithAValueAndTheOthersKeepWhatTheyHave) {
    add("Letters", "L");
    setValue("L", "y", "7");
    wire("P", "sum", "L", "x");
    wire("P", "sum", "L", "y");
    wire("L", "y", "P", "a");
    wire("L", "x", "P", "b");
    wire("L", "y", "L", "letters");
    setValue("L", "letters", "zy");
    EXPECT_THAT(inputNames("L"), ElementsAre("letters", "z", "y"));
    EXPECT_EQ(input("L", "y").value, "7");
    EXPECT_EQ(input("L", "z").value, "1");
    EXPECT_EQ(sourceOf("L", "y"), "P.sum");
    EXPECT_EQ(sourceOf("L", "z"), "");
    EXPECT_EQ(sourceOf("P", "a"), "L.y");
    EXPECT_EQ(sourceOf("P", "b"), "");
    EXPECT_EQ(sourceOf("L", "letters"), "L.y");
    EXPECT_THAT(output("P", "sum").consumers, ElementsAre(&node("L")));
    expectInStep(manager);
}

TEST_F(Values, aValueForWhichAKindHasNoPortsIsRefused) {
    add("Letters", "L");
    const Errors errors;
    setValue("L", "letters", "a!");
    EXPECT_EQ(input("L", "letters").value, "xy");
    EXPECT_THAT(errors.text(), HasSubstr("L (Letters), input letters: ! is no letter; the value stays \"xy\"."));
    EXPECT_THAT(inputNames("L"), ElementsAre("letters", "x", "y"));
}

}  // namespace
}  // namespace velmorak::test
