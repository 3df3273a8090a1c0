#include "ExpressionKernels.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace velmorak::expression {

namespace {

/// Folds the values of each row, from the first to the last.
template <typename In, typename Out, auto step>
bool fold(const Lane& lane, Out start) {
    const auto* values = static_cast<const In*>(lane.in[0]);
    auto* out = static_cast<Out*>(lane.out);
    bool isWrong = false;
    for (std::size_t row = 0; row < lane.rows; ++row) {
        Out folded = start;
        for (std::uint64_t position = lane.offsets[row]; position < lane.offsets[row + 1]; ++position)
            isWrong |= step(folded, values[position]);
        out[row] = folded;
    }
    return !isWrong;
}

template <typename In, auto isBetter>
bool extreme(const Lane& lane) {
    const auto* values = static_cast<const In*>(lane.in[0]);
    auto* out = static_cast<double*>(lane.out);
    for (std::size_t row = 0; row < lane.rows; ++row) {
        const std::uint64_t begin = lane.offsets[row];
        const std::uint64_t end = lane.offsets[row + 1];
        double best = begin == end ? std::numeric_limits<double>::quiet_NaN() : static_cast<double>(values[begin]);
        for (std::uint64_t position = begin; position < end; ++position) {
            const auto value = static_cast<double>(values[position]);
            if (isBetter(value, best) || std::isnan(value))
                best = value;
        }
        out[row] = best;
    }
    return true;
}

bool count(const Lane& lane) {
    auto* out = static_cast<std::int64_t*>(lane.out);
    for (std::size_t row = 0; row < lane.rows; ++row)
        out[row] = static_cast<std::int64_t>(lane.offsets[row + 1] - lane.offsets[row]);
    return true;
}

bool sumReals(const Lane& lane) {
    return fold<double, double, [](double& sum, double value) { return sum += value, false; }>(lane, 0.0);
}

template <typename In>
bool sumIntegers(const Lane& lane) {
    return fold<In, std::int64_t, [](std::int64_t& sum, In value) {
        return __builtin_add_overflow(sum, std::int64_t{value}, &sum);
    }>(lane, 0);
}

template <typename In>
bool any(const Lane& lane) {
    return fold<In, std::uint8_t, [](std::uint8_t& found, In value) { return found |= value != 0 ? 1 : 0, false; }>(
        lane, 0);
}

template <typename In>
bool all(const Lane& lane) {
    return fold<In, std::uint8_t, [](std::uint8_t& found, In value) { return found &= value != 0 ? 1 : 0, false; }>(
        lane, 1);
}

constexpr auto isLess = [](double x, double y) { return x < y; };
constexpr auto isMore = [](double x, double y) { return x > y; };

struct Entry {
    std::string_view name;
    ColumnType element;
    Reduction reduction;
};

constexpr std::array entries{Entry{"sum", ColumnType::Real, {sumReals, ColumnType::Real}},
                             Entry{"sum", ColumnType::Integer, {sumIntegers<std::int64_t>, ColumnType::Integer}},
                             Entry{"sum", ColumnType::Boolean, {sumIntegers<std::uint8_t>, ColumnType::Integer}},
                             Entry{"count", ColumnType::Real, {count, ColumnType::Integer}},
                             Entry{"count", ColumnType::Integer, {count, ColumnType::Integer}},
                             Entry{"count", ColumnType::Boolean, {count, ColumnType::Integer}},
                             Entry{"count", ColumnType::Text, {count, ColumnType::Integer}},
                             Entry{"min", ColumnType::Real, {extreme<double, isLess>, ColumnType::Real}},
                             Entry{"min", ColumnType::Integer, {extreme<std::int64_t, isLess>, ColumnType::Real}},
                             Entry{"max", ColumnType::Real, {extreme<double, isMore>, ColumnType::Real}},
                             Entry{"max", ColumnType::Integer, {extreme<std::int64_t, isMore>, ColumnType::Real}},
                             Entry{"any", ColumnType::Boolean, {any<std::uint8_t>, ColumnType::Boolean}},
                             Entry{"any", ColumnType::Integer, {any<std::int64_t>, ColumnType::Boolean}},
                             Entry{"all", ColumnType::Boolean, {all<std::uint8_t>, ColumnType::Boolean}},
                             Entry{"all", ColumnType::Integer, {all<std::int64_t>, ColumnType::Boolean}}};

}  // namespace

bool isReduction(std::string_view name) {
    return std::any_of(entries.begin(), entries.end(), [&](const Entry& entry) { return entry.name == name; });
}

Reduction findReduction(std::string_view name, ColumnType element) {
    for (const Entry& entry : entries)
        if (entry.name == name && entry.element == element)
            return entry.reduction;
    return {};
}

}  // namespace velmorak::expression
