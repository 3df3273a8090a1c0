#pragma once

#include <velmorak/Table.h>

#include <cstdint>
#include <string>
#include <vector>

namespace velmorak {

/// Distribution of a column of random numbers, written as name(parameters).
struct Distribution {
    enum class Form { Uniform, Gauss, Exponential, BreitWigner, Poisson };

    Form form = Form::Uniform;
    double first = 0.0;   ///< Lower end, mean, or peak.
    double second = 1.0;  ///< Upper end, standard deviation, or full width at half maximum.

    bool isInteger() const { return form == Form::Poisson; }
    /// @return the value in one row: a function of the arguments alone.
    double valueAt(std::uint64_t row, std::uint32_t column, std::uint64_t seed) const;
};

struct RandomColumn {
    std::string name;
    Distribution distribution;
};

/// Parses columns, one a line or separated by semicolons, each as name: distribution(parameters).
/// @throws Failure for the input "columns".
std::vector<RandomColumn> randomColumnsIn(const std::string& text);

}  // namespace velmorak
