#pragma once

#include <velmorak/StateBytes.h>

#include <cstddef>
#include <cstdint>

namespace velmorak {

/// Compensated sum: keeps the rounding error of each addition (A. Neumaier, Z. Angew. Math. Mech. 54 (1974) 39).
class ExactSum {
public:
    void add(double term);
    void add(const ExactSum& other);
    double value() const;
    void save(StateWriter& writer) const;
    void load(StateReader& reader);

private:
    double high = 0.0;
    double low = 0.0;
};

/// Weighted moments of a stream of numbers, by shifted sums:
///     S1 = sum of w (x - p),  S2 = sum of w (x - p)^2,  mean = p + S1 / W,  rms^2 = S2 / W - (S1 / W)^2
///     S3 = sum of w (x - p)^3,  d = S1 / W,  skewness = (S3 / W - 3 d S2 / W + 2 d^3) / rms^3
/// The pivot p is the unweighted mean, which avoids cancellation; weights may have either sign. Two parts
/// are joined about their common pivot (T. F. Chan, G. H. Golub, R. J. LeVeque, Am. Stat. 37 (1983) 242; the third
/// order as in P. Pébay, Sandia National Laboratories SAND2008-6212 (2008)). Threads: one filler at a time; give each
/// chunk its own, then merge in chunk order.
class Moments {
public:
    /// @param weights null for a weight of 1 each. A NaN in x or its weight is counted and left out.
    void fill(const double* x, const double* weights, std::size_t count);
    void merge(const Moments& other);
    void save(StateWriter& writer) const;
    void load(StateReader& reader);

    std::int64_t entries() const { return filled; }
    std::int64_t nans() const { return left; }
    double sumOfWeights() const { return totalWeight.value(); }
    /// Sum of w x.
    double sum() const { return total.value(); }
    /// Weighted mean; NaN without fills or where the weights add up to 0.
    double mean() const;
    /// Weighted population standard deviation; NaN where the mean is, and where negative weights make its square
    /// negative.
    double rms() const;
    /// Third standardised moment of the population, without unit; NaN where the rms is NaN or 0.
    double skewness() const;
    /// Smallest and largest number, whatever its weight; NaN without fills.
    double minimum() const;
    double maximum() const;

private:
    void shiftTo(double newPivot);

    std::int64_t filled = 0;
    std::int64_t left = 0;
    std::int64_t finite = 0;
    double smallest = 0.0;
    double largest = 0.0;
    double pivot = 0.0;
    double first = 0.0;
    double second = 0.0;
    double third = 0.0;
    ExactSum total;
    ExactSum totalWeight;
};

}  // namespace velmorak
