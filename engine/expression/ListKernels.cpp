#include "expression/ListLoops.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <type_traits>

namespace velmorak::expression {

namespace {

/// @return the index that a position is; no index of any list for anything but a whole number from 0 on.
std::uint64_t indexOf(double position) {
    const bool isIndex = position >= 0.0 && position < 0x1p63 && position == std::floor(position);
    return isIndex ? static_cast<std::uint64_t>(position) : std::numeric_limits<std::uint64_t>::max();
}

std::uint64_t indexOf(std::int64_t position) {
    return static_cast<std::uint64_t>(position);
}

template <typename T>
T missingValue() {
    if constexpr (std::is_pointer_v<T>) {
        static const std::string none;
        return &none;
    } else {
        return std::is_floating_point_v<T> ? std::numeric_limits<T>::quiet_NaN() : T{0};
    }
}

/// @param width values in each element; a constant makes the loop over them vanish.
template <typename T, typename Position, typename Width>
bool gatherElements(const ListArgs& args, Width width) {
    const T missing = missingValue<T>();
    const std::size_t each = args.secondWidth;
    const std::uint64_t all = valuesIn(args.in[1], args.rows) * each;
    auto* out = room<T>(args, all * width);
    for (std::size_t row = 0; row < args.rows; ++row) {
        const T* const values = valuesOf<T>(args.in[0]) + args.in[0].begin(row) * width;
        const std::uint64_t count = args.in[0].count(row);
        const auto* position = valuesOf<Position>(args.in[1]) + args.in[1].begin(row) * each;
        for (const auto* const end = position + args.in[1].count(row) * each; position != end; ++position) {
            const std::uint64_t index = indexOf(*position);
            for (std::size_t k = 0; k < width; ++k) {
                *out++ = index < count ? values[index * width + k] : missing;
            }
        }
    }
    return true;
}

template <typename T, typename Position>
bool gather(const ListArgs& args) {
    return args.width == 1 ? gatherElements<T, Position>(args, std::integral_constant<std::size_t, 1>())
                           : gatherElements<T, Position>(args, args.width);
}

template <typename T>
bool combinationAt(const ListArgs& args) {
    std::vector<std::uint64_t>& offsets = beginLists(args);
    auto* const out = room<T>(args, args.rows * args.width);
    std::uint64_t made = 0;
    for (std::size_t row = 0; row < args.rows; ++row) {
        const std::uint64_t index = indexOf(valuesOf<double>(args.in[1])[row]);
        if (index < args.in[0].count(row)) {
            const T* const values = valuesOf<T>(args.in[0]) + (args.in[0].begin(row) + index) * args.width;
            std::copy_n(values, args.width, out + made);
            made += args.width;
        }
        offsets.push_back(made);
    }
    return true;
}

template <typename T>
bool concatenate(const ListArgs& args) {
    std::vector<std::uint64_t>& offsets = beginLists(args);
    auto* const out = room<T>(args, valuesIn(args.in[0], args.rows) + valuesIn(args.in[1], args.rows));
    auto* end = out;
    for (std::size_t row = 0; row < args.rows; ++row) {
        for (const std::size_t part : {0U, 1U}) {
            // Lists are short: a loop is faster than a call of memmove.
            const T* value = valuesOf<T>(args.in[part]) + args.in[part].begin(row);
            for (const T* const last = value + args.in[part].count(row); value != last; ++value) {
                *end++ = *value;
            }
        }
        offsets.push_back(static_cast<std::uint64_t>(end - out));
    }
    return true;
}

}  // namespace

ListKernel gatherKernel(ColumnType type, ColumnType position) {
    const bool isInteger = position == ColumnType::Integer;
    return kernelFor(type, [isInteger](auto value) {
        using T = decltype(value);
        return isInteger ? ListKernel{gather<T, std::int64_t>} : ListKernel{gather<T, double>};
    });
}

ListKernel combinationKernel(ColumnType type) {
    return kernelFor(type, [](auto value) { return ListKernel{combinationAt<decltype(value)>}; });
}

ListKernel concatKernel(ColumnType type) {
    return kernelFor(type, [](auto value) { return ListKernel{concatenate<decltype(value)>}; });
}

}  // namespace velmorak::expression
