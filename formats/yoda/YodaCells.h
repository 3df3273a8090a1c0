#pragma once

#include "yoda/YodaBlocks.h"

#include <velmorak/CellSums.h>
#include <velmorak/Grid.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace velmorak::yoda {

/// A fault of an object, in a sentence without its name.
class Fault : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// @throws Fault unless the word is a number.
double numberIn(const std::string& word);
std::vector<double> numbersIn(const std::vector<std::string>& words);

/// @return the axis that a line "Edges(A1): [...]" describes. @throws Fault.
Axis axisOf(const std::string& edges);
/// Bins that rows give by their limits, in order or not; gaps become empty bins. @throws Fault if bins overlap.
Axis axisOf(std::vector<std::pair<double, double>> bins);

/// Reads the sums of a cell: w, w2, then for each quantity x, x2, then the cross terms if there are any, and entries.
/// @throws Fault if the number of numbers is wrong.
template <std::size_t quantities>
CellSums<quantities> sumsOf(const std::vector<double>& numbers, std::size_t from) {
    constexpr std::size_t pairs = quantities * (quantities - 1) / 2;
    const std::size_t count = numbers.size() - std::min(from, numbers.size());
    const bool hasOneCross = quantities == 3 && count == 3 + 2 * quantities + 1;
    const bool hasCross = count == 3 + 2 * quantities + pairs && pairs > 0;
    if (count != 3 + 2 * quantities && !hasCross && !hasOneCross) {
        throw Fault("a row has " + std::to_string(numbers.size()) + " numbers");
    }
    CellSums<quantities> sums;
    const double* next = numbers.data() + from;
    sums.w = *next++;
    sums.ww = *next++;
    for (std::size_t i = 0; i < quantities; ++i) {
        sums.first[i] = *next++;
        sums.second[sums.pairOf(i, i)] = *next++;
    }
    for (std::size_t i = 0; i < quantities; ++i) {
        for (std::size_t j = i + 1; j < quantities; ++j) {
            const bool isGiven = hasCross || (hasOneCross && i == 0 && j == 1);
            const double uncorrelated = sums.w == 0.0 ? 0.0 : sums.first[i] * sums.first[j] / sums.w;
            sums.second[sums.pairOf(i, j)] = isGiven ? *next++ : uncorrelated;
        }
    }
    constexpr double most = 9e18;
    sums.entries = static_cast<std::int64_t>(std::abs(*next) < most ? std::nearbyint(*next) : 0.0);
    return sums;
}

}  // namespace velmorak::yoda
