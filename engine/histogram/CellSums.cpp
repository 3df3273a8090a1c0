#include <velmorak/CellSums.h>

#include "histogram/CellArithmetic.h"

#include <bit>
#include <limits>

namespace velmorak {

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

/// Truncates a number to a few significant bits. A pivot need not be exact; moved by such a number, it keeps the sums
/// over whole numbers exact.
double rounded(double number) {
    constexpr std::uint64_t kept = ~((std::uint64_t{1} << 44U) - 1);
    return std::bit_cast<double>(std::bit_cast<std::uint64_t>(number) & kept);
}

/// @return pivot + step, or the pivot if the step is not finite.
double moved(double pivot, double step) {
    const double to = pivot + rounded(step);
    return std::isfinite(to) ? to : pivot;
}

template <std::size_t quantities>
bool isEmpty(const CellSums<quantities>& sums) {
    return sums == CellSums<quantities>{};
}

template <std::size_t quantities>
void addAbout(CellSums<quantities>& sums, const CellSums<quantities>& samePivot) {
    sums.entries += samePivot.entries;
    sums.w += samePivot.w;
    sums.ww += samePivot.ww;
    for (std::size_t i = 0; i < quantities; ++i) {
        sums.first[i] += samePivot.first[i];
    }
    for (std::size_t pair = 0; pair < sums.pairs; ++pair) {
        sums.second[pair] += samePivot.second[pair];
    }
}

}  // namespace

template <std::size_t quantities>
void choosePivot(CellSums<quantities>& sums, const std::array<double, quantities>& x) {
    if (sums.entries == 0) {
        for (std::size_t i = 0; i < quantities && sums.w == 0.0 && sums.ww == 0.0; ++i) {
            sums.pivot[i] = std::isfinite(x[i]) ? x[i] : 0.0;
        }
        return;
    }
    // Where weights of both signs cancel, the mean may be far from all fills.
    if (!(sums.w * sums.w >= sums.ww)) {
        return;
    }
    std::array<double, quantities> to{};
    for (std::size_t i = 0; i < quantities; ++i) {
        to[i] = moved(sums.pivot[i], sums.first[i] / sums.w);
    }
    sums.moveTo(to);
}

template <std::size_t quantities>
CellSums<quantities> CellSums<quantities>::at(const Point& point, std::int64_t entries, double w, double ww) {
    CellSums sums;
    sums.entries = entries;
    sums.w = w;
    sums.ww = ww;
    sums.pivot = point;
    return sums;
}

template <std::size_t quantities>
void CellSums<quantities>::fill(const Point& x, double weight) {
    fillCell(*this, x, weight);
}

template <std::size_t quantities>
void CellSums<quantities>::moveTo(const Point& newPivot) {
    Point step{};
    Point moment = first;
    for (std::size_t i = 0; i < quantities; ++i) {
        step[i] = newPivot[i] - pivot[i];
        moment[i] = step[i] == 0.0 ? first[i] : first[i] - w * step[i];
    }
    for (std::size_t i = 0; i < quantities; ++i) {
        for (std::size_t j = i; j < quantities; ++j) {
            if (step[i] != 0.0 || step[j] != 0.0) {
                second[pairOf(i, j)] -= step[i] * first[j] + step[j] * moment[i];
            }
        }
    }
    first = moment;
    pivot = newPivot;
}

template <std::size_t quantities>
void CellSums<quantities>::add(const CellSums& other) {
    if (isEmpty(other)) {
        return;
    }
    if (isEmpty(*this)) {
        *this = other;
        return;
    }
    const std::int64_t both = entries + other.entries;
    const double share = both == 0 ? 0.0 : static_cast<double>(other.entries) / static_cast<double>(both);
    Point joint{};
    for (std::size_t i = 0; i < quantities; ++i) {
        joint[i] = moved(pivot[i], (other.pivot[i] - pivot[i]) * share);
    }
    CellSums right = other;
    right.moveTo(joint);
    moveTo(joint);
    addAbout(*this, right);
}

template <std::size_t quantities>
void CellSums<quantities>::multiply(double factor) {
    w *= factor;
    ww *= factor * factor;
    for (double& sum : first) {
        sum *= factor;
    }
    for (double& sum : second) {
        sum *= factor;
    }
}

template <std::size_t quantities>
double CellSums<quantities>::error() const {
    return std::sqrt(ww);
}

template <std::size_t quantities>
double CellSums<quantities>::sum(std::size_t quantity) const {
    return pivot[quantity] * w + first[quantity];
}

template <std::size_t quantities>
double CellSums<quantities>::squareSum(std::size_t one, std::size_t other) const {
    return second[pairOf(one, other)] + (pivot[one] * first[other] + pivot[other] * sum(one));
}

template <std::size_t quantities>
double CellSums<quantities>::mean(std::size_t quantity) const {
    return w == 0.0 ? nan : pivot[quantity] + first[quantity] / w;
}

template <std::size_t quantities>
double CellSums<quantities>::covariance(std::size_t one, std::size_t other) const {
    return w == 0.0 ? nan : second[pairOf(one, other)] / w - (first[one] / w) * (first[other] / w);
}

template <std::size_t quantities>
double CellSums<quantities>::rms(std::size_t quantity) const {
    const double variance = covariance(quantity, quantity);
    return variance < 0.0 ? 0.0 : std::sqrt(variance);
}

template <std::size_t quantities>
double CellSums<quantities>::correlation(std::size_t one, std::size_t other) const {
    const double spreads = rms(one) * rms(other);
    return spreads == 0.0 ? nan : covariance(one, other) / spreads;
}

template <std::size_t quantities>
void CellTotal<quantities>::count(const Sums& cell) {
    if (isEmpty(cell)) {
        return;
    }
    if (isFirst) {
        total.pivot = cell.pivot;
        isFirst = false;
    }
    counted += cell.entries;
    for (std::size_t i = 0; i < quantities; ++i) {
        distances[i] += static_cast<double>(cell.entries) * (cell.pivot[i] - total.pivot[i]);
    }
}

template <std::size_t quantities>
void CellTotal<quantities>::fixPivot() {
    for (std::size_t i = 0; i < quantities && counted != 0; ++i) {
        total.pivot[i] = moved(total.pivot[i], distances[i] / static_cast<double>(counted));
    }
    isPivotFixed = true;
}

template <std::size_t quantities>
void CellTotal<quantities>::add(const Sums& cell) {
    if (isEmpty(cell)) {
        return;
    }
    if (!isPivotFixed) {
        fixPivot();
    }
    Sums there = cell;
    there.moveTo(total.pivot);
    addAbout(total, there);
}

template struct CellSums<1>;
template struct CellSums<2>;
template struct CellSums<3>;
template class CellTotal<1>;
template class CellTotal<2>;
template class CellTotal<3>;
template void choosePivot(CellSums<1>& sums, const std::array<double, 1>& x);
template void choosePivot(CellSums<2>& sums, const std::array<double, 2>& x);
template void choosePivot(CellSums<3>& sums, const std::array<double, 3>& x);

}  // namespace velmorak
