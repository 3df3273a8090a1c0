#include "elementary/Loops.h"
#include "expression/simd/SimdKernels.h"

#include <velmorak/ElementaryFunctions.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <type_traits>

// Compiled without contraction of a product and a sum into one rounding: a row has the same bits in every loop.
namespace velmorak::expression {

namespace {

using TextPtr = const std::string*;

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

/// A function of engine/elementary, in the variant for this processor.
template <auto loop>
bool elementaryOfOne(const KernelArgs& args) {
    (elementary::bestLoops().*loop)(static_cast<const double*>(args.in[0]), args.rows, static_cast<double*>(args.out));
    return true;
}

template <auto loop>
bool elementaryOfTwo(const KernelArgs& args) {
    (elementary::bestLoops().*loop)(static_cast<const double*>(args.in[0]), static_cast<const double*>(args.in[1]),
                                    args.rows, static_cast<double*>(args.out));
    return true;
}

constexpr auto same = [](auto x) { return x; };
constexpr auto sign = [](auto x) { return x > 0 ? decltype(x)(1) : x < 0 ? decltype(x)(-1) : x; };
constexpr auto isTrue = [](auto x) { return x != 0; };
template <typename Number>
constexpr bool isNotANumber(Number x) {
    if constexpr (std::is_floating_point_v<Number>) {
        return std::isnan(x);
    } else {
        return false;
    }
}
// NaN on either side gives NaN.
constexpr auto lesser = [](auto x, auto y) { return y < x || isNotANumber(y) ? y : x; };
constexpr auto greater = [](auto x, auto y) { return x < y || isNotANumber(y) ? y : x; };
constexpr auto remainderOf = [](std::int64_t x, std::int64_t y, std::int64_t& out) {
    // The smallest integer divided by -1 would trap.
    out = y == 0 || y == -1 ? 0 : x % y;
    return y == 0;
};
constexpr auto sizeOf = [](std::int64_t x, std::int64_t, std::int64_t& out) {
    return x < 0 ? __builtin_sub_overflow(std::int64_t{0}, x, &out) : (out = x, false);
};

constexpr Function real(std::string_view name, Kernel kernel) {
    return {name, Rule::Real, 1, false, kernel};
}
constexpr Function reals(std::string_view name, Kernel kernel) {
    return {name, Rule::Real, 2, false, kernel};
}
constexpr Function rounding(std::string_view name, Kernel kernel) {
    return {name, Rule::Arithmetic, 1, false, kernel, ofInteger<same>};
}

template <auto function>
constexpr Function comparison(std::string_view name) {
    constexpr auto ofTexts = [](TextPtr x, TextPtr y) { return function(*x, *y); };
    return {name,
            Rule::Comparison,
            2,
            false,
            binary<double, std::uint8_t, function>,
            binary<std::int64_t, std::uint8_t, function>,
            binary<TextPtr, std::uint8_t, ofTexts>};
}

template <auto function>
constexpr Function logic(std::string_view name) {
    return {name, Rule::Logic, 2, false, nullptr, nullptr, nullptr, binary<std::uint8_t, std::uint8_t, function>};
}

constexpr Function test(std::string_view name, Kernel kernel) {
    return {name, Rule::Test, 1, false, kernel};
}

template <auto function>
constexpr Function extreme(std::string_view name) {
    return {name, Rule::Arithmetic, 2, true, ofReals<function>, binary<std::int64_t, std::int64_t, function>};
}

constexpr Kernel realPower = elementaryOfTwo<&elementary::Loops::pow>;
constexpr Kernel realRemainder = ofReals<[](double x, double y) { return std::fmod(x, y); }>;

constexpr std::array functions{
    Function{"+", Rule::Arithmetic, 2, false, ofReals<[](double x, double y) { return x + y; }>,
             checked<[](auto x, auto y, auto& out) { return __builtin_add_overflow(x, y, &out); }>},
    Function{"-", Rule::Arithmetic, 2, false, ofReals<[](double x, double y) { return x - y; }>,
             checked<[](auto x, auto y, auto& out) { return __builtin_sub_overflow(x, y, &out); }>},
    Function{"*", Rule::Arithmetic, 2, false, ofReals<[](double x, double y) { return x * y; }>,
             checked<[](auto x, auto y, auto& out) { return __builtin_mul_overflow(x, y, &out); }>},
    Function{"%", Rule::Arithmetic, 2, false, realRemainder, checked<remainderOf>},
    Function{"-sign", Rule::Arithmetic, 1, false, ofReal<[](double x) { return -x; }>,
             checked<[](auto x, auto, auto& out) { return __builtin_sub_overflow(std::int64_t{0}, x, &out); }>},
    Function{"+sign", Rule::Arithmetic, 1, false, ofReal<same>, ofInteger<same>},
    Function{"*+", Rule::Real, 3, false, ternary<[](double x, double y, double z) { return x * y + z; }>},
    Function{"*-", Rule::Real, 3, false, ternary<[](double x, double y, double z) { return x * y - z; }>},
    real("-exp", ofReal<[](double x) { return elementary::exp(-x); }>),
    reals("/", ofReals<[](double x, double y) { return x / y; }>),
    reals("^", realPower),
    comparison<[](const auto& x, const auto& y) { return x == y; }>("=="),
    comparison<[](const auto& x, const auto& y) { return x != y; }>("!="),
    comparison<[](const auto& x, const auto& y) { return x < y; }>("<"),
    comparison<[](const auto& x, const auto& y) { return x <= y; }>("<="),
    comparison<[](const auto& x, const auto& y) { return y < x; }>(">"),
    comparison<[](const auto& x, const auto& y) { return y <= x; }>(">="),
    logic<[](auto x, auto y) { return x != 0 && y != 0; }>("&&"),
    logic<[](auto x, auto y) { return x != 0 || y != 0; }>("||"),
    Function{"!", Rule::Logic, 1, false, nullptr, nullptr, nullptr,
             unary<std::uint8_t, std::uint8_t, [](auto x) { return x == 0; }>},
    Function{"if", Rule::Choice, 3, false, choose<double>, choose<std::int64_t>, choose<TextPtr>, choose<std::uint8_t>},
    Function{"abs", Rule::Arithmetic, 1, false, ofReal<[](double x) { return std::fabs(x); }>, checked<sizeOf>},
    Function{"sign", Rule::Arithmetic, 1, false, ofReal<sign>, ofInteger<sign>},
    extreme<lesser>("min"),
    extreme<greater>("max"),
    rounding("floor", ofReal<[](double x) { return std::floor(x); }>),
    rounding("ceil", ofReal<[](double x) { return std::ceil(x); }>),
    rounding("round", ofReal<[](double x) { return std::round(x); }>),
    rounding("trunc", ofReal<[](double x) { return std::trunc(x); }>),
    real("sqrt", ofReal<[](double x) { return std::sqrt(x); }>),
    real("cbrt", elementaryOfOne<&elementary::Loops::cbrt>),
    real("exp", elementaryOfOne<&elementary::Loops::exp>),
    real("exp2", elementaryOfOne<&elementary::Loops::exp2>),
    real("expm1", elementaryOfOne<&elementary::Loops::expm1>),
    real("log", elementaryOfOne<&elementary::Loops::log>),
    real("log10", elementaryOfOne<&elementary::Loops::log10>),
    real("log2", elementaryOfOne<&elementary::Loops::log2>),
    real("log1p", elementaryOfOne<&elementary::Loops::log1p>),
    real("sin", elementaryOfOne<&elementary::Loops::sin>),
    real("cos", elementaryOfOne<&elementary::Loops::cos>),
    real("tan", elementaryOfOne<&elementary::Loops::tan>),
    real("asin", elementaryOfOne<&elementary::Loops::asin>),
    real("acos", elementaryOfOne<&elementary::Loops::acos>),
    real("atan", elementaryOfOne<&elementary::Loops::atan>),
    real("sinh", elementaryOfOne<&elementary::Loops::sinh>),
    real("cosh", elementaryOfOne<&elementary::Loops::cosh>),
    real("tanh", elementaryOfOne<&elementary::Loops::tanh>),
    real("asinh", elementaryOfOne<&elementary::Loops::asinh>),
    real("acosh", elementaryOfOne<&elementary::Loops::acosh>),
    real("atanh", elementaryOfOne<&elementary::Loops::atanh>),
    real("erf", elementaryOfOne<&elementary::Loops::erf>),
    real("erfc", elementaryOfOne<&elementary::Loops::erfc>),
    real("gamma", elementaryOfOne<&elementary::Loops::tgamma>),
    real("lgamma", elementaryOfOne<&elementary::Loops::lgamma>),
    reals("pow", realPower),
    real("square", ofReal<[](double x) { return x * x; }>),
    reals("fmod", realRemainder),
    reals("atan2", elementaryOfTwo<&elementary::Loops::atan2>),
    reals("remainder", ofReals<[](double x, double y) { return std::remainder(x, y); }>),
    reals("copysign", ofReals<[](double x, double y) { return std::copysign(x, y); }>),
    reals("hypot", elementaryOfTwo<&elementary::Loops::hypot>),
    test("isnan", unary<double, std::uint8_t, [](double x) { return std::isnan(x); }>),
    test("isinf", unary<double, std::uint8_t, [](double x) { return std::isinf(x); }>),
    test("isfinite", unary<double, std::uint8_t, [](double x) { return std::isfinite(x); }>)};

}  // namespace

const Function* findFunction(std::string_view name) {
    const auto* const found =
        std::find_if(functions.begin(), functions.end(), [&](const Function& known) { return known.name == name; });
    return found == functions.end() ? nullptr : found;
}

Kernel simdKernel(std::string_view name, ColumnType type) {
    const std::vector<SimdKernels> runnable = runnableKernels();
    if (!runnable.empty()) {
        for (const SimdKernel& known : runnable.front()) {
            if (known.type == type && name == known.name) {
                return known.kernel;
            }
        }
    }
    return nullptr;
}

std::vector<std::string> functionNames() {
    std::vector<std::string> names{"sum", "count", "any", "all"};
    for (const Function& function : functions) {
        if (function.name.front() >= 'a' && function.name.front() <= 'z') {
            names.emplace_back(function.name);
        }
    }
    return names;
}

Kernel conversion(ColumnType from, ColumnType to) {
    if (from == ColumnType::Integer && to == ColumnType::Real) {
        return unary<std::int64_t, double, same>;
    }
    if (from == ColumnType::Boolean && to == ColumnType::Real) {
        return unary<std::uint8_t, double, isTrue>;
    }
    if (from == ColumnType::Boolean && to == ColumnType::Integer) {
        return unary<std::uint8_t, std::int64_t, isTrue>;
    }
    if (from == ColumnType::Integer && to == ColumnType::Boolean) {
        return unary<std::int64_t, std::uint8_t, isTrue>;
    }
    return nullptr;
}

bool addressTexts(const KernelArgs& args) {
    const auto* texts = static_cast<const std::string*>(args.in[0]);
    auto* out = static_cast<TextPtr*>(args.out);
    for (std::size_t row = 0; row < args.rows; ++row) {
        out[row] = texts + row;
    }
    return true;
}

}  // namespace velmorak::expression
