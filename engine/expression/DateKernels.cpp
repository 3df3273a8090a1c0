#include "expression/DateKernels.h"

#include <chrono>
#include <cmath>
#include <cstdint>
#include <limits>

namespace velmorak::expression {

namespace {

constexpr double secondsOfDay = 86400.0;
constexpr double latest = 9e11;  ///< In the year 30489, which a calendar of std::chrono still has.

bool isInCalendar(double seconds) {
    return std::fabs(seconds) <= latest;
}

std::chrono::sys_days dayAt(double seconds) {
    const auto days = static_cast<std::int64_t>(std::floor(seconds / secondsOfDay));
    return std::chrono::sys_days(std::chrono::days(days));
}

template <typename Part>
double partOf(double seconds, const Part& part) {
    if (!isInCalendar(seconds)) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    return static_cast<double>(part(dayAt(seconds)));
}

double secondsInDay(double seconds) {
    if (!isInCalendar(seconds)) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    return seconds - secondsOfDay * std::floor(seconds / secondsOfDay);
}

using Date = std::chrono::year_month_day;

}  // namespace

double yearOf(double seconds) {
    return partOf(seconds, [](std::chrono::sys_days day) { return static_cast<int>(Date(day).year()); });
}

double monthOf(double seconds) {
    return partOf(seconds, [](std::chrono::sys_days day) { return static_cast<unsigned>(Date(day).month()); });
}

double dayOf(double seconds) {
    return partOf(seconds, [](std::chrono::sys_days day) { return static_cast<unsigned>(Date(day).day()); });
}

double hourOf(double seconds) {
    return std::floor(secondsInDay(seconds) / 3600.0);
}

double minuteOf(double seconds) {
    return std::floor(std::fmod(secondsInDay(seconds), 3600.0) / 60.0);
}

double weekdayOf(double seconds) {
    return partOf(seconds, [](std::chrono::sys_days day) { return std::chrono::weekday(day).iso_encoding(); });
}

double dayOfYear(double seconds) {
    return partOf(seconds, [](std::chrono::sys_days day) {
        const std::chrono::sys_days newYear = Date(day).year() / std::chrono::January / 1;
        return (day - newYear).count() + 1;
    });
}

}  // namespace velmorak::expression
