#include "Output/plots/contents/PlotBoxes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace velmorak {

namespace {

constexpr double unlimited = std::numeric_limits<double>::infinity();
constexpr double gap = 0.02;  ///< Between a box and the curves.

/// The extent of the curves in a part of the frame's width, as positions along the vertical axis.
struct Drawn {
    double lowest = unlimited;
    double highest = -unlimited;
};

bool standsOnGround(const PlotSeries& series) {
    using Style = PlotSeries::SeriesStyle;
    return series.isHistogram && series.style != Style::Points && series.style != Style::Line &&
           series.style != Style::Band;
}

/// Measures the series between two fractions of the frame's width.
class Surroundings {
public:
    Surroundings(const PlotContents& contents, const PlotFrame& frame, const PlotStyle& style);

    Drawn between(double from, double to) const;

private:
    double fraction(double x) const { return (positionAlong(x, style.x.hasLog) - left) / width; }
    void add(Drawn& drawn, const PlotSeries& series, const PlotPoint& point) const;

    const PlotContents& contents;
    const PlotFrame& frame;
    const PlotStyle& style;
    double left;
    double width;
};

Surroundings::Surroundings(const PlotContents& contents, const PlotFrame& frame, const PlotStyle& style)
    : contents(contents),
      frame(frame),
      style(style),
      left(positionAlong(frame.x.low, style.x.hasLog)),
      width(positionAlong(frame.x.high, style.x.hasLog) - left) {}

void Surroundings::add(Drawn& drawn, const PlotSeries& series, const PlotPoint& point) const {
    const double top = std::isfinite(point.yHigh) ? point.yHigh : point.y;
    const double bottom = standsOnGround(series) ? frame.ground : std::isfinite(point.yLow) ? point.yLow : point.y;
    const bool hasLog = style.y.hasLog;
    if (!std::isfinite(top) || (hasLog && top <= 0.0)) {
        return;
    }
    drawn.highest = std::max(drawn.highest, positionAlong(top, hasLog));
    if (hasLog && bottom <= 0.0) {
        drawn.lowest = -unlimited;
    } else {
        drawn.lowest = std::min(drawn.lowest, positionAlong(bottom, hasLog));
    }
}

Drawn Surroundings::between(double from, double to) const {
    Drawn drawn;
    for (const PlotSeries& series : contents.series) {
        for (const PlotPoint& point : series.points) {
            const bool isSeen = point.xHigh >= frame.x.low && point.xLow <= frame.x.high;
            if (isSeen && fraction(std::min(point.xHigh, frame.x.high)) >= from &&
                fraction(std::max(point.xLow, frame.x.low)) <= to) {
                add(drawn, series, point);
            }
        }
    }
    return drawn;
}

constexpr std::array corners = {LegendPlace::TopRight, LegendPlace::TopLeft, LegendPlace::BottomRight,
                                LegendPlace::BottomLeft};

/// Boxes in their corners, one below the other.
void stackInCorners(std::vector<PlotBox*>& boxes) {
    for (const LegendPlace corner : corners) {
        double depth = boxMargin;
        for (PlotBox* box : boxes) {
            if (box->corner == corner) {
                box->depth = depth;
                depth += box->height + gap;
            }
        }
    }
}

/// How high the frame must be for the boxes, as positions along the axis.
class Room {
public:
    /// @param fixed a box that stays where it is, which no other may cover; null if there is none.
    Room(const Surroundings& surroundings, double low, double high, const PlotBox* fixed);

    /// @return the upper end that leaves all boxes free; infinite if no upper end does.
    double neededFor(const std::vector<PlotBox*>& boxes) const;

private:
    bool doMeet(const std::vector<PlotBox*>& boxes) const;
    /// A box at the left and one at the right of the same height overlap.
    static bool meetSideways(const std::vector<PlotBox*>& boxes);
    /// Only a box that could be elsewhere.
    bool meetsFixed(const PlotBox& box) const;
    Drawn besideOf(const PlotBox& box) const;
    double upperEnd(const PlotBox& box) const;
    bool isFreeBelow(const PlotBox& box, double upper) const;

