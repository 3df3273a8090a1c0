#include "numpy/Elements.h"

#include <velmorak/Failure.h>
#include <velmorak/Utf8.h>

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstring>
#include <limits>
#include <utility>

namespace velmorak::numpy {
namespace {

constexpr std::uint64_t maxElementBytes = std::uint64_t{1} << 30U;

/// Takes digits from the beginning of a text.
std::uint64_t takeNumber(std::string_view& text, std::uint64_t otherwise) {
    std::uint64_t number = otherwise;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error == std::errc::result_out_of_range || number > maxElementBytes) {
        throw Failure("its elements are too large");
    }
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return number;
}

/// The unit of moments, such as "[ns]" or "[25s]".
void readUnit(Element& element, std::string_view text) {
    if (!text.starts_with("[") || !text.ends_with("]")) {
        element.kind = Element::Kind::Unreadable;
        element.problem = "its unit of time is not known";
        return;
    }
    text = text.substr(1, text.size() - 2);
    element.count = static_cast<std::int64_t>(takeNumber(text, 1));
    constexpr double day = 86400.0;
    constexpr std::array<std::pair<std::string_view, double>, 13> units = {{{"Y", 0.0},
                                                                            {"M", 0.0},
                                                                            {"W", 7 * day},
                                                                            {"D", day},
                                                                            {"h", 3600.0},
                                                                            {"m", 60.0},
                                                                            {"s", 1.0},
                                                                            {"ms", 1e-3},
                                                                            {"us", 1e-6},
                                                                            {"ns", 1e-9},
                                                                            {"ps", 1e-12},
                                                                            {"fs", 1e-15},
                                                                            {"as", 1e-18}}};
    const auto* const unit = std::ranges::find(units, text, &std::pair<std::string_view, double>::first);
    const bool isCalendar = unit != units.end() && unit->second == 0.0;
    if (unit == units.end() || (isCalendar && !element.isDate)) {
        element.kind = Element::Kind::Unreadable;
        element.problem = "its unit of time, " + std::string(text) + ", has no length";
        return;
    }
    element.seconds = unit->second;
    element.count *= text == "Y" ? 12 : 1;
}

double secondsAtMonth(std::int64_t months) {
    constexpr std::int64_t limit = std::int64_t{12} * 30000;
    if (months < -limit || months > limit) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    const std::int64_t year = 1970 + (months >= 0 ? months / 12 : -((11 - months) / 12));
    const auto month = static_cast<unsigned>(months - (year - 1970) * 12) + 1U;
    const std::chrono::sys_days day =
        std::chrono::year(static_cast<int>(year)) / std::chrono::month(month) / std::chrono::day(1);
    return 86400.0 * static_cast<double>(day.time_since_epoch().count());
}

/// Divides where the unit is a power of ten below a second, so that the result is rounded once.
double secondsOf(const Element& element, std::int64_t steps) {
    if (steps == std::numeric_limits<std::int64_t>::min()) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    if (element.seconds == 0.0) {
        constexpr std::int64_t limit = std::int64_t{1} << 32U;
        return std::abs(steps) > limit ? std::numeric_limits<double>::quiet_NaN()
                                       : secondsAtMonth(steps * element.count);
    }
    const double units = static_cast<double>(steps) * static_cast<double>(element.count);
    return element.seconds < 1.0 ? units / std::round(1.0 / element.seconds) : units * element.seconds;
}

void appendMoments(Column& column, const Element& element, const char* first, std::size_t stride, std::size_t count) {
    Column steps{.values = Column::Integers(), .offsets = {}};
    appendNumbers(steps, element.number, first, stride, count);
    auto& values = std::get<Column::Reals>(column.values);
    for (const std::int64_t each : steps.integers()) {
        values.push_back(secondsOf(element, each));
    }
}

std::string textIn(std::string_view bytes) {
    const std::size_t last = bytes.find_last_not_of('\0');
    return toUtf8(last == std::string_view::npos ? std::string_view() : bytes.substr(0, last + 1));
}

/// @return the code point, or the replacement character for what is none.
char32_t validCode(std::int64_t code) {
    const bool isValid = code >= 0 && code <= 0x10FFFF && (code < 0xD800 || code >= 0xE000);
    return isValid ? static_cast<char32_t>(code) : U'\uFFFD';
}

std::string textInUnicode(const char* from, const Element& element) {
    const std::size_t characters = element.bytes / 4;
    Column codes{.values = Column::Integers(), .offsets = {}};
    appendNumbers(codes, {StoredNumber::Kind::Unsigned, 4, element.number.isSwapped}, from, 4, characters);
    std::string text;
    std::size_t used = characters;
    while (used > 0 && codes.integers()[used - 1] == 0) {
        --used;
    }
    for (std::size_t i = 0; i < used; ++i) {
        appendUtf8(validCode(codes.integers()[i]), text);
    }
    return text;
}

Element unreadable(std::uint64_t bytes, std::string problem) {
    return {.kind = Element::Kind::Unreadable, .bytes = bytes, .problem = std::move(problem)};
}

Element numberOf(StoredNumber::Kind kind, std::uint64_t bytes, bool isSwapped) {
    Element element{.number = {kind, static_cast<std::size_t>(bytes), isSwapped}, .bytes = bytes};
    return isKnown(element.number) ? element
                                   : unreadable(bytes, "numbers of " + std::to_string(bytes) + " bytes are not read");
}

Element momentOf(std::uint64_t bytes, bool isSwapped, bool isDate, std::string_view unit) {
    Element element = numberOf(StoredNumber::Kind::Signed, bytes, isSwapped);
    if (element.kind == Element::Kind::Number) {
        element.kind = Element::Kind::Moment;
        element.isDate = isDate;
        readUnit(element, unit);
    }
    return element;
}

}  // namespace

