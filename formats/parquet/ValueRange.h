#pragma once

#include "parquet/Leaves.h"

#include <optional>

namespace velmorak::parquet {

/// All values of a leaf in a row group but NaN and those that are missing.
struct ValueRange {
    double low = 0.0;
    double high = 0.0;
};

/// @return nothing if the statistics do not say it, or the values are not numbers that the table has as they are:
/// dates,
///         decimals and unsigned integers are converted, and integers beyond 2^53 rounded.
std::optional<ValueRange> valueRange(const Leaf& leaf, const Statistics& statistics);

}  // namespace velmorak::parquet
