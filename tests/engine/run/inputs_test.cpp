#include "RunFixture.h"

#include "run/NodeArguments.h"

namespace velmorak::test {
namespace {

/// One plug-in with an input of the type in question, fed by a text or a number.
class NodeArgumentsOfRun : public RunTest {
protected:
    void feed(const InputSpec& spec, const Value& value) {
        const bool isNumber = numberIn(value).has_value();
        giving = std::make_unique<FreeFunction>(
            "Give", Ports{{}, {output("out", isNumber ? ValueType::Number : ValueType::Text)}},
            [value](const Arguments&, Results& results, RunContext&) { results.set("out", value); });
        add(*giving, "give");
        take(spec);
        wire("give", "out", "take", "in");
        run();
    }

    void take(const InputSpec& spec) {
        taking = std::make_unique<FreeFunction>("Take", Ports{{spec}, {output("out", ValueType::Text)}},
                                                [spec](const Arguments& arguments, Results& results, RunContext&) {
                                                    if (spec.type == ValueType::Number) {
                                                        results.set("out", "number " + textOf(arguments.number("in")));
                                                    } else {
                                                        results.set("out", "text " + arguments.text("in"));
                                                    }
                                                });
        add(*taking, "take");
    }

    std::unique_ptr<FreeFunction> giving;
    std::unique_ptr<FreeFunction> taking;
};

TEST_F(NodeArgumentsOfRun, aNumberFeedsAText) {
    feed(textInput("in"), 0.1);
    EXPECT_EQ(text("take"), "text 0.1");
}

TEST_F(NodeArgumentsOfRun, aCountFeedsATextAsAnInteger) {
    feed(textInput("in"), 1e6);
    EXPECT_EQ(text("take"), "text 1000000");
}

NumberWithError measured() {
    return numbersWithErrors({2.5}, {.origin = "give", .names = {"out"}, .elements = {0.25}}).front();
}

TEST_F(NodeArgumentsOfRun, aNumberWithAnErrorFeedsANumber) {
    feed(numberInput("in"), measured());
    EXPECT_EQ(text("take"), "number 2.5");
}

TEST_F(NodeArgumentsOfRun, aNumberWithAnErrorFeedsATextWithoutIt) {
    feed(textInput("in"), measured());
    EXPECT_EQ(text("take"), "text 2.5");
}

TEST_F(NodeArgumentsOfRun, aNumberSetWithoutAnErrorIsPlain) {
    feed(numberInput("in"), NumberWithError(2.5));
    EXPECT_EQ(number("give"), 2.5);
}

TEST_F(NodeArgumentsOfRun, namesTheOutputThatFeedsAnInput) {
    giving = std::make_unique<FreeFunction>(
        "Give", Ports{{}, {output("out", ValueType::Number)}},
        [](const Arguments&, Results& results, RunContext&) { results.set("out", 1.0); });
    taking = std::make_unique<FreeFunction>(
        "Take", Ports{{numberInput("in"), numberInput("free")}, {output("out", ValueType::Text)}},
        [](const Arguments& arguments, Results& results, RunContext&) {
            results.set("out", arguments.sourceOutput("in") + " and " + arguments.sourceOutput("free"));
        });
    add(*giving, "give");
    add(*taking, "take");
    wire("give", "out", "take", "in");
    run();
    EXPECT_EQ(text("take"), "out and ");
}

TEST_F(NodeArgumentsOfRun, aTextFeedsANumber) {
    feed(numberInput("in"), Value(std::string(" 2.50 ")));
    EXPECT_EQ(text("take"), "number 2.5");
}

TEST_F(NodeArgumentsOfRun, aTextThatIsNoNumberIsRefusedByName) {
    feed(numberInput("in"), Value(std::string("many")));
    EXPECT_EQ(sentence("take"), "input \"in\": \"many\" is not a number");
}

TEST_F(NodeArgumentsOfRun, anEmptyTextIsNoNumber) {
    feed(numberInput("in"), Value(std::string()));
    EXPECT_EQ(sentence("take"), "input \"in\": \"\" is not a number");
}

TEST_F(NodeArgumentsOfRun, aNumberWithoutAnyValueIsSaid) {
    take(numberInput("in", ""));
    run();
    EXPECT_EQ(sentence("take"), "input \"in\": it has no value");
}

TEST_F(NodeArgumentsOfRun, aNumberOutOfRangeIsRefused) {
    InputSpec spec = numberInput("in");
    spec.minimum = 1.0;
    spec.maximum = 10.0;
    feed(spec, 10.5);
    EXPECT_EQ(sentence("take"), "input \"in\": \"10.5\" is above 10, the largest value allowed");
}

TEST_F(NodeArgumentsOfRun, aNumberBelowTheRangeIsRefused) {
    InputSpec spec = numberInput("in");
    spec.minimum = 1.0;
    feed(spec, 0.5);
    EXPECT_EQ(sentence("take"), "input \"in\": \"0.5\" is below 1, the smallest value allowed");
}

TEST_F(NodeArgumentsOfRun, aFractionIsNoWholeNumber) {
    InputSpec spec = numberInput("in");
    spec.isInteger = true;
    feed(spec, 2.5);
    EXPECT_EQ(sentence("take"), "input \"in\": \"2.5\" is not a whole number");
}

TEST_F(NodeArgumentsOfRun, nanPassesWhereNothingIsSaidOfTheRange) {
    feed(numberInput("in"), std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(text("take"), "number NaN");
}

TEST_F(NodeArgumentsOfRun, nanIsInNoRange) {
    InputSpec spec = numberInput("in");
    spec.minimum = 0.0;
    feed(spec, std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(sentence("take"), "input \"in\": \"NaN\" is not a number");
}

TEST_F(NodeArgumentsOfRun, aChoiceTakesOnlyItsChoices) {
    InputSpec spec = textInput("in", "red");
    spec.type = ValueType::Choice;
    spec.choices = {"red", "blue"};
    feed(spec, Value(std::string("green")));
    EXPECT_EQ(sentence("take"), "input \"in\": \"green\" is not one of the choices: red, blue");
}

TEST_F(NodeArgumentsOfRun, aChoiceTakesAFittingText) {
    InputSpec spec = textInput("in", "red");
    spec.type = ValueType::Choice;
    spec.choices = {"red", "blue"};
    feed(spec, Value(std::string("blue")));
    EXPECT_EQ(text("take"), "text blue");
}

TEST_F(NodeArgumentsOfRun, anOutputThatWasNotSetIsNamed) {
    giving = std::make_unique<FreeFunction>("Give", Ports{{}, {output("out", ValueType::Number)}},
                                            [](const Arguments&, Results&, RunContext&) {});
    add(*giving, "give");
    take(numberInput("in"));
    wire("give", "out", "take", "in");
    run();
    EXPECT_EQ(sentence("take"), "input \"in\": \"give\" gave no \"out\"");
}

TEST_F(NodeArgumentsOfRun, anOutputOfAnotherTypeIsTheKindsMistake) {
    Value value;
    giving = std::make_unique<FreeFunction>(
        "Give", Ports{{}, {output("out", ValueType::Histogram)}},
        [&](const Arguments&, Results& results, RunContext&) { results.set("out", value); });
    add(*giving, "give");
    for (const Value& wrong : {Value(1.0), Value(DataObjectPtr()), Value()}) {
        value = wrong;
        run();
        EXPECT_EQ(sentence("give"), "the kind sets its output \"out\" to a value of another type than histogram");
    }
}

TEST_F(NodeArgumentsOfRun, anUnknownOutputIsTheKindsMistake) {
    giving = std::make_unique<FreeFunction>(
        "Give", Ports{}, [](const Arguments&, Results& results, RunContext&) { results.set("out", 1.0); });
    add(*giving, "give");
    run();
    EXPECT_EQ(sentence("give"), "the kind sets an output \"out\" that it does not have");
}

TEST(Integer, isReadWithoutFractionOnly) {
    PipelineNode node{"n", "N", nullptr, {{numberInput("in"), "9007199254740993e3", std::nullopt}}, {}};
    EXPECT_THROW(NodeArguments(node, {{}}).integer("unknown"), std::logic_error);
    EXPECT_THROW(NodeArguments(node, {{}}).text("in"), std::logic_error);
    EXPECT_THROW(NodeArguments(node, {{}}).value("in"), std::logic_error);
    node.inputs[0].value = "1e30";
    EXPECT_THROW(NodeArguments(node, {{}}).integer("in"), Failure);
    node.inputs[0].value = "0.5";
    EXPECT_THROW(NodeArguments(node, {{}}).integer("in"), Failure);
    node.inputs[0].value = "-12";
    EXPECT_EQ(NodeArguments(node, {{}}).integer("in"), -12);
}

TEST(Histogram, isTakenFromItsWireOnly) {
    PipelineNode node{"n", "N", nullptr, {{wireInput("in", ValueType::Any), "", std::nullopt}}, {}};
    EXPECT_THROW(NodeArguments(node, {{}}).histogram("in"), Failure);
    EXPECT_THROW(NodeArguments(node, {{true, "a", "out", Value(1.0)}}).histogram("in"), Failure);
    const auto histogram = std::make_shared<const Histogram1D>(Axis(2, 0.0, 1.0));
    EXPECT_EQ(NodeArguments(node, {{true, "a", "out", Value(histogram)}}).histogram("in"), histogram);
}

}  // namespace
}  // namespace velmorak::test
