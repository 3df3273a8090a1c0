#pragma once

#include <velmorak/Kind.h>

/// Kinds that make values of histograms.
namespace velmorak {

/// Joins neighbouring bins.
class RebinKind : public Function {
public:
    std::string name() const override { return "Rebin"; }
    std::string summary() const override;
    std::string notes() const override;
    Ports ports(const ValueTexts& values) const override;
    std::string refusal(const std::string& input, const std::string& value) const override;
    void evaluate(const Arguments& arguments, Results& results, RunContext& context) const override;
};

/// Multiplies heights.
class ScaleKind : public Function {
public:
    std::string name() const override { return "Scale"; }
    std::string summary() const override;
    std::string notes() const override;
    Ports ports(const ValueTexts& values) const override;
    void evaluate(const Arguments& arguments, Results& results, RunContext& context) const override;
};

/// Combines two histograms bin by bin.
class CombineKind : public Function {
public:
    std::string name() const override { return "Combine"; }
    std::string summary() const override;
    std::string notes() const override;
    Ports ports(const ValueTexts& values) const override;
    void evaluate(const Arguments& arguments, Results& results, RunContext& context) const override;
};

/// Sums a plane along one axis.
class ProjectKind : public Function {
public:
    std::string name() const override { return "Project"; }
    std::string summary() const override;
    std::string notes() const override;
    Ports ports(const ValueTexts& values) const override;
    void evaluate(const Arguments& arguments, Results& results, RunContext& context) const override;
};

/// Sums up bins from one end.
class CumulativeKind : public Function {
public:
    std::string name() const override { return "Cumulative"; }
    std::string summary() const override;
    std::string notes() const override;
    Ports ports(const ValueTexts& values) const override;
    void evaluate(const Arguments& arguments, Results& results, RunContext& context) const override;
};

/// Tests whether two histograms show the same distribution.
class CompareKind : public Function {
public:
    std::string name() const override { return "Compare"; }
    std::string summary() const override;
    std::string notes() const override;
    Ports ports(const ValueTexts& values) const override;
    void evaluate(const Arguments& arguments, Results& results, RunContext& context) const override;
};

}  // namespace velmorak
