#include "PlotScript.h"

#include "PlotText.h"

#include <velmorak/ElementaryFunctions.h>
#include <velmorak/Utf8.h>
#include <velmorak/Value.h>

#include <algorithm>
#include <cmath>

namespace velmorak {

namespace {

/// Maximum number of labelled powers of ten on an axis.
constexpr int maxPowers = 8;
/// Maximum number of powers of ten with minor tics in between.
constexpr int maxMarkedPowers = 12;

std::string whole(int number) {
    return std::to_string(number);
}

/// "10⁻³"; small powers are written out.
std::string powerText(int exponent) {
    if (exponent >= -1 && exponent <= 2) {
        return exponent == -1 ? "0.1" : textOf(elementary::powerOfTen(exponent));
    }
    const char* const digits[] = {"⁰", "¹", "²", "³", "⁴", "⁵", "⁶", "⁷", "⁸", "⁹"};
    std::string text = exponent < 0 ? "10⁻" : "10";
    for (const char digit : whole(std::abs(exponent))) {
        text += digits[digit - '0'];
    }
    return text;
}

/// Tics at powers of ten, and minor ones in between. For fewer than two powers, gnuplot chooses the tics.
std::string logTics(const std::string& axis, const PlotSpan& span) {
    const int first = static_cast<int>(std::ceil(elementary::log10(span.low) - 1e-9));
    const int last = static_cast<int>(std::floor(elementary::log10(span.high) + 1e-9));
    if (last - first < 1) {
        return {};
    }
    const int step = (last - first) / maxPowers + 1;
    std::string tics;
    for (int power = first - 1; power <= last; ++power) {
        const std::string tail = "e" + whole(power);
        if (power >= first) {
            const bool isNamed = (power - first) % step == 0;
            tics += (tics.empty() ? "" : ", ") + quotedForGnuplot(isNamed ? powerText(power) : "") + " 1" + tail +
                    (isNamed ? " 0" : " 1");
        }
        if (last - first > maxMarkedPowers) {
            continue;
        }
        for (int digit = 2; digit <= 9; ++digit) {
            const double at = digit * elementary::powerOfTen(power);
            if (span.contains(at)) {
                tics += std::string(tics.empty() ? "" : ", ") + "'' " + whole(digit) + tail + " 1";
            }
        }
    }
    return "set " + axis + "tics (" + tics + ")\n";
}

std::string range(const std::string& axis, const PlotSpan& span, bool hasLog) {
    std::string text = hasLog ? "set logscale " + axis + "\n" : std::string();
    text += "set " + axis + "range [" + textOf(span.low) + ":" + textOf(span.high) + "]\n";
    return text + (hasLog ? logTics(axis, span) : "");
}

/// A tic for each category, or for every second, third ... if their names need too much room.
std::string categoryTics(const std::vector<std::string>& categories) {
    constexpr std::size_t maxCharacters = 90;
    std::size_t characters = 0;
    for (const std::string& category : categories) {
        characters += characterCount(category) + 2;
    }
    const std::size_t step = characters / maxCharacters + 1;
    std::string tics;
    for (std::size_t i = 0; i < categories.size(); i += step) {
        tics += (tics.empty() ? "" : ", ") + quotedForGnuplot(categories[i]) + " " + std::to_string(i);
    }
    return categories.empty() ? "" : "set xtics (" + tics + ")\n";
}

const std::string& firstNotEmpty(const std::string& text, const std::string& otherwise) {
    return text.empty() ? otherwise : text;
}

/// Long titles get a smaller font, so that they fit into the picture.
std::string sized(const std::string& text, double room, double least, double most) {
    const double fitting = room / std::max<double>(1.0, static_cast<double>(characterCount(text)));
    return quotedForGnuplot(text) + " font 'DejaVu Sans," + textOf(std::floor(std::clamp(fitting, least, most))) + "'";
}

}  // namespace

std::string plotAxes(const PlotContents& contents, const PlotFrame& frame, const PlotStyle& style) {
    std::string text = range("x", frame.x, style.x.hasLog) + range("y", frame.y, style.y.hasLog);
    text += categoryTics(contents.categories);
    if (contents.map) {
        text += range("cb", frame.z, style.z.hasLog);
    }
    const std::string above = contents.map ? " offset 0,0.9" : "";
    std::string title = firstNotEmpty(style.title, contents.title);
    if (contents.isPartial) {
        title += title.empty() ? "(partial)" : " (partial)";
    }
    text += "set title " + sized(title, 2300.0, 14.0, 34.0) + above + "\n";
    text +=
        "set xlabel " + sized(firstNotEmpty(style.x.title, contents.xTitle), 2100.0, 14.0, 32.0) + " offset 0,-0.2\n";
    text +=
        "set ylabel " + sized(firstNotEmpty(style.y.title, contents.yTitle), 1300.0, 14.0, 32.0) + " offset -1.2,0\n";
    if (contents.map) {
        text += "set cblabel " + sized(firstNotEmpty(style.z.title, contents.zTitle), 1300.0, 14.0, 32.0) +
                " offset 1.2,0\n";
    }
    return text;
}

}  // namespace velmorak
