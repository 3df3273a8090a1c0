#pragma once

#include "elementary/simd/Exp.h"
#include "expression/simd/Avx2Helpers.h"
#include "expression/simd/Reverse.h"
#include "expression/simd/SimdKernels.h"

// Compiled for AVX2 with FMA and for AVX-512. Nothing here may be an inline function that other sources share: the
// linker might keep this copy for all of them, also on a processor without these instructions.

namespace velmorak::expression {

namespace {

template <typename T, auto function>
bool unary(const KernelArgs& args) {
    const auto* __restrict a = static_cast<const T*>(args.in[0]);
    auto* __restrict out = static_cast<T*>(args.out);
    const std::size_t rows = args.rows;
    for (std::size_t row = 0; row < rows; ++row) {
        out[row] = static_cast<T>(function(a[row]));
    }
    return true;
}

template <typename T, auto function>
bool binary(const KernelArgs& args) {
    const auto* __restrict a = static_cast<const T*>(args.in[0]);
    const auto* __restrict b = static_cast<const T*>(args.in[1]);
    auto* __restrict out = static_cast<T*>(args.out);
    const std::size_t rows = args.rows;
    for (std::size_t row = 0; row < rows; ++row) {
        out[row] = static_cast<T>(function(a[row], b[row]));
    }
    return true;
}

template <auto function>
bool ternary(const KernelArgs& args) {
    const auto* __restrict a = static_cast<const double*>(args.in[0]);
    const auto* __restrict b = static_cast<const double*>(args.in[1]);
    const auto* __restrict c = static_cast<const double*>(args.in[2]);
    auto* __restrict out = static_cast<double*>(args.out);
    const std::size_t rows = args.rows;
    for (std::size_t row = 0; row < rows; ++row) {
        out[row] = function(a[row], b[row], c[row]);
    }
    return true;
}

inline bool choose(const KernelArgs& args) {
    const auto* __restrict condition = static_cast<const std::uint8_t*>(args.in[0]);
    const auto* __restrict yes = static_cast<const double*>(args.in[1]);
    const auto* __restrict no = static_cast<const double*>(args.in[2]);
    auto* __restrict out = static_cast<double*>(args.out);
    const std::size_t rows = args.rows;
    for (std::size_t row = 0; row < rows; ++row) {
        const double ifTrue = yes[row];
        const double ifFalse = no[row];
        out[row] = condition[row] != 0 ? ifTrue : ifFalse;
    }
    return true;
}

inline constexpr ColumnType real = ColumnType::Real;
inline constexpr ColumnType boolean = ColumnType::Boolean;

inline constexpr SimdKernel kernels[] = {
    {"+", real, binary<double, [](double x, double y) { return x + y; }>, reverseSum},
    {"-", real, binary<double, [](double x, double y) { return x - y; }>, reverseDifference},
    {"*", real, binary<double, [](double x, double y) { return x * y; }>, reverseProduct},
    {"/", real, binary<double, [](double x, double y) { return x / y; }>, reverseQuotient},
    {"-sign", real, unary<double, [](double x) { return -x; }>, reverseNegative},
    {"abs", real, unary<double, [](double x) { return __builtin_fabs(x); }>, reverseAbsolute},
    {"sqrt", real, unary<double, [](double x) { return __builtin_sqrt(x); }>, reverseRoot},
    {"square", real, unary<double, [](double x) { return x * x; }>, reverseSquare},
    {"exp", real, unary<double, [](double x) { return elementary::exponential(x); }>, reverseExponential},
    {"-exp", real, unary<double, [](double x) { return elementary::exponential(-x); }>},
    {"*+", real, ternary<[](double x, double y, double z) { return x * y + z; }>},
    {"*-", real, ternary<[](double x, double y, double z) { return x * y - z; }>},
    {"min", real, binary<double, [](double x, double y) { return y < x || y != y ? y : x; }>, reverseExtreme},
    {"max", real, binary<double, [](double x, double y) { return x < y || y != y ? y : x; }>, reverseExtreme},
    {"if", real, choose, reverseChoice},
    {"==", real, compare<_CMP_EQ_OQ>},
    {"!=", real, compare<_CMP_NEQ_UQ>},
    {"<", real, compare<_CMP_LT_OQ>},
    {"<=", real, compare<_CMP_LE_OQ>},
    {">", real, compare<_CMP_GT_OQ>},
    {">=", real, compare<_CMP_GE_OQ>},
    {"&&", boolean,
     binary<std::uint8_t, [](int x, int y) { return static_cast<int>(x != 0) & static_cast<int>(y != 0); }>},
    {"||", boolean, binary<std::uint8_t, [](int x, int y) { return (x | y) != 0; }>},
    {"!", boolean, unary<std::uint8_t, [](int x) { return x == 0; }>},
};

inline constexpr SimdKernels allKernels{kernels, kernels + sizeof(kernels) / sizeof(kernels[0])};

}  // namespace

}  // namespace velmorak::expression
