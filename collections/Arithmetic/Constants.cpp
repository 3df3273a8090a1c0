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

std::unique_ptr<Kind> makeText() {
    return std::make_unique<TextKind>();
}

}  // namespace velmorak
