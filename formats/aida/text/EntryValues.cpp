#include "aida/text/EntryValues.h"

#include <velmorak/Text.h>
#include <velmorak/Value.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <system_error>

namespace velmorak::io {

namespace {

bool isWord(std::string_view text, std::string_view word) {
    return text.size() == word.size() &&
           std::equal(text.begin(), text.end(), word.begin(), [](char a, char b) { return (a | 0x20) == b; });
}

}  // namespace

bool readInteger(std::string_view text, std::int64_t& value) {
    text = trimmed(text);
    const std::string_view digits = !text.empty() && text.front() == '+' ? text.substr(1) : text;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (error == std::errc() && end == digits.data() + digits.size()) {
        return true;
    }
    double real = 0.0;
    constexpr double limit = 9223372036854775808.0;
    if (error == std::errc::result_out_of_range || !readNumber(text, real) || real != std::trunc(real) ||
        real < -limit || real >= limit) {
        return false;
    }
    value = static_cast<std::int64_t>(real);
    return true;
}

bool readBoolean(std::string_view text, std::uint8_t& value) {
    text = trimmed(text);
    const bool isTrue = text == "1" || isWord(text, "true");
    if (!isTrue && text != "0" && !isWord(text, "false")) {
        return false;
    }
    value = isTrue ? 1 : 0;
    return true;
}

}  // namespace velmorak::io
