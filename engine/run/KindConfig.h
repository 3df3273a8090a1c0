#pragma once

#include <velmorak/Expression.h>
#include <velmorak/Run.h>

#include <cstdint>
#include <optional>
#include <string>

namespace velmorak {

/// Settings of the program that kinds get.
struct KindConfig {
    double maxCells = RunContext::defaultMaxCells;
    std::uint64_t maxCombinations = Expression::defaultMaxCombinations;
    std::optional<double> fixedDate{};
    std::string warning{};  ///< About settings that cannot be used; empty if there are none.
};

/// Reads VELMORAK_MOST_CELLS, VELMORAK_COMBINATIONS and SOURCE_DATE_EPOCH.
KindConfig kindConfigFromEnvironment();

}  // namespace velmorak
