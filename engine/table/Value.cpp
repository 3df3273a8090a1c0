#include <velmorak/Text.h>
#include <velmorak/Value.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <stdexcept>

namespace velmorak {

namespace {

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

/// @return the exponent after 'e', limited so that it cannot overflow.
std::int64_t writtenExponent(std::string_view digits) {
    const bool isNegative = !digits.empty() && digits.front() == '-';
    if (!digits.empty() && !isDigit(digits.front())) {
        digits.remove_prefix(1);
    }
    std::int64_t exponent = 0;
    for (const char c : digits) {
        exponent = exponent < 1'000'000'000 ? exponent * 10 + (c - '0') : exponent;
    }
    return isNegative ? -exponent : exponent;
}

/// @return whether a decimal number beyond the range of a double overflows rather than underflows.
bool isTooLarge(std::string_view unsignedNumber) {
    const auto mark = unsignedNumber.find_first_of("eE");
    const std::string_view digits = unsignedNumber.substr(0, mark);
    const auto point = std::min(digits.find('.'), digits.size());
    const auto first = digits.find_first_not_of("0.");
    std::int64_t magnitude = static_cast<std::int64_t>(point) - static_cast<std::int64_t>(first);
    if (mark != std::string_view::npos) {
        magnitude += writtenExponent(unsignedNumber.substr(mark + 1));
    }
    return magnitude > 0;
}

}  // namespace

std::string_view nameOf(ValueType type) {
    switch (type) {
        case ValueType::Number:
            return "number";
        case ValueType::Text:
            return "text";
        case ValueType::Choice:
            return "choice";
        case ValueType::Table:
            return "table";
        case ValueType::Histogram:
            return "histogram";
        case ValueType::Profile:
            return "profile";
        case ValueType::Points:
            return "points";
        case ValueType::Function:
            return "function";
        case ValueType::Histograms:
            return "histogram list";
        case ValueType::Any:
            return "any";
    }
    throw std::logic_error("unknown value type");
}

std::optional<NumberWithError> numberIn(const Value& value) {
    if (const auto* number = std::get_if<double>(&value)) {
        return NumberWithError(*number);
    }
    const auto* number = std::get_if<NumberWithError>(&value);
    return number ? std::optional(*number) : std::nullopt;
}

std::string textOf(double number) {
    if (std::isnan(number)) {
        return "NaN";
    }
    if (std::isinf(number)) {
        return number > 0 ? "Infinity" : "-Infinity";
    }
    std::array<char, 32> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), number).ptr;
    return {text.data(), end};
}

bool readNumber(std::string_view text, double& number) {
    text = trimmed(text);
    const bool isNegative = !text.empty() && text.front() == '-';
    if (isNegative || (!text.empty() && text.front() == '+')) {
        text.remove_prefix(1);
    }
    // from_chars also accepts a second sign and "nan(...)".
    if (text.empty() || text.front() == '-' || text.back() == ')') {
        return false;
    }
    double value = 0.0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (end != text.data() + text.size() || error == std::errc::invalid_argument) {
        return false;
    }
    if (error == std::errc::result_out_of_range) {
        value = isTooLarge(text) ? std::numeric_limits<double>::infinity() : 0.0;
    }
    number = isNegative ? -value : value;
    return true;
}

}  // namespace velmorak
