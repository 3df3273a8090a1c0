#pragma once

#include <velmorak/Table.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <memory>
#include <random>
#include <vector>

/// Random values of every kind, and their comparison.
namespace velmorak {

inline constexpr std::size_t rowCount = 12;

inline Chunk chunkOf(const std::vector<Column::Reals>& columns) {
    Chunk chunk;
    chunk.rows = columns.front().size();
    for (const Column::Reals& values : columns) {
        chunk.columns.push_back(std::make_shared<Column>(Column{values, {}}));
    }
    return chunk;
}

inline bool isSame(double a, double b) {
    return (std::isnan(a) && std::isnan(b)) || std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}

inline double randomValue(std::mt19937_64& random) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    constexpr std::array special{0.0,
                                 -0.0,
                                 1.0,
                                 -1.0,
                                 infinity,
                                 -infinity,
                                 std::numeric_limits<double>::quiet_NaN(),
                                 5e-324,
                                 -5e-324,
                                 3e-310,
                                 2.2250738585072014e-308,
                                 1.7976931348623157e308,
                                 -1.7e308,
                                 0.5,
                                 2.0,
                                 709.7,
                                 -745.13,
                                 1e22,
                                 -3.0,
                                 1.0 + 0x1p-52};
    switch (random() % 6) {
        case 0:
        case 1:
            return special[random() % special.size()];
        case 2:
            return std::bit_cast<double>(random());
        case 3:
            return std::uniform_real_distribution<double>(-1.0, 1.0)(random);
        default:
            return std::normal_distribution<double>(0.0, 30.0)(random);
    }
}

inline std::vector<Column::Reals> randomColumns(std::mt19937_64& random, std::size_t rows = rowCount) {
    std::vector<Column::Reals> columns(3, Column::Reals(rows));
    for (Column::Reals& column : columns) {
        for (double& value : column) {
            value = randomValue(random);
        }
    }
    return columns;
}

inline std::uint64_t seed() {
    const char* given = std::getenv("VELMORAK_SEED");
    return !given ? 4711 : std::strtoull(given, nullptr, 10);
}

}  // namespace velmorak
