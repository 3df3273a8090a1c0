#pragma once

#include <velmorak/Value.h>

#include <optional>
#include <string>
#include <vector>

namespace velmorak {

/// The numbers of an object as a table: one row for each bin, point or sample.
struct ObjectTable {
    struct Number {
        double value = 0.0;
        bool isCount = false;                            ///< Written without a decimal point.
        std::optional<std::string> text = std::nullopt;  ///< Written instead of the number.
    };
    std::vector<std::string> columns;
    std::vector<std::vector<Number>> rows;
};

/// Range in which a function is sampled.
struct Sampling {
    std::size_t count = 101;
    std::optional<double> low;  ///< Empty: the lower end of the function's range.
    std::optional<double> high;
};

/// Lists bins including underflow and overflow, which extend to infinity; points with their errors; samples of a
/// function of one argument, both ends included.
/// @throws Failure, without an input, for a function that cannot be evaluated or has no range.
ObjectTable objectTable(const DataObject& object, const Sampling& sampling);

}  // namespace velmorak
