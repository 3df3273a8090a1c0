#include "ScanPicture.h"

#include "Markup.h"

#include <velmorak/ElementaryFunctions.h>
#include <velmorak/FormatMeasurement.h>
#include <velmorak/Utf8.h>
#include <velmorak/Value.h>

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <set>
#include <utility>

namespace {

constexpr std::size_t maxPanels = 60;
constexpr std::size_t maxSeriesNamed = 8;
constexpr double panelWidth = 420;
constexpr double panelHeight = 280;
constexpr double left = 74;
constexpr double right = 14;
constexpr double top = 30;
constexpr double bottom = 48;
constexpr double lineHeight = 18;
/// Of Okabe and Ito, told apart by most people.
constexpr std::array<const char*, 8> colours{"#0072b2", "#d55e00", "#009e73", "#cc79a7",
                                             "#e69f00", "#56b4e9", "#8c6d1f", "#4d4d4d"};

struct Span {
    double low = 0.0;
    double high = 0.0;
    bool isEmpty = true;

    void add(double value);
    Span widened(double part) const;
    /// Where the value is between low and high, from 0 to 1.
    double partOf(double value) const;
};

void Span::add(double value) {
    if (std::isfinite(value)) {
        low = isEmpty ? value : std::min(low, value);
        high = isEmpty ? value : std::max(high, value);
        isEmpty = false;
    }
}

Span Span::widened(double part) const {
    constexpr double most = std::numeric_limits<double>::max();
    const double extra = high > low ? part * high - part * low : (low == 0.0 ? 1.0 : 0.1 * std::abs(low));
    return {std::max(low - extra, -most), std::min(high + extra, most), isEmpty};
}

double Span::partOf(double value) const {
    const double whole = high - low;
    return std::isfinite(whole) ? (value - low) / whole : (value / 2 - low / 2) / (high / 2 - low / 2);
}

struct Tick {
    double value = 0.0;
    std::string label;
};

/// About as many numbers of the form 1, 2 or 5 times a power of ten. None for spans near the limits of a double.
std::vector<Tick> ticksOf(const Span& span, int wanted) {
    constexpr double least = 1e-280;
    const double rough = (span.high - span.low) / wanted;
    if (!(rough > least && rough < 1.0 / least)) {
        return {};
    }
    const auto power = static_cast<int>(std::floor(velmorak::elementary::log10(rough)));
    const double scale = velmorak::elementary::powerOfTen(std::abs(power));
    const double mantissa = power < 0 ? rough * scale : rough / scale;
    const int factor = mantissa <= 1 ? 1 : mantissa <= 2 ? 2 : mantissa <= 5 ? 5 : 10;
    const auto valueOf = [&](double number) {
        return power < 0 ? number * factor / scale : number * factor * scale;  // Rounded once.
    };
    std::vector<Tick> ticks;
    const double first = std::ceil(span.low / valueOf(1));
    for (int i = 0; i <= 4 * wanted && valueOf(first + i) <= span.high; ++i) {
        ticks.push_back({valueOf(first + i), velmorak::formatNumber(valueOf(first + i) + 0.0)});
    }
    return ticks;
}

/// With a minus sign instead of a hyphen.
std::string typeset(std::string number) {
    for (std::size_t at = number.find('-'); at != std::string::npos; at = number.find('-', at)) {
        number.replace(at, 1, "\u2212");
    }
    return number;
}

std::string coordinate(double value) {
    return velmorak::formatNumber(std::round(100 * value) / 100);
}

std::string shortened(const std::string& text, std::size_t most) {
    if (velmorak::characterCount(text) <= most) {
        return text;
    }
    std::string kept;
    for (std::size_t at = 0, count = 0; count + 1 < most && at < text.size(); ++count) {
        const std::size_t bytes = std::max<std::size_t>(1, velmorak::characterBytes(std::string_view(text).substr(at)));
        kept += text.substr(at, bytes);
        at += bytes;
    }
    return kept + "\u2026";
}

std::string textAt(double x, double y, const char* anchor, const std::string& text, const char* more = "") {
    return "<text x=\"" + coordinate(x) + "\" y=\"" + coordinate(y) + "\" text-anchor=\"" + anchor + "\"" + more + ">" +
           markupText(text) + "</text>\n";
}

std::string lineFrom(double x1, double y1, double x2, double y2, const std::string& style) {
    return "<line x1=\"" + coordinate(x1) + "\" y1=\"" + coordinate(y1) + "\" x2=\"" + coordinate(x2) + "\" y2=\"" +
           coordinate(y2) + "\" " + style + "/>\n";
}

/// The places of the runs on the horizontal axis, and the series that they belong to.
class Layout {
public:
    explicit Layout(const ScanTable& table);

    std::vector<Tick> ticks() const;

    const ScanTable& table;
    std::string title;
    std::vector<std::string> series;  ///< Settings apart from the one of the axis.
    std::vector<std::size_t> seriesNumbers;
    std::vector<double> places;  ///< Parallel to the runs.
    Span span;

private:
    void chooseAxis();

