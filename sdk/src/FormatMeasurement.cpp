#include <velmorak/FormatMeasurement.h>
#include <velmorak/Value.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>

namespace velmorak {

namespace {

/// The power of ten of 0, which has no digits.
constexpr int noPower = std::numeric_limits<int>::min();
/// Numbers beyond these are written with an exponent.
constexpr int minFixedPower = -4;
constexpr int maxFilledPower = 5;
/// A double carries no more significant digits.
constexpr int maxDigits = 17;

/// The size of a number: d.ddd times a power of ten, without the point.
struct Decimal {
    std::string digits;  ///< Without leading zeros; empty for 0.
    int power = noPower;
};

template <typename... Format>
std::string written(double number, Format... format) {
    std::array<char, 64> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), number, format...).ptr;
    return {text.data(), end};
}

/// The shortest digits that read back as the same number.
/// @param number finite.
Decimal decimalOf(double number) {
    if (number == 0.0) {
        return {};
    }
    const std::string text = written(std::abs(number), std::chars_format::scientific);
    const std::size_t mark = text.find('e');
    Decimal decimal{.digits = text.substr(0, mark), .power = 0};
    std::erase(decimal.digits, '.');
    // from_chars accepts no plus sign.
    const std::size_t begin = text[mark + 1] == '+' ? mark + 2 : mark + 1;
    std::from_chars(text.data() + begin, text.data() + text.size(), decimal.power);
    return decimal;
}

/// Rounds to the digit of the given power of ten, halves upwards.
Decimal rounded(Decimal decimal, int lastPower) {
    if (decimal.power < lastPower - 1) {
        return {};
    }
    const int keptDigits = decimal.power - lastPower + 1;
    const auto kept = static_cast<std::size_t>(keptDigits);
    if (decimal.digits.size() <= kept) {
        decimal.digits.resize(kept, '0');
        return decimal;
    }
    const bool isUp = decimal.digits[kept] >= '5';
    decimal.digits.resize(kept);
    std::size_t digit = kept;
    while (isUp && digit > 0 && decimal.digits[digit - 1] == '9') {
        decimal.digits[--digit] = '0';
    }
    if (isUp && digit > 0) {
        ++decimal.digits[digit - 1];
    } else if (isUp) {
        decimal.digits.insert(0, 1, '1');
        ++decimal.power;
    }
    return decimal.digits.empty() ? Decimal() : decimal;
}

/// An error by the rule of the Particle Data Group.
struct RoundedError {
    Decimal decimal;
    int lastPower = noPower;  ///< Of the last digit that is kept; noPower for an error of 0.
};

RoundedError roundedError(double error) {
    const Decimal decimal = decimalOf(error);
    if (decimal.digits.empty()) {
        return {};
    }
    const std::string leading = (decimal.digits + "00").substr(0, 3);
    if (leading >= "950") {
        return {{.digits = "10", .power = decimal.power + 1}, decimal.power};
    }
    const int lastPower = leading < "355" ? decimal.power - 1 : decimal.power;
    return {rounded(decimal, lastPower), lastPower};
}

/// How the numbers of one measurement are written.
struct Layout {
    int lastPower = 0;  ///< Of the last digit.
    int exponent = 0;   ///< The power of ten that is factored out.
};

Layout layoutFor(int leadingPower, int lastPower) {
    const bool needsZeros = lastPower > 0 && leadingPower > maxFilledPower;
    return {lastPower, needsZeros || leadingPower < minFixedPower ? leadingPower : 0};
}

/// Places the decimal point among the digits of a rounded number.
std::string placed(const Decimal& decimal, const Layout& layout) {
    std::string text = decimal.digits.empty() ? "0" : decimal.digits;
    const int shift = layout.lastPower - layout.exponent;
    if (shift > 0 && !decimal.digits.empty()) {
        text.append(static_cast<std::size_t>(shift), '0');
    }
    if (shift >= 0) {
        return text;
    }
    const auto decimals = static_cast<std::size_t>(-shift);
    if (text.size() <= decimals) {
        text.insert(0, decimals + 1 - text.size(), '0');
    }
    return text.insert(text.size() - decimals, 1, '.');
}

