#include "Output/plots/axes/PlotTics.h"

#include "Output/plots/text/LabelText.h"

#include <velmorak/ElementaryFunctions.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace velmorak {

namespace {

constexpr const char* thinSpace = "\u2009";

/// A step of 1, 2 or 5 times a power of ten.
struct Step {
    int digit = 1;
    int power = 0;

    double size() const { return digit * elementary::powerOfTen(power); }
    Step larger() const;
};

Step Step::larger() const {
    return digit == 1   ? Step{.digit = 2, .power = power}
           : digit == 2 ? Step{.digit = 5, .power = power}
                        : Step{.digit = 1, .power = power + 1};
}

Step minStep(double width, double maxCount, bool hasIntegersOnly) {
    Step step{.digit = 1, .power = static_cast<int>(std::floor(elementary::log10(width / maxCount))) - 1};
    if (hasIntegersOnly) {
        step.power = std::max(step.power, 0);
    }
    while (width / step.size() > maxCount) {
        step = step.larger();
    }
    return step;
}

/// Multiples within the span, as numbers of steps; few, whatever the span.
std::vector<double> multiples(const PlotSpan& span, double step) {
    constexpr double maxCount = 1000.0;
    constexpr double tolerance = 1e-9;
    const double first = std::ceil(span.low / step - tolerance);
    const double last = std::floor(span.high / step + tolerance);
    std::vector<double> all;
    for (double i = first; i <= last && i - first < maxCount && std::abs(i) < 9e15; ++i) {
        all.push_back(i);
    }
    return all;
}

int powerOf(double value) {
    return value > 0.0 ? static_cast<int>(std::floor(elementary::log10(value) + 1e-12)) : 0;
}

/// The common power of ten, a multiple of three, of numbers that are large or small; 0 for others.
int commonPower(double largest, const Step& step) {
    constexpr int large = 6;
    constexpr int small = -4;
    constexpr int group = 3;
    const int power = powerOf(largest);
    const bool isReadable = power < large && (power >= small || step.power >= small) && step.power >= small;
    if (isReadable || largest == 0.0) {
        return 0;
    }
    return static_cast<int>(std::floor(static_cast<double>(power) / group)) * group;
}

void addMinor(PlotTics& tics, const PlotSpan& span, const Step& step, bool hasIntegersOnly) {
    const double part = step.size() / (step.digit == 2 ? 4.0 : 5.0);
    if (hasIntegersOnly && part < 1.0) {
        return;
    }
    const double parts = step.digit == 2 ? 4.0 : 5.0;
    for (const double i : multiples(span, part)) {
        if (std::fmod(i, parts) != 0.0) {
            tics.tics.push_back({.at = i * part, .label = {}, .isMinor = true});
        }
    }
}

PlotTics numberTics(const PlotSpan& span, const Step& step, bool hasIntegersOnly) {
    const double largest = std::max(std::abs(span.low), std::abs(span.high));
    const int common = commonPower(largest, step);
    const int decimals = std::clamp(common - step.power, 0, 15);
    const double scale = elementary::powerOfTen(-common);
    constexpr double grouped = 9999.5;
    PlotTics tics;
    for (const double i : multiples(span, step.size())) {
        // A digit times a power of ten has the nearest double; a product of rounded numbers may not.
        const double at = step.power < 0 ? i * step.digit / elementary::powerOfTen(-step.power) : i * step.size();
        tics.tics.push_back(
            {.at = at, .label = ticNumber(at * scale, decimals, largest * scale >= grouped), .isMinor = false});
    }
    tics.exponent = common == 0 ? "" : "10^{" + std::to_string(common) + "}";
    addMinor(tics, span, step, hasIntegersOnly);
    return tics;
}

/// Labels side by side need their width, above each other somewhat more than the height of a line.
double ticsThatFit(const TicRoom& room, double widest) {
    constexpr double gap = 3.0;
    constexpr double linesApart = 2.6;
    return std::max(1.0, room.characters / (room.isHorizontal ? widest + gap : linesApart));
}

std::string powerLabel(int power, bool isPlain) {
    if (isPlain) {
        return power < 0 ? ticNumber(elementary::powerOfTen(power), -power, false)
                         : ticNumber(elementary::powerOfTen(power), 0, false);
    }
    return "10^{" + std::to_string(power) + "}";
}

/// Labels at 1, 2 and 5 times powers of ten.
PlotTics fineLogTics(const PlotSpan& span, int first, int last) {
    constexpr int plainFrom = -3;
    constexpr int plainTo = 5;
    const bool isPlain = first >= plainFrom && last <= plainTo;
    constexpr double grouped = 9999.5;
    PlotTics tics;
    for (int power = first; power <= last; ++power) {
        for (int digit = 1; digit <= 9; ++digit) {
            const double at =
                power < 0 ? digit / elementary::powerOfTen(-power) : digit * elementary::powerOfTen(power);
            if (!span.contains(at)) {
                continue;
            }
            const bool isNamed = digit == 1 || digit == 2 || digit == 5;
            const std::string plain = ticNumber(at, std::max(0, -power), span.high >= grouped);
            const std::string scientific =
                (digit == 1 ? "" : std::to_string(digit) + "·") + "10^{" + std::to_string(power) + "}";
            tics.tics.push_back({.at = at, .label = !isNamed ? "" : isPlain ? plain : scientific, .isMinor = !isNamed});
        }
    }
    return tics;
}

std::size_t namedCount(const PlotTics& tics) {
    return static_cast<std::size_t>(
        std::count_if(tics.tics.begin(), tics.tics.end(), [](const PlotTic& tic) { return !tic.label.empty(); }));
}

/// Labels at powers of ten; at every second, third ... of many.
PlotTics coarseLogTics(const PlotSpan& span, int first, int last, double maxCount) {
    constexpr int maxMarked = 12;
    const int step = static_cast<int>((last - first) / std::max(1.0, maxCount)) + 1;
    const bool isPlain = first >= -2 && last <= 3;
    PlotTics tics;
    for (int power = first - 1; power <= last; ++power) {
        const double one = elementary::powerOfTen(power);
        if (power >= first) {
            const bool isNamed = (power - first) % step == 0;
            tics.tics.push_back({.at = one, .label = isNamed ? powerLabel(power, isPlain) : "", .isMinor = !isNamed});
        }
        for (int digit = 2; digit <= 9 && last - first <= maxMarked; ++digit) {
            if (span.contains(digit * one)) {
                tics.tics.push_back({.at = digit * one, .label = {}, .isMinor = true});
            }
        }
    }
    return tics;
}

}  // namespace

