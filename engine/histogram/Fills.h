#pragma once

#include <array>
#include <cmath>
#include <cstddef>

namespace velmorak::filling {

/// Points to fill, in order, as one array per quantity, the coordinates first; weights is null if each is 1.
template <std::size_t quantities>
struct Fills {
    std::array<const double*, quantities> columns{};
    const double* weights = nullptr;
    std::size_t count = 0;

    Fills from(std::size_t first) const {
        Fills rest = *this;
        for (const double*& column : rest.columns) {
            column += first;
        }
        rest.weights = !weights ? nullptr : weights + first;
        rest.count -= first;
        return rest;
    }
    double weight(std::size_t position) const { return !weights ? 1.0 : weights[position]; }
    std::array<double, quantities> point(std::size_t position) const {
        std::array<double, quantities> point{};
        for (std::size_t i = 0; i < quantities; ++i) {
            point[i] = columns[i][position];
        }
        return point;
    }
};

template <std::size_t quantities>
bool hasNan(const std::array<double, quantities>& point) {
    bool has = false;
    for (const double x : point) {
        has = has || std::isnan(x);
    }
    return has;
}

}  // namespace velmorak::filling
