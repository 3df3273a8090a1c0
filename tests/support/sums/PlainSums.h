#pragma once

#include <velmorak/Histogram.h>

namespace velmorak {

/// The sums of a cell of one quantity about 0.
struct PlainSums {
    std::int64_t entries = 0;
    double w = 0.0;
    double ww = 0.0;
    double wx = 0.0;
    double wxx = 0.0;

    bool operator==(const PlainSums&) const = default;
};

inline PlainSums plain(const BinSums& cell) {
    return {.entries = cell.entries, .w = cell.w, .ww = cell.ww, .wx = cell.sum(0), .wxx = cell.squareSum(0, 0)};
}

}  // namespace velmorak
