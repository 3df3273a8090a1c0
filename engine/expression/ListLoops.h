#pragma once

#include "expression/ListKernels.h"

#include <cmath>
#include <type_traits>

/// What the list kernels share.
namespace velmorak::expression {

using TextPtr = const std::string*;

template <typename T>
T* room(const ListArgs& args, std::size_t count) {
    constexpr std::size_t each = sizeof(T);  // NOLINT(bugprone-sizeof-expression): T may be a pointer to a text.
    if (args.out->size() < count * each) {
        args.out->resize(count * each);
    }
    return reinterpret_cast<T*>(args.out->data());
}

inline std::uint64_t valuesIn(const ListInput& input, std::size_t rows) {
    return input.begin(rows);
}

template <typename T>
const T* valuesOf(const ListInput& input) {
    return static_cast<const T*>(input.values);
}

/// Begins the offsets of the lists that a kernel makes.
inline std::vector<std::uint64_t>& beginLists(const ListArgs& args) {
    args.offsets->assign(1, 0);
    args.offsets->reserve(args.rows + 1);
    return *args.offsets;
}

template <typename T>
bool isMissing(T value) {
    if constexpr (std::is_floating_point_v<T>) {
        return std::isnan(value);
    } else {
        return false;
    }
}

template <typename T>
bool isBefore(T a, T b) {
    if constexpr (std::is_pointer_v<T>) {
        return *a < *b;
    } else {
        return a < b || (isMissing(b) && !isMissing(a));
    }
}

template <typename T>
bool areSame(T a, T b) {
    if constexpr (std::is_pointer_v<T>) {
        return *a == *b;
    } else {
        return a == b || (isMissing(a) && isMissing(b));
    }
}

/// @param choose takes a value of the type by which buffers hold the values of a column.
template <typename Choose>
ListKernel kernelFor(ColumnType type, const Choose& choose) {
    switch (type) {
        case ColumnType::Real:
            return choose(double{});
        case ColumnType::Integer:
            return choose(std::int64_t{});
        case ColumnType::Boolean:
            return choose(std::uint8_t{});
        case ColumnType::Text:
            break;
    }
    return choose(TextPtr{});
}

}  // namespace velmorak::expression
