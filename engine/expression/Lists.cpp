#include "expression/Kernels.h"
#include "expression/ListLoops.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace velmorak::expression {

namespace {

/// Folds the values of each row in order.
template <typename In, typename Out, auto step>
bool fold(const KernelArgs& args, Out start) {
    const auto* values = static_cast<const In*>(args.in[0]);
    auto* out = static_cast<Out*>(args.out);
    bool isWrong = false;
    for (std::size_t row = 0; row < args.rows; ++row) {
        Out folded = start;
        const std::uint64_t end = args.offsets[row + 1] - args.offsets[0];
        for (std::uint64_t position = args.offsets[row] - args.offsets[0]; position < end; ++position) {
            isWrong |= step(folded, values[position]);
        }
        out[row] = folded;
    }
    return !isWrong;
}

template <typename In, auto isBetter>
bool extreme(const KernelArgs& args) {
    const auto* values = static_cast<const In*>(args.in[0]);
    auto* out = static_cast<double*>(args.out);
    for (std::size_t row = 0; row < args.rows; ++row) {
        const std::uint64_t begin = args.offsets[row] - args.offsets[0];
        const std::uint64_t end = args.offsets[row + 1] - args.offsets[0];
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

bool count(const KernelArgs& args) {
    auto* out = static_cast<std::int64_t*>(args.out);
    for (std::size_t row = 0; row < args.rows; ++row) {
        out[row] = static_cast<std::int64_t>(args.offsets[row + 1] - args.offsets[row]);
    }
    return true;
}

bool sumReals(const KernelArgs& args) {
    return fold<double, double, [](double& sum, double value) { return sum += value, false; }>(args, 0.0);
}

/// The sum of each combination, as sumReals has it.
template <std::size_t width>
bool sumCombinations(const KernelArgs& args) {
    const auto* values = static_cast<const double*>(args.in[0]);
    auto* out = static_cast<double*>(args.out);
    for (std::size_t i = 0; i < args.rows; ++i) {
        double sum = 0.0;
        for (std::size_t k = 0; k < width; ++k) {
            sum += values[width * i + k];
        }
        out[i] = sum;
    }
    return true;
}

template <typename In>
bool sumIntegers(const KernelArgs& args) {
    return fold<In, std::int64_t, [](std::int64_t& sum, In value) {
        return __builtin_add_overflow(sum, std::int64_t{value}, &sum);
    }>(args, 0);
}

template <typename In>
bool any(const KernelArgs& args) {
    return fold<In, std::uint8_t, [](std::uint8_t& found, In value) { return found |= value != 0 ? 1 : 0, false; }>(
        args, 0);
}

template <typename In>
bool all(const KernelArgs& args) {
    return fold<In, std::uint8_t, [](std::uint8_t& found, In value) { return found &= value != 0 ? 1 : 0, false; }>(
        args, 1);
}

/// The position of the first of the best values; NaN is no value. -1 if there is none.
template <typename In, auto isBetter>
bool extremePosition(const KernelArgs& args) {
    const auto* values = static_cast<const In*>(args.in[0]);
    auto* out = static_cast<std::int64_t*>(args.out);
    for (std::size_t row = 0; row < args.rows; ++row) {
        const std::uint64_t begin = args.offsets[row] - args.offsets[0];
        const std::uint64_t count = args.offsets[row + 1] - args.offsets[row];
        std::int64_t best = -1;
        for (std::uint64_t i = 0; i < count; ++i) {
            const In value = values[begin + i];
            if (!isMissing(value) && (best < 0 || isBetter(value, values[begin + static_cast<std::uint64_t>(best)]))) {
                best = static_cast<std::int64_t>(i);
            }
        }
        out[row] = best;
    }
    return true;
}

constexpr auto isLess = [](auto x, auto y) { return x < y; };
constexpr auto isMore = [](auto x, auto y) { return x > y; };

template <typename T, int position>
bool elementOr(const KernelArgs& args) {
    const auto* values = static_cast<const T*>(args.in[0]);
    const auto* others = static_cast<const T*>(args.in[1]);
    auto* out = static_cast<T*>(args.out);
    for (std::size_t row = 0; row < args.rows; ++row) {
        const std::uint64_t begin = args.offsets[row] - args.offsets[0];
        const std::uint64_t count = args.offsets[row + 1] - args.offsets[row];
        const std::uint64_t index = position < 0 ? count - 1 : static_cast<std::uint64_t>(position);
        out[row] = index < count ? values[begin + index] : others[row];
    }
    return true;
}

template <typename T>
Kernel elementOf(int position) {
    return position == 0   ? elementOr<T, 0>
           : position == 1 ? elementOr<T, 1>
           : position == 2 ? elementOr<T, 2>
                           : elementOr<T, -1>;
}

template <typename In, typename Out>
bool valueAt(const KernelArgs& args, Out missing) {
    const auto* values = static_cast<const In*>(args.in[0]);
    const auto* positions = static_cast<const double*>(args.in[1]);
    auto* out = static_cast<Out*>(args.out);
    for (std::size_t row = 0; row < args.rows; ++row) {
        const std::uint64_t begin = args.offsets[row] - args.offsets[0];
        const std::uint64_t count = args.offsets[row + 1] - args.offsets[row];
        const double position = positions[row];
        const bool isThere =
            position >= 0.0 && position < static_cast<double>(count) && position == std::floor(position);
        out[row] = isThere ? static_cast<Out>(values[begin + static_cast<std::uint64_t>(position)]) : missing;
    }
    return true;
}

template <typename In>
bool numberAt(const KernelArgs& args) {
    return valueAt<In, double>(args, std::numeric_limits<double>::quiet_NaN());
}

bool truthAt(const KernelArgs& args) {
    return valueAt<std::uint8_t, std::uint8_t>(args, 0);
}

bool textAt(const KernelArgs& args) {
    static const std::string missing;
    return valueAt<const std::string*, const std::string*>(args, &missing);
}

template <typename T>
bool broadcast(const KernelArgs& args) {
    const auto* values = static_cast<const T*>(args.in[0]);
    auto* out = static_cast<T*>(args.out);
    for (std::size_t row = 0; row < args.rows; ++row) {
        out = std::fill_n(out, args.offsets[row + 1] - args.offsets[row], values[row]);
    }
    return true;
}

struct Entry {
    std::string_view name;
    ColumnType element;
    Reduction reduction;
};

constexpr std::array entries{
    Entry{"sum", ColumnType::Real, {sumReals, ColumnType::Real}},
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
    Entry{"argmin", ColumnType::Real, {extremePosition<double, isLess>, ColumnType::Integer}},
    Entry{"argmin", ColumnType::Integer, {extremePosition<std::int64_t, isLess>, ColumnType::Integer}},
    Entry{"argmax", ColumnType::Real, {extremePosition<double, isMore>, ColumnType::Integer}},
    Entry{"argmax", ColumnType::Integer, {extremePosition<std::int64_t, isMore>, ColumnType::Integer}},
    Entry{"any", ColumnType::Boolean, {any<std::uint8_t>, ColumnType::Boolean}},
    Entry{"any", ColumnType::Integer, {any<std::int64_t>, ColumnType::Boolean}},
    Entry{"all", ColumnType::Boolean, {all<std::uint8_t>, ColumnType::Boolean}},
    Entry{"all", ColumnType::Integer, {all<std::int64_t>, ColumnType::Boolean}}};

}  // namespace

bool isReduction(std::string_view name) {
    return std::any_of(entries.begin(), entries.end(), [&](const Entry& entry) { return entry.name == name; });
}

Reduction findReduction(std::string_view name, ColumnType element, std::size_t width) {
    if (name == "sum" && element == ColumnType::Real && width > 1) {
        return {width == 2 ? sumCombinations<2> : sumCombinations<3>, ColumnType::Real};
    }
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

Kernel elementKernel(ColumnType type, int position) {
    switch (type) {
        case ColumnType::Real:
            return elementOf<double>(position);
        case ColumnType::Integer:
            return elementOf<std::int64_t>(position);
        case ColumnType::Boolean:
            return elementOf<std::uint8_t>(position);
        case ColumnType::Text:
            break;
    }
    return elementOf<const std::string*>(position);
}

Kernel broadcastKernel(ColumnType type) {
    switch (type) {
        case ColumnType::Real:
            return broadcast<double>;
        case ColumnType::Integer:
            return broadcast<std::int64_t>;
        case ColumnType::Boolean:
            return broadcast<std::uint8_t>;
        case ColumnType::Text:
            break;
    }
    return broadcast<const std::string*>;
}

}  // namespace velmorak::expression
