#include "kinds.h"

namespace velmorak {

namespace {

class AdderKind : public Function {
public:
    std::string name() const override { return "Adder"; }
    std::string summary() const override;
    Ports ports(const ValueTexts& values) const override;
    void evaluate(const Arguments& arguments, Results& results, RunContext& context) const override;
};

class SubtractorKind : public Function {
public:
    std::string name() const override { return "Subtractor"; }
    std::string summary() const override;
    Ports ports(const ValueTexts& values) const override;
    void evaluate(const Arguments& arguments, Results& results, RunContext& context) const override;
};

class MultiplierKind : public Function {
public:
    std::string name() const override { return "Multiplier"; }
    std::string summary() const override;
    Ports ports(const ValueTexts& values) const override;
    void evaluate(const Arguments& arguments, Results& results, RunContext& context) const override;
};

class DividerKind : public Function {
public:
    std::string name() const override { return "Divider"; }
    std::string summary() const override;
    std::string notes() const override;
    Ports ports(const ValueTexts& values) const override;
    void evaluate(const Arguments& arguments, Results& results, RunContext& context) const override;
};

}  // namespace

std::string AdderKind::summary() const {
    return "Adds two numbers.";
}

Ports AdderKind::ports(const ValueTexts&) const {
    Ports ports;
    ports.inputs = {{.name = "a", .description = "First number.", .value = "0"},
                    {.name = "b", .description = "Second number, in the unit of the first.", .value = "0"}};
    ports.outputs = {{.name = "sum", .description = "a + b, in their unit."}};
    return ports;
}

void AdderKind::evaluate(const Arguments& arguments, Results& results, RunContext&) const {
    results.set("sum", arguments.number("a") + arguments.number("b"));
}

std::string SubtractorKind::summary() const {
    return "Subtracts one number from another.";
}

Ports SubtractorKind::ports(const ValueTexts&) const {
    Ports ports;
    ports.inputs = {{.name = "a", .description = "Number to subtract from (minuend).", .value = "0"},
                    {.name = "b", .description = "Subtrahend, in the unit of the first.", .value = "0"}};
    ports.outputs = {{.name = "difference", .description = "a - b, in their unit."}};
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
    ports.outputs = {{.name = "product", .description = "a * b, in the product of their units."}};
    return ports;
}

void MultiplierKind::evaluate(const Arguments& arguments, Results& results, RunContext&) const {
    results.set("product", arguments.number("a") * arguments.number("b"));
}

std::string DividerKind::summary() const {
    return "Divides one number by another.";
}

std::string DividerKind::notes() const {
    return "Division by 0 is not an error: it gives plus or minus Infinity, and 0 / 0 gives NaN.";
}

Ports DividerKind::ports(const ValueTexts&) const {
    Ports ports;
    ports.inputs = {{.name = "a", .description = "Number to divide (dividend).", .value = "1"},
                    {.name = "b", .description = "Divisor, in any unit.", .value = "1"}};
    ports.outputs = {{.name = "quotient", .description = "a / b, in the quotient of their units."}};
    return ports;
}

void DividerKind::evaluate(const Arguments& arguments, Results& results, RunContext&) const {
    results.set("quotient", arguments.number("a") / arguments.number("b"));
}

std::unique_ptr<Kind> makeAdder() {
    return std::make_unique<AdderKind>();
}

std::unique_ptr<Kind> makeSubtractor() {
    return std::make_unique<SubtractorKind>();
}

std::unique_ptr<Kind> makeMultiplier() {
    return std::make_unique<MultiplierKind>();
}

std::unique_ptr<Kind> makeDivider() {
    return std::make_unique<DividerKind>();
}

}  // namespace velmorak