    const Surroundings& surroundings;
    double low;
    double high;
    const PlotBox* fixed;
};

Room::Room(const Surroundings& surroundings, double low, double high, const PlotBox* fixed)
    : surroundings(surroundings), low(low), high(high), fixed(fixed) {}

double Room::neededFor(const std::vector<PlotBox*>& boxes) const {
    double needed = high;
    for (const PlotBox* box : boxes) {
        needed = box->isTop() ? std::max(needed, upperEnd(*box)) : needed;
    }
    const bool areFree = std::all_of(boxes.begin(), boxes.end(),
                                     [&](const PlotBox* box) { return box->isTop() || isFreeBelow(*box, needed); });
    if (!areFree || doMeet(boxes)) {
        return unlimited;
    }
    return needed;
}

/// Boxes above each other must not meet in the middle, and boxes beside each other not either.
bool Room::doMeet(const std::vector<PlotBox*>& boxes) const {
    for (const bool isLeft : {false, true}) {
        double all = 0.0;
        for (const PlotBox* box : boxes) {
            all += box->isLeft() == isLeft ? box->height + gap : 0.0;
        }
        if (all > 1.0 - boxMargin) {
            return true;
        }
    }
    return meetSideways(boxes) ||
           std::any_of(boxes.begin(), boxes.end(), [&](const PlotBox* box) { return meetsFixed(*box); });
}

bool Room::meetsFixed(const PlotBox& box) const {
    if (!fixed || box.wanted) {
        return false;
    }
    const auto& [fixedLeft, fixedTop] = *fixed->point;
    const double left = box.isLeft() ? boxMargin : 1.0 - boxMargin - box.width;
    const double top = box.isTop() ? 1.0 - box.depth : box.depth + box.height;
    return left < fixedLeft + fixed->width && fixedLeft < left + box.width && top > fixedTop - fixed->height &&
           fixedTop > top - box.height;
}

bool Room::meetSideways(const std::vector<PlotBox*>& boxes) {
    for (const PlotBox* one : boxes) {
        for (const PlotBox* other : boxes) {
            const bool areBeside = one->isLeft() && !other->isLeft() && one->isTop() == other->isTop() &&
                                   one->depth < other->depth + other->height && other->depth < one->depth + one->height;
            if (areBeside && one->width + other->width > 1.0 - 2.0 * boxMargin) {
                return true;
            }
        }
    }
    return false;
}

Drawn Room::besideOf(const PlotBox& box) const {
    const double reach = box.width + 2.0 * boxMargin;
    return box.isLeft() ? surroundings.between(0.0, reach) : surroundings.between(1.0 - reach, 1.0);
}

double Room::upperEnd(const PlotBox& box) const {
    constexpr double most = 0.75;
    const double highest = besideOf(box).highest;
    const double taken = std::min(box.depth + box.height + gap, most);
    return std::isfinite(highest) ? low + (highest - low) / (1.0 - taken) : low;
}

bool Room::isFreeBelow(const PlotBox& box, double upper) const {
    return besideOf(box).lowest >= low + (box.depth + box.height + gap) * (upper - low);
}

std::vector<LegendPlace> choicesOf(const PlotBox& box, bool isSecond) {
    if (box.wanted) {
        return {*box.wanted};
    }
    std::vector<LegendPlace> all(corners.begin(), corners.end());
    if (isSecond) {
        std::swap(all[0], all[1]);
    }
    return all;
}

}  // namespace

void placeBoxes(PlotBoxes& boxes, PlotFrame& frame, const PlotContents& contents, const PlotStyle& style) {
    std::vector<PlotBox*> all;
    for (auto& [note, box] : boxes.notes) {
        box.corner = box.wanted.value_or(LegendPlace::TopLeft);
        all.push_back(&box);
    }
    PlotBox none;
    const bool isFixed = boxes.hasStatistics() && boxes.statistics.point;
    const bool isFree = boxes.hasStatistics() && !isFixed;
    PlotBox& statistics = isFree ? boxes.statistics : none;
    PlotBox& legend = boxes.hasLegend() ? boxes.legend : none;
    if (isFree) {
        all.push_back(&statistics);
    }
    if (boxes.hasLegend()) {
        all.push_back(&legend);
    }
    if (all.empty() || contents.isPlane()) {
        stackInCorners(all);
        return;
    }
    const bool hasLog = style.y.hasLog;
    const Surroundings surroundings(contents, frame, style);
    const double high = positionAlong(frame.y.high, hasLog);
    const double low = positionAlong(frame.y.low, hasLog);
    const Room room(surroundings, low, high, isFixed ? &boxes.statistics : nullptr);
    double least = unlimited;
    std::array<LegendPlace, 2> best = {choicesOf(statistics, false).front(), choicesOf(legend, true).front()};
    for (const LegendPlace first : choicesOf(statistics, false)) {
        for (const LegendPlace second : choicesOf(legend, isFree)) {
            statistics.corner = first;
            legend.corner = second;
            stackInCorners(all);
            // A later choice must be clearly better.
            constexpr double better = 0.97;
            const double needed = room.neededFor(all) - low;
            if (needed < better * least) {
                least = needed;
                best = {first, second};
            }
        }
    }
    statistics.corner = best[0];
    legend.corner = best[1];
    stackInCorners(all);
    if (!style.y.range.high && std::isfinite(least)) {
        raise(frame, low + least, hasLog);
    }
}

}  // namespace velmorak
