#include "expression/Kernels.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace velmorak::expression {

namespace {

/// Folds the values of each row, from the first to the last.
template <typename In, typename Out, auto step>
bool fold(const KernelArgs& lane, Out start) {
    const auto* values = static_cast<const In*>(lane.in[0]);
    auto* out = static_cast<Out*>(lane.out);
    bool isWrong = false;
    for (std::size_t row = 0; row < lane.rows; ++row) {
        Out folded = start;
        const std::uint64_t end = lane.offsets[row + 1] - lane.offsets[0];
        for (std::uint64_t position = lane.offsets[row] - lane.offsets[0]; position < end; ++position) {
            isWrong |= step(folded, values[position]);
        }
        out[row] = folded;
    }
    return !isWrong;
}

template <typename In, auto isBetter>
bool extreme(const KernelArgs& lane) {
    const auto* values = static_cast<const In*>(lane.in[0]);
    auto* out = static_cast<double*>(lane.out);
    for (std::size_t row = 0; row < lane.rows; ++row) {
        const std::uint64_t begin = lane.offsets[row] - lane.offsets[0];
        const std::uint64_t end = lane.offsets[row + 1] - lane.offsets[0];
        double best = begin == end ? std::numeric_limits<double>::quiet_NaN() : static_cast<double>(values[begin]);
        for (std::uint64_t position = begin; position < end; ++position) {
            const auto value = static_cast<double>(values[position]);
            if (isBetter(value, best) || std::isnan(value)) {
                best = value;
            }
        }
        out[row] = best;
    }
    return true;
}

bool count(const KernelArgs& lane) {
    auto* out = static_cast<std::int64_t*>(lane.out);
    for (std::size_t row = 0; row < lane.rows; ++row) {
        out[row] = static_cast<std::int64_t>(lane.offsets[row + 1] - lane.offsets[row]);
    }
    return true;
}

bool sumReals(const KernelArgs& lane) {
    return fold<double, double, [](double& sum, double value) { return sum += value, false; }>(lane, 0.0);
}

template <typename In>
bool sumIntegers(const KernelArgs& lane) {
    return fold<In, std::int64_t, [](std::int64_t& sum, In value) {
        return __builtin_add_overflow(sum, std::int64_t{value}, &sum);
    }>(lane, 0);
}

template <typename In>
bool any(const KernelArgs& lane) {
    return fold<In, std::uint8_t, [](std::uint8_t& found, In value) { return found |= value != 0 ? 1 : 0, false; }>(
        lane, 0);
}

template <typename In>
bool all(const KernelArgs& lane) {
    return fold<In, std::uint8_t, [](std::uint8_t& found, In value) { return found &= value != 0 ? 1 : 0, false; }>(
        lane, 1);
}

constexpr auto isLess = [](double x, double y) { return x < y; };
constexpr auto isMore = [](double x, double y) { return x > y; };

template <typename In, typename Out>
bool valueAt(const KernelArgs& lane, Out missing) {
    const auto* values = static_cast<const In*>(lane.in[0]);
    const auto* positions = static_cast<const double*>(lane.in[1]);
    auto* out = static_cast<Out*>(lane.out);
    for (std::size_t row = 0; row < lane.rows; ++row) {
        const std::uint64_t begin = lane.offsets[row] - lane.offsets[0];
        const std::uint64_t count = lane.offsets[row + 1] - lane.offsets[row];
        const double position = positions[row];
        const bool isThere =
            position >= 0.0 && position < static_cast<double>(count) && position == std::floor(position);
        out[row] = isThere ? static_cast<Out>(values[begin + static_cast<std::uint64_t>(position)]) : missing;
    }
    return true;
}

template <typename In>
bool numberAt(const KernelArgs& lane) {
    return valueAt<In, double>(lane, std::numeric_limits<double>::quiet_NaN());
}

bool truthAt(const KernelArgs& lane) {
    return valueAt<std::uint8_t, std::uint8_t>(lane, 0);
}

bool textAt(const KernelArgs& lane) {
    static const std::string missing;
    return valueAt<const std::string*, const std::string*>(lane, &missing);
}

template <typename T>
bool spread(const KernelArgs& lane) {
    const auto* values = static_cast<const T*>(lane.in[0]);
    auto* out = static_cast<T*>(lane.out);
    for (std::size_t row = 0; row < lane.rows; ++row) {
        out = std::fill_n(out, lane.offsets[row + 1] - lane.offsets[row], values[row]);
    }
    return true;
}

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
    for (const Entry& entry : entries) {
        if (entry.name == name && entry.element == element) {
            return entry.reduction;
        }
    }
    return {};
}

Reduction findIndexing(ColumnType element) {
    switch (element) {
        case ColumnType::Real:
            return {numberAt<double>, ColumnType::Real};
        case ColumnType::Integer:
            return {numberAt<std::int64_t>, ColumnType::Real};
        case ColumnType::Boolean:
            return {truthAt, ColumnType::Boolean};
        case ColumnType::Text:
            break;
    }
    return {textAt, ColumnType::Text};
}

Kernel spreading(ColumnType type) {
    switch (type) {
        case ColumnType::Real:
            return spread<double>;
        case ColumnType::Integer:
            return spread<std::int64_t>;
        case ColumnType::Boolean:
            return spread<std::uint8_t>;
        case ColumnType::Text:
            break;
    }
    return spread<const std::string*>;
}

}  // namespace velmorak::expression
