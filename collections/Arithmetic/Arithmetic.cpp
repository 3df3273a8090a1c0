#include "Arithmetic.h"

namespace velmorak {

std::string NumberKind::summary() const {
    return "Gives a number that is written into it, for example a cut value.";
}

Ports NumberKind::ports(const ValueTexts&) const {
    Ports ports;
    ports.inputs = {
        {.name = "value", .description = "The number, in the unit of whatever it is wired to.", .value = "0"}};
    ports.outputs = {{.name = "number", .description = "The number as it was written."}};
    return ports;
}

void NumberKind::evaluate(const Arguments& arguments, Results& results, RunContext&) const {
    results.set("number", arguments.number("value"));
}

std::string TextKind::summary() const {
    return "Gives a text that is written into it, for example a title or an expression.";
}

Ports TextKind::ports(const ValueTexts&) const {
    Ports ports;
    ports.inputs = {
        {.name = "value", .description = "The text, as it is wanted at the other end.", .type = ValueType::Text}};
    ports.outputs = {{.name = "text", .description = "The text as it was written.", .type = ValueType::Text}};
    return ports;
}

void TextKind::evaluate(const Arguments& arguments, Results& results, RunContext&) const {
    results.set("text", arguments.text("value"));
}

std::string AdderKind::summary() const {
    return "Adds two numbers.";
}

Ports AdderKind::ports(const ValueTexts&) const {
    Ports ports;
    ports.inputs = {{.name = "a", .description = "First number.", .value = "0"},
                    {.name = "b", .description = "Second number, in the unit of the first.", .value = "0"}};
    ports.outputs = {{.name = "sum", .description = "a + b, in the unit of the two."}};
    return ports;
}

void AdderKind::evaluate(const Arguments& arguments, Results& results, RunContext&) const {
    results.set("sum", arguments.number("a") + arguments.number("b"));
}

std::string SubtractorKind::summary() const {
    return "Subtracts a number from another.";
}

Ports SubtractorKind::ports(const ValueTexts&) const {
    Ports ports;
    ports.inputs = {{.name = "a", .description = "Number that is subtracted from.", .value = "0"},
                    {.name = "b", .description = "Number that is taken away, in the unit of the first.", .value = "0"}};
    ports.outputs = {{.name = "difference", .description = "a - b, in the unit of the two."}};
    return ports;
}

void SubtractorKind::evaluate(const Arguments& arguments, Results& results, RunContext&) const {
    results.set("difference", arguments.number("a") - arguments.number("b"));
}

std::string MultiplierKind::summary() const {
    return "Multiplies two numbers.";
}

Ports MultiplierKind::ports(const ValueTexts&) const {
    Ports ports;
    ports.inputs = {{.name = "a", .description = "First number.", .value = "1"},
                    {.name = "b", .description = "Second number, in any unit.", .value = "1"}};
    ports.outputs = {{.name = "product", .description = "a * b, in the product of the two units."}};
    return ports;
}

void MultiplierKind::evaluate(const Arguments& arguments, Results& results, RunContext&) const {
    results.set("product", arguments.number("a") * arguments.number("b"));
}

std::string DividerKind::summary() const {
    return "Divides a number by another.";
}

std::string DividerKind::notes() const {
    return "A division by 0 is no failure: it gives Infinity with the sign of the two, and 0 / 0 gives NaN.";
}

Ports DividerKind::ports(const ValueTexts&) const {
    Ports ports;
    ports.inputs = {{.name = "a", .description = "Number that is divided.", .value = "1"},
                    {.name = "b", .description = "Number that it is divided by, in any unit.", .value = "1"}};
    ports.outputs = {{.name = "quotient", .description = "a / b, in the quotient of the two units."}};
    return ports;
}

void DividerKind::evaluate(const Arguments& arguments, Results& results, RunContext&) const {
    results.set("quotient", arguments.number("a") / arguments.number("b"));
}

}  // namespace velmorak
