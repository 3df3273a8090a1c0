#pragma once

#include <velmorak/Failure.h>
#include <velmorak/Lines.h>
#include <velmorak/Value.h>

#include <algorithm>
#include <charconv>
#include <string>
#include <string_view>

namespace velmorak::hepmc {

/// The words of a line, one after the other.
class Words {
public:
    /// @param lines at the line, for messages.
    Words(std::string_view line, const Lines& lines) : rest(line), lines(lines) {}

    bool isEmpty() {
        rest.remove_prefix(std::min(rest.find_first_not_of(" \t"), rest.size()));
        return rest.empty();
    }

    /// @throws Failure if there is none.
    std::string_view word() {
        if (isEmpty()) {
            throw Failure("file", lines.where() + ": the line is too short");
        }
        const std::size_t end = std::min(rest.find_first_of(" \t"), rest.size());
        const std::string_view found = rest.substr(0, end);
        rest.remove_prefix(end);
        return found;
    }

    double real() {
        const std::string_view text = word();
        double number = 0.0;
        const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
        if ((result.ec != std::errc() || result.ptr != text.data() + text.size()) && !readNumber(text, number)) {
            fail(text);
        }
        return number;
    }

    std::int64_t integer() {
        std::string_view text = word();
        const std::string_view digits = text.substr(text.starts_with('+') ? 1 : 0);
        std::int64_t number = 0;
        const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), number);
        if (result.ec != std::errc() || result.ptr != digits.data() + digits.size()) {
            fail(text);
        }
        return number;
    }

    /// A number of words that follow in the line, so that it cannot be larger than that.
    std::size_t count() {
        const std::int64_t number = integer();
        if (number < 0 || static_cast<std::uint64_t>(number) > rest.size()) {
            throw Failure("file", lines.where() + ": " + std::to_string(number) + " numbers cannot follow");
        }
        return static_cast<std::size_t>(number);
    }

    void skip(std::size_t words) {
        for (std::size_t i = 0; i < words; ++i) {
            word();
        }
    }

private:
    [[noreturn]] void fail(std::string_view text) const {
        throw Failure("file", lines.where() + ": \"" + std::string(text.substr(0, 40)) + "\" is not a number");
    }

    std::string_view rest;
    const Lines& lines;
};

}  // namespace velmorak::hepmc
