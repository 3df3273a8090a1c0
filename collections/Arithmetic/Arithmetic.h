#pragma once

#include <velmorak/Kind.h>

namespace velmorak {

/// Gives a number that was written down.
class NumberKind : public Function {
public:
    std::string name() const override { return "Number"; }
    std::string summary() const override;
    Ports ports(const ValueTexts& values) const override;
    void evaluate(const Arguments& arguments, Results& results, RunContext& context) const override;
};

/// Gives a text that was written down.
class TextKind : public Function {
public:
    std::string name() const override { return "Text"; }
    std::string summary() const override;
    Ports ports(const ValueTexts& values) const override;
    void evaluate(const Arguments& arguments, Results& results, RunContext& context) const override;
};

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

}  // namespace velmorak