    double placeOf(const ScanRun& run);

    std::string seriesOf(const ScanRun& run) const;

    std::size_t axis = 0;
    bool isNumeric = false;
    std::vector<std::string> categories;
};

Layout::Layout(const ScanTable& table) : table(table) {
    chooseAxis();
    for (const ScanRun& run : table.runs()) {
        const std::string name = seriesOf(run);
        const auto found = std::find(series.begin(), series.end(), name);
        seriesNumbers.push_back(static_cast<std::size_t>(found - series.begin()));
        if (found == series.end()) {
            series.push_back(name);
        }
        places.push_back(placeOf(run));
        span.add(places.back());
    }
    span = span.widened(isNumeric ? 0.04 : 0.08);
}

std::vector<Tick> Layout::ticks() const {
    if (isNumeric) {
        return ticksOf(span, 5);
    }
    std::vector<Tick> ticks;
    const std::size_t step = (categories.size() + 5) / 6;
    for (std::size_t i = 0; i < categories.size(); i += step) {
        ticks.push_back({static_cast<double>(i), shortened(categories[i], 14)});
    }
    return ticks;
}

void Layout::chooseAxis() {
    std::size_t most = 0;
    for (std::size_t i = 0; i < table.varied().size(); ++i) {
        std::set<std::string> values;
        bool areNumbers = true;
        double number = 0.0;
        for (const ScanRun& run : table.runs()) {
            values.insert(run.values[i]);
            areNumbers = areNumbers && velmorak::readNumber(run.values[i], number) && std::isfinite(number);
        }
        if (values.size() > most) {
            most = values.size();
            axis = i;
            isNumeric = areNumbers;
        }
    }
    title = table.varied()[axis];
}

double Layout::placeOf(const ScanRun& run) {
    double place = 0.0;
    if (isNumeric) {
        velmorak::readNumber(run.values[axis], place);
        return place;
    }
    const auto found = std::find(categories.begin(), categories.end(), run.values[axis]);
    place = static_cast<double>(found - categories.begin());
    if (found == categories.end()) {
        categories.push_back(run.values[axis]);
    }
    return place;
}

std::string Layout::seriesOf(const ScanRun& run) const {
    std::string name;
    for (std::size_t i = 0; i < run.values.size(); ++i) {
        if (i != axis) {
            name += (name.empty() ? "" : ", ") + table.varied()[i] + " = " + run.values[i];
        }
    }
    return name;
}

class Panel {
public:
    using Position = ScanTable::Quantities::key_type;

    Panel(const Layout& layout, Position position, const ScanQuantity& quantity, double x, double y);

    std::string drawn() const;

private:
    const ScanNumber* numberOf(const ScanRun& run) const;
    static double errorOf(const ScanNumber& number);
    double xOf(double value) const { return x0 + left + layout.span.partOf(value) * (panelWidth - left - right); }
    double yOf(double value) const;

    std::string axes() const;

    std::string seriesDrawn(std::size_t series) const;