ColumnType Element::type() const {
    switch (kind) {
        case Kind::Number:
            return columnTypeOf(number);
        case Kind::Bytes:
        case Kind::Unicode:
            return ColumnType::Text;
        default:
            return ColumnType::Real;
    }
}

Element elementOf(std::string_view code) {
    if (code.size() < 2 || std::string_view("<>|=").find(code.front()) == std::string_view::npos) {
        throw Failure("the type \"" + std::string(code) + "\" of its elements is not known");
    }
    const char order = code.front();
    const char letter = code[1];
    std::string_view rest = code.substr(2);
    const std::uint64_t size = takeNumber(rest, 0);
    const bool isSwapped = std::endian::native == std::endian::little ? order == '>' : order == '<';
    switch (letter) {
        case 'b':
        case '?':
            return numberOf(StoredNumber::Kind::Boolean, std::max<std::uint64_t>(size, 1), false);
        case 'i':
            return numberOf(StoredNumber::Kind::Signed, size, isSwapped);
        case 'u':
            return numberOf(StoredNumber::Kind::Unsigned, size, isSwapped);
        case 'f':
            return numberOf(StoredNumber::Kind::Real, size, isSwapped);
        case 'c': {
            Element element = numberOf(StoredNumber::Kind::Real, size / 2, isSwapped);
            element.bytes = size;
            element.isComplex = true;
            return element;
        }
        case 'S':
        case 'a':
            return {.kind = Element::Kind::Bytes, .bytes = size};
        case 'U':
            return {.kind = Element::Kind::Unicode,
                    .number = {StoredNumber::Kind::Unsigned, 4, isSwapped},
                    .bytes = 4 * size};
        case 'M':
        case 'm':
            return momentOf(size, isSwapped, letter == 'M', rest);
        case 'O':
            // NumPy then writes all of the array in the form of the module pickle.
            throw Failure("it holds Python objects, which are not read");
        default:
            return unreadable(size, "elements of type " + std::string(code) + " are not read");
    }
}

void appendElements(Column& column, const Element& element, const char* first, std::size_t stride, std::size_t count) {
    switch (element.kind) {
        case Element::Kind::Number:
            return appendNumbers(column, element.number, first, stride, count);
        case Element::Kind::Moment:
            return appendMoments(column, element, first, stride, count);
        case Element::Kind::Unreadable:
            throw Failure(element.problem);
        default:
            break;
    }
    auto& texts = std::get<Column::Texts>(column.values);
    for (std::size_t i = 0; i < count; ++i) {
        const char* from = first + i * stride;
        texts.push_back(element.kind == Element::Kind::Unicode
                            ? textInUnicode(from, element)
                            : textIn({from, static_cast<std::size_t>(element.bytes)}));
    }
}

}  // namespace velmorak::numpy
