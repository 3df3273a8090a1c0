#pragma once

#include <velmorak/Value.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <string>
#include <string_view>

/// Dates and times in tables: columns of type real in seconds since the beginning of 1970 (UTC), without leap seconds.
namespace velmorak {

/// The unit that marks such a column (ColumnInfo::unit). Writers show its values as dates.
inline constexpr std::string_view dateUnit = "s since 1970-01-01 UTC";

/// @return the date and time in the form 2024-02-29T12:30:15.25Z, rounded to microseconds; the number, as by textOf, if
///         it is not finite or the year has not four digits.
inline std::string dateText(double seconds) {
    constexpr double firstSecond = -62167219200.0;  // Of the year 0.
    constexpr double endOfYears = 253402300800.0;   // Of the year 9999.
    const double rounded = std::nearbyint(std::fmod(seconds, 1.0) * 1e6);
    if (!(seconds >= firstSecond && seconds < endOfYears)) {
        return textOf(seconds);
    }
    const std::int64_t micros =
        static_cast<std::int64_t>(std::trunc(seconds)) * 1'000'000 + static_cast<std::int64_t>(rounded);
    const std::chrono::sys_time<std::chrono::microseconds> time{std::chrono::microseconds(micros)};
    const auto day = std::chrono::floor<std::chrono::days>(time);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss<std::chrono::microseconds> clock(time - day);
    const auto digits = [](std::int64_t number, std::size_t count) {
        const std::string text = std::to_string(number);
        return std::string(count - std::min(count, text.size()), '0') + text;
    };
    std::string text = digits(static_cast<int>(date.year()), 4) + "-" + digits(static_cast<unsigned>(date.month()), 2) +
                       "-" + digits(static_cast<unsigned>(date.day()), 2) + "T" + digits(clock.hours().count(), 2) +
                       ":" + digits(clock.minutes().count(), 2) + ":" + digits(clock.seconds().count(), 2);
    if (clock.subseconds().count() != 0) {
        std::string fraction = digits(clock.subseconds().count(), 6);
        fraction.erase(fraction.find_last_not_of('0') + 1);
        text += "." + fraction;
    }
    return text + "Z";
}

/// Reads a date, or a date and time, of ISO 8601 in its extended form: 2024-02-29, 2024-02-29T12:30, with seconds and
/// their fraction, with a blank instead of the T, and with a time zone (Z, +01, +01:00, +0100); without one, it is UTC.
/// @param seconds since the beginning of 1970, without leap seconds.
/// @return false, with seconds unchanged, if the text is anything else, or there is no such day or time.
bool readDate(std::string_view text, double& seconds);

}  // namespace velmorak