    const Layout& layout;
    Position position;
    const ScanQuantity& quantity;
    double x0;
    double y0;
    Span heights;
};

Panel::Panel(const Layout& layout, Position position, const ScanQuantity& quantity, double x, double y)
    : layout(layout), position(std::move(position)), quantity(quantity), x0(x), y0(y) {
    for (const ScanRun& run : layout.table.runs()) {
        const ScanNumber* const number = numberOf(run);
        if (number) {
            heights.add(number->value - errorOf(*number));
            heights.add(number->value + errorOf(*number));
            heights.add(number->value);
        }
    }
    heights = heights.widened(0.06);
}

std::string Panel::drawn() const {
    std::string text = "<g>\n" + textAt(x0 + left, y0 + 20, "start", shortened(quantity.name(), 46), " class=\"t\"");
    text += axes();
    for (std::size_t i = 0; i < layout.series.size(); ++i) {
        text += seriesDrawn(i);
    }
    return text + "</g>\n";
}

const ScanNumber* Panel::numberOf(const ScanRun& run) const {
    const auto found = run.numbers.find(position);
    return found == run.numbers.end() || !std::isfinite(found->second.value) ? nullptr : &found->second;
}

double Panel::errorOf(const ScanNumber& number) {
    return number.hasError && std::isfinite(number.error) ? number.error : 0.0;
}

double Panel::yOf(double value) const {
    return y0 + panelHeight - bottom - heights.partOf(value) * (panelHeight - top - bottom);
}

std::string Panel::axes() const {
    const double floor = y0 + panelHeight - bottom;
    const double end = x0 + panelWidth - right;
    std::string text;
    for (const Tick& tick : layout.ticks()) {
        text += lineFrom(xOf(tick.value), floor, xOf(tick.value), y0 + top, "class=\"g\"");
        text += textAt(xOf(tick.value), floor + 17, "middle", typeset(tick.label));
    }
    for (const Tick& tick : heights.isEmpty ? std::vector<Tick>() : ticksOf(heights, 5)) {
        text += lineFrom(x0 + left, yOf(tick.value), end, yOf(tick.value), "class=\"g\"");
        text += textAt(x0 + left - 6, yOf(tick.value) + 4, "end", typeset(tick.label));
    }
    text += "<rect x=\"" + coordinate(x0 + left) + "\" y=\"" + coordinate(y0 + top) + "\" width=\"" +
            coordinate(panelWidth - left - right) + "\" height=\"" + coordinate(panelHeight - top - bottom) +
            "\" class=\"f\"/>\n";
    return text + textAt((x0 + left + end) / 2, y0 + panelHeight - 10, "middle", shortened(layout.title, 46));
}

std::string Panel::seriesDrawn(std::size_t series) const {
    const std::string colour = colours.at(series % colours.size());
    std::string path;
    std::string points;
    for (std::size_t i = 0; i < layout.table.runs().size(); ++i) {
        const ScanNumber* const number = numberOf(layout.table.runs()[i]);
        if (layout.seriesNumbers[i] != series || !number) {
            continue;
        }
        const double x = xOf(layout.places[i]);
        path += (path.empty() ? "M" : "L") + coordinate(x) + " " + coordinate(yOf(number->value));
        if (const double error = errorOf(*number); error > 0.0) {
            points += lineFrom(x, yOf(number->value - error), x, yOf(number->value + error),
                               fmt::format(R"(stroke="{}" stroke-width="1.4")", colour));
        }
        points += fmt::format(R"(<circle cx="{}" cy="{}" r="3" fill="{}"/>)", coordinate(x),
                              coordinate(yOf(number->value)), colour);
        points += "\n";
    }
    return fmt::format(R"(<path d="{}" fill="none" stroke="{}" stroke-width="1" stroke-opacity="0.6"/>)", path,
                       colour) +
           "\n" + points;
}

std::string opening(double width, double height) {
    return fmt::format(
        R"(<svg xmlns="http://www.w3.org/2000/svg" width="{0}" height="{1}" viewBox="0 0 {0} {1}">
<style>text {{ font: 12px "DejaVu Sans", sans-serif; fill: #1c1e21; }} .t {{ font-weight: bold; }} {2}</style>
<rect width="{0}" height="{1}" fill="#ffffff"/>
)",
        coordinate(width), coordinate(height), ".g { stroke: #e1e4e8; } .f { fill: none; stroke: #1c1e21; }");
}

/// The names of the series, one below the other. @return with their colours, if there are several.
std::string legend(const Layout& layout) {
    std::string text;
    for (std::size_t i = 0; layout.series.size() > 1 && i < std::min(layout.series.size(), maxSeriesNamed); ++i) {
        const double y = lineHeight * static_cast<double>(i + 1);
        text += lineFrom(left, y - 4, left + 22, y - 4, fmt::format(R"(stroke="{}" stroke-width="3")", colours.at(i)));
        text += textAt(left + 30, y, "start", shortened(layout.series[i], 100));
    }
    if (layout.series.size() > maxSeriesNamed) {
        text += textAt(left + 30, lineHeight * (maxSeriesNamed + 1), "start",
                       "and " + std::to_string(layout.series.size() - maxSeriesNamed) + " more");
    }
    return text;
}

double legendHeight(const Layout& layout) {
    const std::size_t lines = std::min(layout.series.size(), maxSeriesNamed + 1);
    return lines > 1 ? lineHeight * static_cast<double>(lines) + 10 : 0;
}

}  // namespace

std::string scanPicture(const ScanTable& table) {
    const ScanTable::Quantities quantities = table.changing();
    if (quantities.empty()) {
        return opening(panelWidth, 40) + textAt(12, 24, "start", "No number differs between the runs.") + "</svg>\n";
    }
    const Layout layout(table);
    const std::size_t panels = std::min(quantities.size(), maxPanels);
    const std::size_t columns = panels > 4 ? 3 : panels > 1 ? 2 : 1;
    const std::size_t rows = (panels + columns - 1) / columns;
    const double begin = legendHeight(layout);
    const bool hasMore = quantities.size() > panels;
    const double height = begin + panelHeight * static_cast<double>(rows);
    std::string text = opening(panelWidth * static_cast<double>(columns), height + (hasMore ? 2 * lineHeight : 0));
    text += legend(layout);
    std::size_t number = 0;
    for (const auto& [position, quantity] : quantities) {
        const std::size_t row = number / columns;
        if (number < panels) {
            text += Panel(layout, position, quantity, panelWidth * static_cast<double>(number % columns),
                          begin + panelHeight * static_cast<double>(row))
                        .drawn();
        }
        ++number;
    }
    if (hasMore) {
        text += textAt(12, height + lineHeight, "start",
                       std::to_string(quantities.size() - panels) + " more are in the table only.");
    }
    return text + "</svg>\n";
}
