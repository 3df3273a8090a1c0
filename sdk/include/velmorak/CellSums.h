#pragma once

#include <velmorak/CellVector.h>

#include <array>
#include <cstddef>
#include <cstdint>

namespace velmorak {

/// Sums over the fills of one cell, w being the weight and x the quantities: the coordinates, and for a profile the
/// profiled value after them. The sums are formed about a pivot p, which is the first fill and later moves close to the
/// mean:
///     first = sum of w (x - p),   second = sum of w (x - p) (x' - p'),
/// so that mean and spread do not suffer from cancellation however far the fills are from 0. Sums about 0 are derived
/// (sum, squareSum). Two cells are added about a common pivot (T. F. Chan, G. H. Golub, R. J. LeVeque, Am. Stat. 37
/// (1983) 242; P. Pébay, Sandia National Laboratories SAND2008-6212 (2008)).
/// Alignment: a fill touches a single cache line for one quantity, two for more.
template <std::size_t quantities>
struct alignas(quantities == 2 ? 16 : 64) CellSums {
    static constexpr std::size_t pairs = quantities * (quantities + 1) / 2;
    using Point = std::array<double, quantities>;

    double w = 0.0;
    double ww = 0.0;
    Point first{};
    std::array<double, pairs> second{};  ///< Indexed by pairOf.
    std::int64_t entries = 0;
    Point pivot{};

    /// Position of the pair of two quantities in second: (0, 0), (0, 1), ... (1, 1), ...
    static constexpr std::size_t pairOf(std::size_t one, std::size_t other) {
        return one > other ? pairOf(other, one) : one * quantities - one * (one + 1) / 2 + other;
    }

    /// @return the sums of fills that all lie at one point.
    static CellSums at(const Point& point, std::int64_t entries, double w, double ww);

    void fill(const Point& x, double weight);
    void add(const CellSums& other);
    /// Multiplies the weight of each fill by a factor.
    void multiply(double factor);
    /// Forms the sums about another pivot.
    void moveTo(const Point& newPivot);

    /// Square root of the sum of squared weights.
    double error() const;
    /// Sum of w x.
    double sum(std::size_t quantity) const;
    /// Sum of w x x'.
    double squareSum(std::size_t one, std::size_t other) const;
    /// Weighted mean; NaN without weight.
    double mean(std::size_t quantity) const;
    /// Weighted population covariance; NaN without weight.
    double covariance(std::size_t one, std::size_t other) const;
    /// Weighted population standard deviation; NaN without weight, 0 if rounding or negative weights leave no positive
    /// variance.
    double rms(std::size_t quantity) const;
    /// Linear correlation coefficient; NaN where one of the quantities has no spread.
    double correlation(std::size_t one, std::size_t other) const;

    /// @return the sums of some of the quantities, in the given order.
    template <std::size_t count>
    CellSums<count> of(const std::array<std::size_t, count>& chosen) const {
        CellSums<count> sums;
        sums.entries = entries;
        sums.w = w;
        sums.ww = ww;
        for (std::size_t i = 0; i < count; ++i) {
            sums.first[i] = first[chosen[i]];
            sums.pivot[i] = pivot[chosen[i]];
            for (std::size_t j = i; j < count; ++j) {
                sums.second[sums.pairOf(i, j)] = second[pairOf(chosen[i], chosen[j])];
            }
        }
        return sums;
    }

    bool operator==(const CellSums&) const = default;
};

extern template struct CellSums<1>;
extern template struct CellSums<2>;
extern template struct CellSums<3>;

}  // namespace velmorak
