#pragma once

#include <velmorak/Value.h>

#include <optional>
#include <string>
#include <vector>

namespace velmorak {

/// The numbers of an object as a table: a row for each bin, point or sample.
struct ObjectTable {
    struct Number {
        double value = 0.0;
        bool isCount = false;  ///< Written without a decimal point.
    };
    std::vector<std::string> columns;
    std::vector<std::vector<Number>> rows;
};

/// Where a function is computed.
struct Sampling {
    std::size_t count = 101;
    std::optional<double> low;  ///< Nothing: where the function says that it begins.
    std::optional<double> high;
};

/// Bins with under- and overflow, which reach to infinity; points with their errors; samples of a function of one
/// argument, both ends included.
/// @throws Failure, without an input, for a function that cannot be computed or has no range.
ObjectTable objectTable(const DataObject& object, const Sampling& sampling);

}  // namespace velmorak
