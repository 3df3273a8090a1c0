#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace velmorak {

/// The sum of the last numbers of a sequence. Nothing is ever subtracted, so that neither rounding errors nor an
/// infinity outlive the numbers that caused them: the older numbers are kept as sums up to a point in the middle, the
/// newer ones as one sum from there. NaN takes a place, but adds nothing.
class SlidingSum {
public:
    explicit SlidingSum(std::size_t length) : length(length) {}

    void push(double value) {
        if (older.size() + newer.size() == length) {
            dropFirst();
        }
        newer.push_back(value);
        newerSum = plus(newerSum, value);
    }
    double sum() const { return total().sum; }
    /// NaN if there are only NaN.
    double mean() const {
        const Sum all = total();
        return all.count > 0 ? all.sum / static_cast<double>(all.count) : std::numeric_limits<double>::quiet_NaN();
    }

private:
    struct Sum {
        double sum = 0.0;
        std::uint64_t count = 0;
    };

    static Sum plus(Sum sum, double value) { return std::isnan(value) ? sum : Sum{sum.sum + value, sum.count + 1}; }
    Sum total() const {
        return older.empty() ? newerSum : Sum{older.back().sum + newerSum.sum, older.back().count + newerSum.count};
    }
    void dropFirst() {
        if (older.empty()) {
            Sum sum;
            for (std::size_t i = newer.size(); i-- > 0;) {
                sum = plus(sum, newer[i]);
                older.push_back(sum);
            }
            newer.clear();
            newerSum = {};
        }
        older.pop_back();
    }

    std::size_t length;
    std::vector<Sum> older;  ///< The last is the sum of all of these numbers.
    std::vector<double> newer;
    Sum newerSum;
};

}  // namespace velmorak
