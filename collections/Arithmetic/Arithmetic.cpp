#include "kinds.h"

namespace velmorak {

namespace {

constexpr const char* errorNotes =
    "The result has an error if the numbers have: to first order, with the correlation of numbers that come from the "
    "same fit.";

struct Pair {
    explicit Pair(const Arguments& arguments) : a(arguments.numberWithError("a")), b(arguments.numberWithError("b")) {}

    /// @return the result of an operation with these derivatives.
    NumberWithError result(double value, double byA, double byB) const;

    NumberWithError a;
    NumberWithError b;
};

NumberWithError Pair::result(double value, double byA, double byB) const {
    return withPropagatedError(value, {{a, byA}, {b, byB}});
}

class AdderKind : public Function {
public:
    std::string name() const override { return "Adder"; }
    std::string summary() const override;
    std::string notes() const override { return errorNotes; }
    int version() const override { return 2; }
    Ports ports(const ValueTexts& values) const override;
    void evaluate(const Arguments& arguments, Results& results, RunContext& context) const override;
};

class SubtractorKind : public Function {
public:
    std::string name() const override { return "Subtractor"; }
    std::string summary() const override;
    std::string notes() const override { return errorNotes; }
    int version() const override { return 2; }
    Ports ports(const ValueTexts& values) const override;
    void evaluate(const Arguments& arguments, Results& results, RunContext& context) const override;
};

class MultiplierKind : public Function {
public:
    std::string name() const override { return "Multiplier"; }
    std::string summary() const override;
    std::string notes() const override { return errorNotes; }
    int version() const override { return 2; }
    Ports ports(const ValueTexts& values) const override;
    void evaluate(const Arguments& arguments, Results& results, RunContext& context) const override;
};

class DividerKind : public Function {
public:
    std::string name() const override { return "Divider"; }
    std::string summary() const override;
    std::string notes() const override;
    int version() const override { return 2; }
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
    const Pair pair(arguments);
    results.set("sum", pair.result(pair.a.value() + pair.b.value(), 1.0, 1.0));
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
    const Pair pair(arguments);
    results.set("difference", pair.result(pair.a.value() - pair.b.value(), 1.0, -1.0));
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
    const Pair pair(arguments);
    results.set("product", pair.result(pair.a.value() * pair.b.value(), pair.b.value(), pair.a.value()));
}

std::string DividerKind::summary() const {
    return "Divides one number by another.";
}

std::string DividerKind::notes() const {
    return std::string("Division by 0 is not an error: it gives plus or minus Infinity, and 0 / 0 gives NaN.\n\n") +
           errorNotes;
}

Ports DividerKind::ports(const ValueTexts&) const {
    Ports ports;
    ports.inputs = {{.name = "a", .description = "Number to divide (dividend).", .value = "1"},
                    {.name = "b", .description = "Divisor, in any unit.", .value = "1"}};
    ports.outputs = {{.name = "quotient", .description = "a / b, in the quotient of their units."}};
    return ports;
}

void DividerKind::evaluate(const Arguments& arguments, Results& results, RunContext&) const {
    const Pair pair(arguments);
    const double quotient = pair.a.value() / pair.b.value();
    results.set("quotient", pair.result(quotient, 1.0 / pair.b.value(), -quotient / pair.b.value()));
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
