#pragma once

#include "Output/plots/script/PlotLayout.h"

namespace velmorak {

/// A box of text within the frame. Lengths are fractions of the frame.
struct PlotBox {
    double width = 0.0;
    double height = 0.0;
    std::optional<LegendPlace> wanted{};           ///< A corner that the user chose.
    LegendPlace corner = LegendPlace::TopRight;    ///< Where it is.
    double depth = 0.0;                            ///< Distance from the upper or lower side.
    std::optional<std::array<double, 2>> point{};  ///< Its upper left corner, if that is not in a corner of the frame.

    bool isLeft() const { return corner == LegendPlace::TopLeft || corner == LegendPlace::BottomLeft; }
    bool isTop() const { return corner == LegendPlace::TopLeft || corner == LegendPlace::TopRight; }
};

/// A text in the legend, with its symbol.
struct LegendEntry {
    std::string label;
    const PlotSeries* series = nullptr;
    const PlotContour* contour = nullptr;
    const PlotGuide* guide = nullptr;
};

/// The texts within the frame. Pointers refer to contents and style.
struct PlotBoxes {
    std::vector<StatisticsRow> rows;
    double boxFont = 0.0;
    PlotBox statistics;
    std::vector<LegendEntry> entries;
    double legendFont = 0.0;
    PlotBox legend;
    std::vector<std::pair<const PlotNote*, PlotBox>> notes;  ///< Without those that have a place of their own.

    bool hasStatistics() const { return !rows.empty(); }
    bool hasLegend() const { return !entries.empty(); }
};

/// Distance of the boxes from the frame, as a fraction.
inline constexpr double boxMargin = 0.025;

/// @return the boxes with their sizes; a warning tells of rows that have no room.
PlotBoxes boxesOf(PlotContents& contents, const PlotStyle& style, const PlotLayout& layout);

/// Places the boxes where they need the least room, and extends the frame upwards until they hide nothing. A box at a
/// point stays there, whatever it hides.
void placeBoxes(PlotBoxes& boxes, PlotFrame& frame, const PlotContents& contents, const PlotStyle& style);

}  // namespace velmorak
