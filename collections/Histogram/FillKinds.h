#pragma once

#include <velmorak/Kind.h>

namespace velmorak {

/// Kinds that fill an object from the rows of a table.
class FillKind : public Accumulator {
public:
    std::string notes() const override;
    std::string refusal(const std::string& input, const std::string& value) const override;
};

/// Fills a one-dimensional histogram.
class Histogram1DKind : public FillKind {
public:
    std::string name() const override { return "Histogram1D"; }
    std::string summary() const override;
    Ports ports(const ValueTexts& values) const override;
    std::unique_ptr<Accumulation> prepare(const Arguments& arguments, const Schema* schema,
                                          RunContext& context) const override;
};

/// Fills a two-dimensional histogram.
class Histogram2DKind : public FillKind {
public:
    std::string name() const override { return "Histogram2D"; }
    std::string summary() const override;
    std::string notes() const override;
    Ports ports(const ValueTexts& values) const override;
    std::unique_ptr<Accumulation> prepare(const Arguments& arguments, const Schema* schema,
                                          RunContext& context) const override;
};

/// Fills the mean of one quantity in bins of another.
class Profile1DKind : public FillKind {
public:
    std::string name() const override { return "Profile1D"; }
    std::string summary() const override;
    std::string notes() const override;
    Ports ports(const ValueTexts& values) const override;
    std::unique_ptr<Accumulation> prepare(const Arguments& arguments, const Schema* schema,
                                          RunContext& context) const override;
};

}  // namespace velmorak
