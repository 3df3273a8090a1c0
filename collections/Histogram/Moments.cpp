#include "Moments.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace velmorak {

namespace {

constexpr double undefinedMoment = std::numeric_limits<double>::quiet_NaN();

double weightAt(const double* weights, std::size_t i) {
    return !weights ? 1.0 : weights[i];
}

bool isUsable(const double* x, const double* weights, std::size_t i) {
    return !std::isnan(x[i]) && !std::isnan(weightAt(weights, i));
}

/// Unweighted mean of the finite numbers, computed relative to the first one; count is how many there are.
double meanOfFinite(const double* x, const double* weights, std::size_t size, std::int64_t& count) {
    double origin = 0.0;
    double sum = 0.0;
    for (std::size_t i = 0; i < size; ++i) {
        if (!isUsable(x, weights, i) || !std::isfinite(x[i])) {
            continue;
        }
        if (count++ == 0) {
            origin = x[i];
        }
        sum += x[i] - origin;
    }
    const double mean = count == 0 ? 0.0 : origin + sum / static_cast<double>(count);
    return std::isfinite(mean) ? mean : origin;
}

}  // namespace

void ExactSum::add(double term) {
    const double sum = high + term;
    low += std::abs(high) >= std::abs(term) ? (high - sum) + term : (term - sum) + high;
    high = sum;
}

void ExactSum::add(const ExactSum& other) {
    add(other.high);
    low += other.low;
}

double ExactSum::value() const {
    return std::isfinite(high) ? high + low : high;
}

void ExactSum::save(StateWriter& writer) const {
    writer.number(high);
    writer.number(low);
}

void ExactSum::load(StateReader& reader) {
    high = reader.number<double>();
    low = reader.number<double>();
}

void Moments::save(StateWriter& writer) const {
    for (const std::int64_t count : {filled, left, finite}) {
        writer.number(count);
    }
    for (const double number : {smallest, largest, pivot, first, second, third}) {
        writer.number(number);
    }
    total.save(writer);
    totalWeight.save(writer);
}

void Moments::load(StateReader& reader) {
    for (std::int64_t* count : {&filled, &left, &finite}) {
        *count = reader.count();
    }
    for (double* number : {&smallest, &largest, &pivot, &first, &second, &third}) {
        *number = reader.number<double>();
    }
    total.load(reader);
    totalWeight.load(reader);
}

void Moments::fill(const double* x, const double* weights, std::size_t count) {
    Moments part;
    part.pivot = meanOfFinite(x, weights, count, part.finite);
    part.smallest = std::numeric_limits<double>::infinity();
    part.largest = -part.smallest;
    for (std::size_t i = 0; i < count; ++i) {
        if (!isUsable(x, weights, i)) {
            ++part.left;
            continue;
        }
        const double w = weightAt(weights, i);
        const double distance = x[i] - part.pivot;
        ++part.filled;
        part.smallest = std::min(part.smallest, x[i]);
        part.largest = std::max(part.largest, x[i]);
        part.first += w * distance;
        part.second += w * distance * distance;
        part.third += w * distance * distance * distance;
        part.total.add(w * x[i]);
        part.totalWeight.add(w);
    }
    merge(part);
}

void Moments::shiftTo(double newPivot) {
    const double shift = pivot - newPivot;
    const double weight = totalWeight.value();
    third += shift * (3.0 * second + shift * (3.0 * first + shift * weight));
    second += shift * (2.0 * first + shift * weight);
    first += shift * weight;
    pivot = newPivot;
}

void Moments::merge(const Moments& other) {
    const std::int64_t nansOfBoth = left + other.left;
    if (filled == 0) {
        *this = other;
    } else if (other.filled > 0) {
        Moments right = other;
        const double share = finite + other.finite == 0
                                 ? 0.0
                                 : static_cast<double>(other.finite) / static_cast<double>(finite + other.finite);
        const double joint = finite == 0 ? other.pivot : pivot + (other.pivot - pivot) * share;
        shiftTo(joint);
        right.shiftTo(joint);
        first += right.first;
        second += right.second;
        third += right.third;
        filled += other.filled;
        finite += other.finite;
        smallest = std::min(smallest, other.smallest);
        largest = std::max(largest, other.largest);
        total.add(other.total);
        totalWeight.add(other.totalWeight);
    }
    left = nansOfBoth;
}

double Moments::mean() const {
    const double weight = totalWeight.value();
    return filled == 0 || weight == 0.0 ? undefinedMoment : pivot + first / weight;
}

double Moments::rms() const {
    const double weight = totalWeight.value();
    if (filled == 0 || weight == 0.0) {
        return undefinedMoment;
    }
    const double offset = first / weight;
    const double variance = second / weight - offset * offset;
    // With weights of one sign the exact value is not below 0; a negative rounding error is set to 0.
    const double rounding = 1e-14 * (std::abs(second / weight) + offset * offset);
    return variance < 0.0 && variance > -rounding ? 0.0 : std::sqrt(variance);
}

double Moments::skewness() const {
    const double spread = rms();
    if (!(spread > 0.0)) {
        return undefinedMoment;
    }
    const double weight = totalWeight.value();
    const double offset = first / weight;
    const double central = third / weight + offset * (2.0 * offset * offset - 3.0 * second / weight);
    return central / spread / spread / spread;
}

double Moments::minimum() const {
    return filled == 0 ? undefinedMoment : smallest;
}

double Moments::maximum() const {
    return filled == 0 ? undefinedMoment : largest;
}

}  // namespace velmorak