std::string exponentText(int exponent) {
    const std::string digits = std::to_string(std::abs(exponent));
    return (exponent < 0 ? "e-" : "e+") + std::string(digits.size() < 2 ? 1 : 0, '0') + digits;
}

std::string withExponent(const std::string& text, const Layout& layout) {
    return layout.exponent == 0 ? text : "(" + text + ")" + exponentText(layout.exponent);
}

/// One error, or two of which the second points downwards.
struct Errors {
    double plus = 0.0;
    double minus = 0.0;
    bool isSymmetric = true;
};

std::string joined(const Errors& errors, const std::string& value, const std::string& plus, const std::string& minus) {
    return errors.isSymmetric ? value + " ± " + plus : value + " +" + plus + " -" + minus;
}

/// @param lastPower of the smaller error.
std::string roundedMeasurement(double value, const Errors& errors, int lastPower) {
    const Decimal size = rounded(decimalOf(value), lastPower);
    // 0.96 is written as 1.0: the digits of an error that is rounded up are known already.
    const auto errorAt = [lastPower](double error) {
        const RoundedError own = roundedError(error);
        return own.lastPower == lastPower ? own.decimal : rounded(decimalOf(error), lastPower);
    };
    const Decimal plus = errorAt(errors.plus);
    const Decimal minus = errorAt(errors.minus);
    const Layout layout = layoutFor(std::max({size.power, plus.power, minus.power}), lastPower);
    const std::string sign = value < 0.0 && !size.digits.empty() ? "-" : "";
    return withExponent(joined(errors, sign + placed(size, layout), placed(plus, layout), placed(minus, layout)),
                        layout);
}

/// An error far below the last digit of the value.
std::string errorAlone(double error) {
    const RoundedError own = roundedError(error);
    const Layout layout = layoutFor(own.decimal.power, own.lastPower);
    return own.lastPower == noPower
               ? "0"
               : placed(own.decimal, layout) + (layout.exponent == 0 ? "" : exponentText(layout.exponent));
}

std::string measurementText(double value, const Errors& errors) {
    if (!std::isfinite(value) || (errors.plus == 0.0 && errors.minus == 0.0)) {
        return formatNumber(value);
    }
    if (!std::isfinite(errors.plus) || !std::isfinite(errors.minus)) {
        return joined(errors, formatNumber(value), formatNumber(errors.plus), formatNumber(errors.minus));
    }
    const double smaller = std::min(errors.plus, errors.minus);
    const int lastPower = roundedError(smaller > 0.0 ? smaller : std::max(errors.plus, errors.minus)).lastPower;
    const int leadingPower =
        std::max({decimalOf(value).power, decimalOf(errors.plus).power, decimalOf(errors.minus).power});
    if (leadingPower - lastPower > maxDigits) {
        return joined(errors, formatNumber(value), errorAlone(errors.plus), errorAlone(errors.minus));
    }
    return roundedMeasurement(value, errors, lastPower);
}

}  // namespace

std::string formatNumber(double value) {
    constexpr double minWithExponent = 1e15;
    if (std::abs(value) < minWithExponent && value == std::trunc(value)) {
        return written(value == 0.0 ? 0.0 : value, std::chars_format::fixed, 0);
    }
    return textOf(value);
}

std::string formatMeasurement(double value, double error) {
    return measurementText(value, {std::abs(error), std::abs(error), true});
}

std::string formatMeasurement(double value, double errorPlus, double errorMinus) {
    const double plus = std::abs(errorPlus);
    const double minus = std::abs(errorMinus);
    return measurementText(value, {plus, minus, plus == minus || (std::isnan(plus) && std::isnan(minus))});
}

}  // namespace velmorak
