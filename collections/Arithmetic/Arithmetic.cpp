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

}  // namespace velmorak
