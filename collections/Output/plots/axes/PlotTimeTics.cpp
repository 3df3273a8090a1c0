#include "Output/plots/axes/PlotTics.h"

#include <velmorak/Dates.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>

namespace velmorak {

namespace {

constexpr double minute = 60.0;
constexpr double hour = 3600.0;
constexpr double day = 86400.0;
constexpr double month = 30.44 * day;

/// Years that a date with four digits has.
constexpr double firstTime = -62135596800.0;
constexpr double lastTime = 253402300799.0;

enum class TimeUnit { Seconds, Days, Months };

/// A distance of tics; months and years have no fixed length.
struct TimeStep {
    TimeUnit unit = TimeUnit::Seconds;
    int count = 1;

    double seconds() const { return count * (unit == TimeUnit::Seconds ? 1.0 : unit == TimeUnit::Days ? day : month); }
};

constexpr std::array steps = {
    TimeStep{TimeUnit::Seconds, 1},     TimeStep{TimeUnit::Seconds, 2},     TimeStep{TimeUnit::Seconds, 5},
    TimeStep{TimeUnit::Seconds, 10},    TimeStep{TimeUnit::Seconds, 30},    TimeStep{TimeUnit::Seconds, 60},
    TimeStep{TimeUnit::Seconds, 120},   TimeStep{TimeUnit::Seconds, 300},   TimeStep{TimeUnit::Seconds, 600},
    TimeStep{TimeUnit::Seconds, 1800},  TimeStep{TimeUnit::Seconds, 3600},  TimeStep{TimeUnit::Seconds, 7200},
    TimeStep{TimeUnit::Seconds, 10800}, TimeStep{TimeUnit::Seconds, 21600}, TimeStep{TimeUnit::Seconds, 43200},
    TimeStep{TimeUnit::Days, 1},        TimeStep{TimeUnit::Days, 2},        TimeStep{TimeUnit::Days, 5},
    TimeStep{TimeUnit::Days, 10},       TimeStep{TimeUnit::Months, 1},      TimeStep{TimeUnit::Months, 2},
    TimeStep{TimeUnit::Months, 3},      TimeStep{TimeUnit::Months, 6},      TimeStep{TimeUnit::Months, 12},
    TimeStep{TimeUnit::Months, 24},     TimeStep{TimeUnit::Months, 60},     TimeStep{TimeUnit::Months, 120},
    TimeStep{TimeUnit::Months, 240},    TimeStep{TimeUnit::Months, 600},    TimeStep{TimeUnit::Months, 1200},
    TimeStep{TimeUnit::Months, 6000},   TimeStep{TimeUnit::Months, 24000}};

std::chrono::sys_days dayOf(double seconds) {
    return std::chrono::floor<std::chrono::days>(
        std::chrono::sys_seconds(std::chrono::seconds(static_cast<std::int64_t>(std::floor(seconds)))));
}

double secondsOf(std::chrono::sys_days date) {
    return static_cast<double>(std::chrono::seconds(date.time_since_epoch()).count());
}

/// Days 1, 6, 11 ... of each month for a step of five days; the first days of months for steps of months.
std::vector<double> calendarPlaces(const PlotSpan& span, const TimeStep& step) {
    using std::chrono::months;
    std::vector<double> places;
    const std::chrono::year_month_day first(dayOf(span.low));
    const int firstYear = static_cast<int>(first.year());
    const int firstMonth =
        step.unit == TimeUnit::Months
            ? (firstYear * 12 + static_cast<int>(static_cast<unsigned>(first.month())) - 1) / step.count * step.count
            : firstYear * 12 + static_cast<int>(static_cast<unsigned>(first.month())) - 1;
    const int monthStep = step.unit == TimeUnit::Months ? step.count : 1;
    for (int number = firstMonth;; number += monthStep) {
        const std::chrono::year_month at{std::chrono::year(number / 12),
                                         std::chrono::month(static_cast<unsigned>(number % 12) + 1)};
        const std::chrono::sys_days begin(at / std::chrono::day(1));
        if (secondsOf(begin) > span.high) {
            return places;
        }
        const int days = step.unit == TimeUnit::Days ? 28 : 1;
        for (int i = 0; i < days; i += step.unit == TimeUnit::Days ? step.count : 1) {
            const double place = secondsOf(begin + std::chrono::days(i));
            if (span.contains(place)) {
                places.push_back(place);
            }
        }
    }
}

std::vector<double> evenPlaces(const PlotSpan& span, double step) {
    std::vector<double> places;
    double place = std::ceil(span.low / step) * step;
    while (place <= span.high) {
        places.push_back(place);
        place += step;
    }
    return places;
}

std::vector<double> placesOf(const PlotSpan& span, const TimeStep& step) {
    const bool isEven = step.unit == TimeUnit::Seconds || (step.unit == TimeUnit::Days && step.count <= 2);
    return isEven ? evenPlaces(span, step.seconds()) : calendarPlaces(span, step);
}

/// "2024-04", "2024-04-03", "12:30" or "12:30:15"; a year at tics that are years apart.
std::string timeLabel(double seconds, const TimeStep& step) {
    const std::string text = dateText(seconds);  // 2024-02-29T12:30:15Z
    constexpr std::size_t yearEnd = 4;
    constexpr std::size_t monthEnd = 7;
    constexpr std::size_t dayEnd = 10;
    if (step.unit == TimeUnit::Months) {
        return text.substr(0, step.count >= 12 ? yearEnd : monthEnd);
    }
    if (step.unit == TimeUnit::Days) {
        return text.substr(0, dayEnd);
    }
    const bool isMidnight = std::fmod(seconds, day) == 0.0;
    if (isMidnight) {
        return text.substr(0, dayEnd);
    }
    return text.substr(dayEnd + 1, step.seconds() < minute ? 8 : 5);
}

double labelLength(const TimeStep& step) {
    if (step.unit == TimeUnit::Seconds) {
        return step.seconds() < minute ? 8.0 : 7.0;
    }
    return step.unit == TimeUnit::Days ? 10.0 : 7.0;
}

/// @return the step of the minor tics; 0 for none.
double minorStep(const TimeStep& step) {
    if (step.unit != TimeUnit::Seconds || step.count < 2) {
        return step.unit == TimeUnit::Days && step.count == 1 ? 0.25 * day : step.unit == TimeUnit::Days ? day : 0.0;
    }
    return step.seconds() == hour || step.seconds() == minute ? step.seconds() / 6.0 : 0.5 * step.seconds();
}

}  // namespace

PlotTics timeTics(const PlotSpan& span, const TicRoom& room) {
    constexpr double minSpan = 2.0;
    if (span.low < firstTime || span.high > lastTime || span.high - span.low < minSpan) {
        return linearTics(span, room);
    }
    constexpr double gap = 2.5;
    const auto* const found = std::find_if(steps.begin(), steps.end(), [&](const TimeStep& step) {
        return (span.high - span.low) / step.seconds() * (labelLength(step) + gap) <= room.characters;
    });
    const TimeStep step = found == steps.end() ? steps.back() : *found;
    PlotTics tics;
    bool hasDate = step.unit != TimeUnit::Seconds;
    for (const double place : placesOf(span, step)) {
        tics.tics.push_back({.at = place, .label = timeLabel(place, step), .isMinor = false});
        hasDate = hasDate || std::fmod(place, day) == 0.0;
    }
    tics.titleSuffix = hasDate ? " (UTC)" : " (" + dateText(span.low).substr(0, 10) + ", UTC)";
    if (const double minor = minorStep(step); minor > 0.0) {
        for (const double place : evenPlaces(span, minor)) {
            tics.tics.push_back({.at = place, .label = {}, .isMinor = true});
        }
    }
    return tics;
}

}  // namespace velmorak
