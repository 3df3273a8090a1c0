#include "DecimalGrid.h"

#include <velmorak/ElementaryFunctions.h>
#include <velmorak/Failure.h>
#include <velmorak/Value.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string>

namespace velmorak {

namespace {

/// Powers of ten up to this one are exact doubles.
constexpr int maxExactPower = 22;
constexpr int minExponent = -300;
/// Decimal digits for which neighbouring edges differ, and the number of a cell is an exact double.
constexpr int digits = 14;

std::int64_t floorOf(std::int64_t number, std::int64_t divisor) {
    const std::int64_t quotient = number / divisor;
    return number % divisor < 0 ? quotient - 1 : quotient;
}

double powerOfTen(int exponent) {
    double power = 1.0;
    for (int i = 0; i < exponent; ++i) {
        power *= 10.0;
    }
    return power;
}

int exponentOf(double positive) {
    return static_cast<int>(std::floor(elementary::log10(positive)));
}

/// The double next to number times 10^exponent.
double decimal(std::int64_t number, int exponent) {
    const auto digitsOfNumber = static_cast<double>(number);
    if (exponent >= 0 && exponent <= maxExactPower) {
        return digitsOfNumber * powerOfTen(exponent);
    }
    if (exponent < 0 && exponent >= -maxExactPower) {
        return digitsOfNumber / powerOfTen(-exponent);
    }
    const std::string text = std::to_string(number) + "e" + std::to_string(exponent);
    double value = 0.0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

/// Smallest exponent on which numbers of this size have cells.
int finestExponent(double size) {
    return size == 0.0 ? minExponent : std::max(minExponent, exponentOf(size) - digits);
}

}  // namespace

DecimalGrid::DecimalGrid(double low, double high, std::size_t maxCells) {
    const double size = std::max(std::abs(low), std::abs(high));
    if (size > maxNumber) {
        throw Failure("range", "a value of " + textOf(low == -size ? low : high) +
                                   " is too large for an automatic range; enter low and high");
    }
    exponent = finestExponent(size);
    const auto most = static_cast<std::int64_t>(maxCells);
    // 0 also where the span is subnormal; the finest grid then has enough cells.
    if (const double width = (high - low) / static_cast<double>(maxCells); width > 0.0) {
        exponent = std::max(exponent, exponentOf(width) - 1);
    }
    while (cellOf(high) - cellOf(low) >= most) {
        ++exponent;
    }
    firstCell = cellOf(low);
    lastCell = cellOf(high);
}

double DecimalGrid::edge(std::int64_t number) const {
    return decimal(number, exponent);
}

std::int64_t DecimalGrid::cellOf(double x) const {
    const double scaled = exponent >= 0 ? x / elementary::powerOfTen(exponent)
                                        : x * elementary::powerOfTen(-std::max(exponent, minExponent));
    auto number = static_cast<std::int64_t>(std::floor(scaled));
    while (edge(number) > x) {
        --number;
    }
    while (edge(number + 1) <= x) {
        ++number;
    }
    return number;
}

Axis DecimalGrid::axis() const {
    std::vector<double> edges;
    edges.reserve(count() + 1);
    for (std::int64_t number = firstCell; number <= lastCell + 1; ++number) {
        edges.push_back(edge(number));
    }
    return Axis(std::move(edges));
}

std::int64_t DecimalGrid::cellIn(const DecimalGrid& coarser, std::int64_t number) const {
    for (int step = exponent; step < coarser.exponent && number != 0 && number != -1; ++step) {
        number = floorOf(number, 10);
    }
    return number;
}

RoundBins::RoundBins(const DecimalGrid& grid, std::size_t bins) : count(bins) {
    const auto many = static_cast<std::int64_t>(bins);
    const std::int64_t last = grid.first() + static_cast<std::int64_t>(grid.count()) - 1;
    for (std::int64_t power = 10;; power *= 10) {
        for (const std::int64_t candidate : {power, 2 * power, power / 10 * 25, 5 * power}) {
            // A single bin that began at a multiple of its width could never hold numbers of both signs.
            const std::int64_t step = bins == 1 ? candidate / 10 : candidate;
            width = candidate;
            first = floorOf(grid.first(), step) * step;
            if (last < first + many * width) {
                return;
            }
        }
    }
}

Axis RoundBins::axis(const DecimalGrid& grid) const {
    std::vector<double> edges;
    edges.reserve(count + 1);
    for (std::size_t i = 0; i <= count; ++i) {
        edges.push_back(grid.edge(first + static_cast<std::int64_t>(i) * width));
    }
    return Axis(std::move(edges));
}

}  // namespace velmorak
