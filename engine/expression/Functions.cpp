#include "elementary/Loops.h"
#include "expression/Derivatives.h"
#include "expression/FunctionKernels.h"
#include "expression/TextFunctions.h"
#include "expression/simd/SimdKernels.h"

#include <velmorak/ElementaryFunctions.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numbers>
#include <type_traits>

// Compiled without contraction of a product and a sum into one rounding: a row has the same bits in every loop.
namespace velmorak::expression {

namespace {

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

constexpr std::string_view roots = "roots, powers";
constexpr std::string_view exponentials = "exponentials";
constexpr std::string_view angles = "angles, in radians";
constexpr std::string_view hyperbolic = "hyperbolic";
constexpr std::string_view magnitude = "magnitude";
constexpr std::string_view special = "special";

constexpr Notation infix(std::string_view symbol, int level) {
    return {"", symbol, "", "", level, level, level + 1};
}

constexpr Notation prefix(std::string_view symbol) {
    return {symbol, "", "", "", 7, 8, 0};
}

constexpr Notation asPower{"pow(", ",", "", ")", 10, 0, 0};

constexpr Function arithmetic(std::string_view name, Kernel forReals, Kernel forIntegers, ReverseKernel reverse,
                              Linearity linearity, Notation notation) {
    const std::size_t arguments = notation.between.empty() ? 1 : 2;
    return {name,    Rule::Arithmetic, arguments, false,     forReals, forIntegers,
            nullptr, nullptr,          reverse,   linearity, notation};
}

constexpr Function real(std::string_view name, Kernel kernel, ReverseKernel reverse, Documentation documentation) {
    return {.name = name, .forReals = kernel, .reverse = reverse, .documentation = documentation};
}

constexpr Function reals(std::string_view name, Kernel kernel, ReverseKernel reverse, Documentation documentation) {
    return {.name = name, .arguments = 2, .forReals = kernel, .reverse = reverse, .documentation = documentation};
}

constexpr Function rounding(std::string_view name, Kernel kernel, std::string_view text) {
    return {.name = name,
            .rule = Rule::Arithmetic,
            .forReals = kernel,
            .forIntegers = ofInteger<same>,
            .reverse = reverseFlat,
            .documentation = {"rounding", text}};
}

/// A form that the compiler chooses for combinations of operators. Derivatives are those of the operators.
constexpr Function combined(std::string_view name, std::size_t arguments, Kernel kernel) {
    return {.name = name, .arguments = arguments, .forReals = kernel};
}

template <auto function>
constexpr Function comparison(std::string_view name) {
    constexpr auto ofTexts = [](TextPtr x, TextPtr y) { return function(*x, *y); };
    return {.name = name,
            .rule = Rule::Comparison,
            .arguments = 2,
            .forReals = binary<double, std::uint8_t, function>,
            .forIntegers = binary<std::int64_t, std::uint8_t, function>,
            .forTexts = binary<TextPtr, std::uint8_t, ofTexts>,
            .notation = {"", name, "", "", 4, 5, 5}};
}

template <auto function>
constexpr Function logic(std::string_view name, int level) {
    return {.name = name,
            .rule = Rule::Logic,
            .arguments = 2,
            .forBooleans = binary<std::uint8_t, std::uint8_t, function>,
            .notation = infix(name, level)};
}

constexpr Function test(std::string_view name, Kernel kernel, std::string_view text) {
    return {.name = name, .rule = Rule::Test, .forReals = kernel, .documentation = {"tests", text}};
}

template <auto function>
constexpr Function extreme(std::string_view name, std::string_view text) {
    return {.name = name,
            .rule = Rule::Arithmetic,
            .arguments = 2,
            .takesMore = true,
            .forReals = ofReals<function>,
            .forIntegers = binary<std::int64_t, std::int64_t, function>,
            .reverse = reverseExtreme,
            .documentation = {"magnitude", text}};
}

constexpr Kernel realPower = elementaryOfTwo<&elementary::Loops::pow>;
constexpr Kernel realRemainder = ofReals<[](double x, double y) { return std::fmod(x, y); }>;

constexpr std::array operators{
    arithmetic("+", ofReals<[](double x, double y) { return x + y; }>,
               checked<[](auto x, auto y, auto& out) { return __builtin_add_overflow(x, y, &out); }>, reverseSum,
               Linearity::Sum, infix("+", 5)),
    arithmetic("-", ofReals<[](double x, double y) { return x - y; }>,
               checked<[](auto x, auto y, auto& out) { return __builtin_sub_overflow(x, y, &out); }>, reverseDifference,
               Linearity::Sum, infix("-", 5)),
    arithmetic("*", ofReals<[](double x, double y) { return x * y; }>,
               checked<[](auto x, auto y, auto& out) { return __builtin_mul_overflow(x, y, &out); }>, reverseProduct,
               Linearity::Product, infix("*", 6)),
    arithmetic("%", realRemainder, checked<remainderOf>, reverseRemainder, Linearity::None, infix("%", 6)),
    arithmetic("-sign", ofReal<[](double x) { return -x; }>,
               checked<[](auto x, auto, auto& out) { return __builtin_sub_overflow(std::int64_t{0}, x, &out); }>,
               reverseNegative, Linearity::Sum, prefix("-")),
    arithmetic("+sign", ofReal<same>, ofInteger<same>, reverseSum, Linearity::Sum, prefix("+")),
    Function{.name = "/",
             .arguments = 2,
             .forReals = ofReals<[](double x, double y) { return x / y; }>,
             .reverse = reverseQuotient,
             .linearity = Linearity::Quotient,
             .notation = infix("/", 6)},
    Function{.name = "^", .arguments = 2, .forReals = realPower, .reverse = reversePower, .notation = asPower},
    comparison<[](const auto& x, const auto& y) { return x == y; }>("=="),
    comparison<[](const auto& x, const auto& y) { return x != y; }>("!="),
    comparison<[](const auto& x, const auto& y) { return x < y; }>("<"),
    comparison<[](const auto& x, const auto& y) { return x <= y; }>("<="),
    comparison<[](const auto& x, const auto& y) { return y < x; }>(">"),
    comparison<[](const auto& x, const auto& y) { return y <= x; }>(">="),
    logic<[](auto x, auto y) { return x != 0 && y != 0; }>("&&", 2),
    logic<[](auto x, auto y) { return x != 0 || y != 0; }>("||", 1),
    Function{.name = "!",
             .rule = Rule::Logic,
             .forBooleans = unary<std::uint8_t, std::uint8_t, [](auto x) { return x == 0; }>,
             .notation = prefix("!")},
    combined("*+", 3, ternary<[](double x, double y, double z) { return x * y + z; }>),
    combined("*-", 3, ternary<[](double x, double y, double z) { return x * y - z; }>),
    combined("-exp", 1, ofReal<[](double x) { return elementary::exp(-x); }>)};

constexpr std::array functions{
    real("sqrt", ofReal<[](double x) { return std::sqrt(x); }>, reverseRoot, {roots, "`sqrt`"}),
    real("cbrt", elementaryOfOne<&elementary::Loops::cbrt>,
         reverseOfOne<[](double, double y) { return 1.0 / (3.0 * y * y); }>, {roots, "`cbrt`"}),
    Function{.name = "square",
             .forReals = ofReal<[](double x) { return x * x; }>,
             .reverse = reverseSquare,
             .notation = {"pow(", "", "", ",2)", 10, 0, 0},
             .documentation = {roots, "`square`"}},
    reals("pow", realPower, reversePower, {roots, "`pow(x, y)`"}),
    reals("hypot", elementaryOfTwo<&elementary::Loops::hypot>, reverseHypotenuse, {roots, "`hypot(x, y)`"}),
    real("exp", elementaryOfOne<&elementary::Loops::exp>, reverseExponential, {exponentials, "`exp`"}),
    real("exp2", elementaryOfOne<&elementary::Loops::exp2>,
         reverseOfOne<[](double, double y) { return y * std::numbers::ln2; }>, {exponentials, "`exp2`"}),
    real("expm1", elementaryOfOne<&elementary::Loops::expm1>, reverseOfOne<[](double, double y) { return y + 1.0; }>,
         {exponentials, "`expm1`"}),
    real("log", elementaryOfOne<&elementary::Loops::log>, reverseOfOne<[](double x, double) { return 1.0 / x; }>,
         {exponentials, "`log` (natural)"}),
    real("log10", elementaryOfOne<&elementary::Loops::log10>,
         reverseOfOne<[](double x, double) { return std::numbers::log10e / x; }>, {exponentials, "`log10`"}),
    real("log2", elementaryOfOne<&elementary::Loops::log2>,
         reverseOfOne<[](double x, double) { return std::numbers::log2e / x; }>, {exponentials, "`log2`"}),
    real("log1p", elementaryOfOne<&elementary::Loops::log1p>,
         reverseOfOne<[](double x, double) { return 1.0 / (1.0 + x); }>, {exponentials, "`log1p`"}),
    real("sin", elementaryOfOne<&elementary::Loops::sin>,
         reverseOfOne<[](double x, double) { return elementary::cos(x); }>, {angles, "`sin`"}),
    real("cos", elementaryOfOne<&elementary::Loops::cos>,
         reverseOfOne<[](double x, double) { return -elementary::sin(x); }>, {angles, "`cos`"}),
    real("tan", elementaryOfOne<&elementary::Loops::tan>, reverseOfOne<[](double, double y) { return 1.0 + y * y; }>,
         {angles, "`tan`"}),
    real("asin", elementaryOfOne<&elementary::Loops::asin>,
         reverseOfOne<[](double x, double) { return 1.0 / std::sqrt((1.0 - x) * (1.0 + x)); }>, {angles, "`asin`"}),
    real("acos", elementaryOfOne<&elementary::Loops::acos>,
         reverseOfOne<[](double x, double) { return -1.0 / std::sqrt((1.0 - x) * (1.0 + x)); }>, {angles, "`acos`"}),
    real("atan", elementaryOfOne<&elementary::Loops::atan>,
         reverseOfOne<[](double x, double) { return 1.0 / (1.0 + x * x); }>, {angles, "`atan`"}),
    reals("atan2", elementaryOfTwo<&elementary::Loops::atan2>, reverseArctangent2, {angles, "`atan2(y, x)`"}),
    real("sinh", elementaryOfOne<&elementary::Loops::sinh>,
         reverseOfOne<[](double x, double) { return elementary::cosh(x); }>, {hyperbolic, "`sinh`"}),
    real("cosh", elementaryOfOne<&elementary::Loops::cosh>,
         reverseOfOne<[](double x, double) { return elementary::sinh(x); }>, {hyperbolic, "`cosh`"}),
    real("tanh", elementaryOfOne<&elementary::Loops::tanh>,
         reverseOfOne<[](double, double y) { return (1.0 - y) * (1.0 + y); }>, {hyperbolic, "`tanh`"}),
    real("asinh", elementaryOfOne<&elementary::Loops::asinh>,
         reverseOfOne<[](double x, double) { return 1.0 / elementary::hypot(1.0, x); }>, {hyperbolic, "`asinh`"}),
    real("acosh", elementaryOfOne<&elementary::Loops::acosh>,
         reverseOfOne<[](double x, double) { return 1.0 / std::sqrt((x - 1.0) * (x + 1.0)); }>,
         {hyperbolic, "`acosh`"}),
    real("atanh", elementaryOfOne<&elementary::Loops::atanh>,
         reverseOfOne<[](double x, double) { return 1.0 / ((1.0 - x) * (1.0 + x)); }>, {hyperbolic, "`atanh`"}),
    rounding("floor", ofReal<[](double x) { return std::floor(x); }>, "`floor`"),
    rounding("ceil", ofReal<[](double x) { return std::ceil(x); }>, "`ceil`"),
    rounding("round", ofReal<[](double x) { return std::round(x); }>, "`round` (halves away from 0)"),
    rounding("trunc", ofReal<[](double x) { return std::trunc(x); }>, "`trunc`"),
    reals("fmod", realRemainder, reverseRemainder, {"rounding", "`fmod(x, y)`"}),
    reals("remainder", ofReals<[](double x, double y) { return nearestRemainder(x, y); }>, reverseNearestRemainder,
          {"rounding", "`remainder(x, y)` (from -y/2 to y/2)"}),
    Function{.name = "abs",
             .rule = Rule::Arithmetic,
             .forReals = ofReal<[](double x) { return std::fabs(x); }>,
             .forIntegers = checked<sizeOf>,
             .reverse = reverseAbsolute,
             .documentation = {magnitude, "`abs`"}},
    Function{.name = "sign",
             .rule = Rule::Arithmetic,
             .forReals = ofReal<sign>,
             .forIntegers = ofInteger<sign>,
             .reverse = reverseFlat,
             .documentation = {magnitude, "`sign`"}},
    reals("copysign", ofReals<[](double x, double y) { return std::copysign(x, y); }>, reverseCopySign,
          {magnitude, "`copysign(x, y)`"}),
    extreme<lesser>("min", "`min(a, b, ...)`"),
    extreme<greater>("max", "`max(a, b, ...)`"),
    real("erf", elementaryOfOne<&elementary::Loops::erf>, reverseOfOne<[](double x, double) { return gaussian(x); }>,
         {special, "`erf`"}),
    real("erfc", elementaryOfOne<&elementary::Loops::erfc>, reverseOfOne<[](double x, double) { return -gaussian(x); }>,
         {special, "`erfc`"}),
    real("gamma", elementaryOfOne<&elementary::Loops::tgamma>,
         reverseOfOne<[](double x, double y) { return y * elementary::digamma(x); }>, {special, "`gamma`"}),
    real("lgamma", elementaryOfOne<&elementary::Loops::lgamma>,
         reverseOfOne<[](double x, double) { return elementary::digamma(x); }>, {special, "`lgamma`"}),
    test("isnan", unary<double, std::uint8_t, [](double x) { return std::isnan(x); }>, "`isnan`"),
    test("isinf", unary<double, std::uint8_t, [](double x) { return std::isinf(x); }>, "`isinf`"),
    test("isfinite", unary<double, std::uint8_t, [](double x) { return std::isfinite(x); }>, "`isfinite`"),
    Function{.name = "if",
             .rule = Rule::Choice,
             .arguments = 3,
             .forReals = choose<double>,
             .forIntegers = choose<std::int64_t>,
             .forTexts = choose<TextPtr>,
             .forBooleans = choose<std::uint8_t>,
             .reverse = reverseChoice,
             .linearity = Linearity::Choice,
             .notation = {"(", " ? ", " : ", ")", 10, 1, 0},
             .documentation = {"choice", "`if(c, a, b)`"}}};

constexpr auto table = [] {
    std::array<Function, operators.size() + functions.size() + textFunctions.size()> all{};
    auto* const end =
        std::copy(functions.begin(), functions.end(), std::copy(operators.begin(), operators.end(), all.begin()));
    std::copy(textFunctions.begin(), textFunctions.end(), end);
    return all;
}();

constexpr std::array constants{Constant{"pi", std::numbers::pi, "3.14159..."},
                               Constant{"e", std::numbers::e, "2.71828..."},
                               Constant{"inf", std::numeric_limits<double>::infinity(), "Infinity"},
                               Constant{"nan", std::numeric_limits<double>::quiet_NaN(), "not a number"}};

}  // namespace

std::span<const Function> allFunctions() {
    return table;
}

const Function* findFunction(std::string_view name) {
    const auto* const found =
        std::find_if(table.begin(), table.end(), [&](const Function& known) { return known.name == name; });
    return found == table.end() ? nullptr : found;
}

std::span<const Constant> allConstants() {
    return constants;
}

const double* findConstant(std::string_view name) {
    const auto* const found =
        std::find_if(constants.begin(), constants.end(), [&](const Constant& known) { return known.name == name; });
    return found == constants.end() ? nullptr : &found->value;
}

const SimdKernel* findSimdKernel(std::string_view name, ColumnType type) {
    static const std::vector<SimdKernels> runnable = runnableKernels();
    if (runnable.empty()) {
        return nullptr;
    }
    const SimdKernels& best = runnable.front();
    const auto* const found = std::find_if(
        best.begin(), best.end(), [&](const SimdKernel& known) { return known.type == type && name == known.name; });
    return found == best.end() ? nullptr : found;
}

std::vector<std::string> functionNames() {
    std::vector<std::string> names;
    for (const Function& function : std::span(table).subspan(operators.size())) {
        names.emplace_back(function.name);
    }
    for (const std::span<const NamedForm> forms : {listForms(), kinematicForms(), missingForms()}) {
        for (const NamedForm& form : forms) {
            names.emplace_back(form.name);
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