double PlotTics::widest() const {
    double widest = 0.0;
    for (const PlotTic& tic : tics) {
        widest = std::max(widest, labelWidth(tic.label));
    }
    return widest;
}

std::string ticNumber(double value, int decimals, bool hasGroups) {
    std::array<char, 400> buffer{};
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), std::abs(value),
                                   std::chars_format::fixed, decimals);
    std::string digits(buffer.data(), end.ptr);
    const std::size_t whole = std::min(digits.find('.'), digits.size());
    constexpr std::size_t group = 3;
    for (std::size_t at = whole; hasGroups && at > group; at -= group) {
        digits.insert(at - group, thinSpace);
    }
    const bool isZero = digits.find_first_not_of("0.") == std::string::npos;
    return value < 0.0 && !isZero ? "−" + digits : digits;
}

PlotTics linearTics(const PlotSpan& span, const TicRoom& room) {
    const double width = span.high - span.low;
    constexpr double firstGuess = 4.0;
    constexpr double maxCount = 8.0;
    double count = std::min(maxCount, ticsThatFit(room, firstGuess));
    for (int attempt = 0; attempt < 4; ++attempt) {
        PlotTics tics = numberTics(span, minStep(width, count, room.hasIntegersOnly), room.hasIntegersOnly);
        // One label alone tells no scale.
        if (attempt == 0 && namedCount(tics) < 2) {
            count *= 2.0;
            continue;
        }
        const double fitting = ticsThatFit(room, tics.widest());
        if (static_cast<double>(namedCount(tics)) <= fitting + 1.5 || count < 2.0) {
            return tics;
        }
        count = std::min(0.75 * count, fitting);
    }
    return numberTics(span, minStep(width, 1.5, room.hasIntegersOnly), room.hasIntegersOnly);
}

PlotTics logTics(const PlotSpan& span, const TicRoom& room) {
    constexpr double tolerance = 1e-9;
    const double low = elementary::log10(span.low);
    const double high = elementary::log10(span.high);
    const int first = static_cast<int>(std::ceil(low - tolerance));
    const int last = static_cast<int>(std::floor(high + tolerance));
    if (high - low >= 2.0) {
        return coarseLogTics(span, first, last, std::min(8.0, ticsThatFit(room, 4.0)));
    }
    PlotTics tics = fineLogTics(span, first - 1, last);
    constexpr std::size_t enough = 3;
    return namedCount(tics) >= enough ? tics : linearTics(span, room);
}

PlotTics categoryTics(const std::vector<std::string>& categories, const TicRoom& room) {
    PlotTics tics;
    constexpr double gap = 1.5;
    constexpr double lines = 1.6;  // Of tilted labels, in characters.
    double all = 0.0;
    for (const std::string& category : categories) {
        all = std::max(all, labelWidth(category) + gap);
    }
    tics.isTilted = all * static_cast<double>(categories.size()) > room.characters;
    const auto most = static_cast<std::size_t>(std::max(1.0, room.characters / lines));
    const std::size_t step = tics.isTilted ? (categories.size() - 1) / most + 1 : 1;
    for (std::size_t i = 0; i < categories.size(); i += step) {
        tics.tics.push_back({.at = static_cast<double>(i), .label = categories[i], .isMinor = false});
    }
    return tics;
}

}  // namespace velmorak
