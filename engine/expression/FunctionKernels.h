#pragma once

#include "expression/Kernels.h"

#include <cmath>

/// Loops over a block of rows, from which the kernels of the table of functions are made.
namespace velmorak::expression {

/// std::remainder, which is slow. Up to one and a half times y, differences are exact (P. Sterbenz, Floating-Point
/// Computation, 1974).
inline double nearestRemainder(double x, double y) {
    const double size = std::fabs(x);
    const double other = std::fabs(y);
    if (size < 0.5 * other) {
        return x;
    }
    return size > 0.5 * other && size < 1.5 * other ? std::copysign(1.0, x) * (size - other) : std::remainder(x, y);
}

template <typename In, typename Out, auto function>
bool unary(const KernelArgs& args) {
    const auto* a = static_cast<const In*>(args.in[0]);
    auto* out = static_cast<Out*>(args.out);
    for (std::size_t row = 0; row < args.rows; ++row) {
        out[row] = static_cast<Out>(function(a[row]));
    }
    return true;
}

template <typename In, typename Out, auto function>
bool binary(const KernelArgs& args) {
    const auto* a = static_cast<const In*>(args.in[0]);
    const auto* b = static_cast<const In*>(args.in[1]);
    auto* out = static_cast<Out*>(args.out);
    for (std::size_t row = 0; row < args.rows; ++row) {
        out[row] = static_cast<Out>(function(a[row], b[row]));
    }
    return true;
}

template <auto function>
bool ternary(const KernelArgs& args) {
    const auto* a = static_cast<const double*>(args.in[0]);
    const auto* b = static_cast<const double*>(args.in[1]);
    const auto* c = static_cast<const double*>(args.in[2]);
    auto* out = static_cast<double*>(args.out);
    for (std::size_t row = 0; row < args.rows; ++row) {
        out[row] = function(a[row], b[row], c[row]);
    }
    return true;
}

/// function says by its return value whether there is no result.
template <auto function>
bool checked(const KernelArgs& args) {
    const auto* a = static_cast<const std::int64_t*>(args.in[0]);
    const auto* b = static_cast<const std::int64_t*>(args.in[1]);
    auto* out = static_cast<std::int64_t*>(args.out);
    bool isWrong = false;
    for (std::size_t row = 0; row < args.rows; ++row) {
        isWrong |= function(a[row], !b ? 0 : b[row], out[row]);
    }
    return !isWrong;
}

template <typename T>
bool choose(const KernelArgs& args) {
    const auto* condition = static_cast<const std::uint8_t*>(args.in[0]);
    const auto* yes = static_cast<const T*>(args.in[1]);
    const auto* no = static_cast<const T*>(args.in[2]);
    auto* out = static_cast<T*>(args.out);
    for (std::size_t row = 0; row < args.rows; ++row) {
        out[row] = condition[row] != 0 ? yes[row] : no[row];
    }
    return true;
}

template <auto function>
constexpr Kernel ofReal = unary<double, double, function>;
template <auto function>
constexpr Kernel ofReals = binary<double, double, function>;
template <auto function>
constexpr Kernel ofInteger = unary<std::int64_t, std::int64_t, function>;

}  // namespace velmorak::expression
