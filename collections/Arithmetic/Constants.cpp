#include "kinds.h"

namespace velmorak {

namespace {

/// Gives the number entered as its value.
class NumberKind : public Function {
public:
    std::string name() const override { return "Number"; }
    std::string summary() const override;
    Ports ports(const ValueTexts& values) const override;
    void evaluate(const Arguments& arguments, Results& results, RunContext& context) const override;
};

/// Gives the value and the error entered as one number.
class MeasurementKind : public Function {
public:
    std::string name() const override { return "Measurement"; }
    std::string summary() const override;
    std::string notes() const override;
    Ports ports(const ValueTexts& values) const override;
    void evaluate(const Arguments& arguments, Results& results, RunContext& context) const override;
};

/// Gives the text entered as its value.
class TextKind : public Function {
public:
    std::string name() const override { return "Text"; }
    std::string summary() const override;
    Ports ports(const ValueTexts& values) const override;
    void evaluate(const Arguments& arguments, Results& results, RunContext& context) const override;
};

}  // namespace

std::string NumberKind::summary() const {
    return "Gives a number that you enter, for example a cut value.";
}

Ports NumberKind::ports(const ValueTexts&) const {
    Ports ports;
    ports.inputs = {
        {.name = "value", .description = "The number, in the unit expected by whatever it is wired to.", .value = "0"}};
    ports.outputs = {{.name = "number", .description = "The number as entered."}};
    return ports;
}

void NumberKind::evaluate(const Arguments& arguments, Results& results, RunContext&) const {
    results.set("number", arguments.number("value"));
}

std::string MeasurementKind::summary() const {
    return "Gives a number with an error that you enter, for example an efficiency measured elsewhere.";
}

std::string MeasurementKind::notes() const {
    return "The number is independent of all other numbers. The same measurement must therefore come from one plug-in, "
           "wired to all that use it. The error of a `Function` takes it into account.";
}

Ports MeasurementKind::ports(const ValueTexts&) const {
    Ports ports;
    ports.inputs = {
        {.name = "value", .description = "The number, in the unit expected by whatever it is wired to.", .value = "0"},
        {.name = "error",
         .description = "Its error (standard deviation), in the same unit; 0 or more.",
         .value = "0",
         .minimum = 0.0}};
    ports.outputs = {{.name = "number", .description = "The number with its error."}};
    return ports;
}

void MeasurementKind::evaluate(const Arguments& arguments, Results& results, RunContext& context) const {
    const double value = arguments.number("value");
    const double error = arguments.number("error");
    const CovarianceMatrix variance{.origin = context.pluginName(), .names = {"number"}, .elements = {error * error}};
    results.set("number", error == 0.0 ? Value(value) : Value(numbersWithErrors({value}, variance).front()));
}

std::string TextKind::summary() const {
    return "Gives a text that you enter, for example a title or an expression.";
}

Ports TextKind::ports(const ValueTexts&) const {
    Ports ports;
    ports.inputs = {{.name = "value", .description = "The text to pass on.", .type = ValueType::Text}};
    ports.outputs = {{.name = "text", .description = "The text as entered.", .type = ValueType::Text}};
    return ports;
}

void TextKind::evaluate(const Arguments& arguments, Results& results, RunContext&) const {
    results.set("text", arguments.text("value"));
}

std::unique_ptr<Kind> makeNumber() {
    return std::make_unique<NumberKind>();
}

std::unique_ptr<Kind> makeMeasurement() {
    return std::make_unique<MeasurementKind>();
}

std::unique_ptr<Kind> makeText() {
    return std::make_unique<TextKind>();
}

}  // namespace velmorak
