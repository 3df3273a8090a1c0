#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

namespace velmorak {

enum class LegendPlace { None, Automatic, TopLeft, TopRight, BottomLeft, BottomRight };
enum class StatisticsDisplay { None, Automatic, Always, TopLeft, TopRight, BottomLeft, BottomRight };
enum class ObjectStyle { Automatic, Steps, Points, Line, Filled, Stacked, Band, Colours, Contours };
enum class PanelKind { None, Ratio, Difference, Pull };
enum class ListDisplay { Grid, Overlaid };

/// Dash of a line: the number of gnuplot's dash type.
enum class Dash { Solid = 1, Dashed = 2, Dotted = 3, DashDotted = 4 };

/// Ends of an axis, in its unit; an end that is not set follows the contents.
struct PlotRange {
    std::optional<double> low;
    std::optional<double> high;
};

/// User settings of one axis.
struct PlotAxis {
    std::string title;
    PlotRange range;
    bool hasLog = false;
};

/// User settings of one object.
struct ObjectLook {
    ObjectStyle style = ObjectStyle::Automatic;
    std::string colour;  ///< "#rrggbb"; empty: the next of the palette.
    std::optional<Dash> dash;
    double width = 1.0;                 ///< Of lines, as a factor.
    bool isReference = false;           ///< The lower panel compares the others with it.
    std::optional<std::string> legend;  ///< Its text in the legend.
};

/// A vertical or horizontal line, or a shaded region between two such lines.
struct PlotGuide {
    bool isVertical = true;
    double from = 0.0;
    std::optional<double> to;  ///< Of a region.
    std::string colour = "#606060";
    Dash dash = Dash::Dashed;
    double width = 1.0;
    std::string legend;  ///< Empty: none.
};

/// A place that the user chose for a box; without either, there is none.
struct BoxPlace {
    std::optional<LegendPlace> corner{};
    std::optional<std::array<double, 2>> point{};  ///< Of its upper left corner, in fractions of the frame.
};

/// Free text within the frame.
struct PlotNote {
    std::string text;
    LegendPlace corner = LegendPlace::TopLeft;
    std::optional<std::array<double, 2>> place{};  ///< Its left end in fractions of the frame, instead of a corner.
};

/// Where a frame with its labels lies on a page that has several, in cm from the lower left corner.
struct PlotPlace {
    double x = 0.0;
    double y = 0.0;
    double pageWidth = 16.0;
    double pageHeight = 10.0;
    double left = 0.0;  ///< The least margin at its left: that of the frames below and above.
};

/// User settings of one picture.
struct PlotStyle {
    std::string baseName;              ///< Of all files of the picture, without folder and extension.
    std::vector<std::string> formats;  ///< Extensions of the pictures: "png", "svg", "pdf".
    std::string title;
    PlotAxis x;
    PlotAxis y;
    PlotAxis z;
    std::vector<std::string>
        labels;  ///< For the legend, in the order of the objects; an empty one means the object's title.
    std::vector<ObjectLook> looks;  ///< In the order of the objects; may have fewer.
    LegendPlace legend = LegendPlace::Automatic;
    ObjectStyle histograms = ObjectStyle::Automatic;
    StatisticsDisplay statistics = StatisticsDisplay::Automatic;
    BoxPlace statisticsPlace{};  ///< Goes before the corner that statistics names.
    ListDisplay lists = ListDisplay::Grid;
    PanelKind panel = PanelKind::None;
    PlotRange panelRange{};
    std::vector<PlotGuide> guides{};
    std::vector<PlotNote> notes{};
    double width = 16.0;               ///< Centimetres.
    double height = 10.0;              ///< Centimetres.
    double dpi = 254.0;                ///< Dots per inch of a PNG.
    std::optional<PlotPlace> place{};  ///< Of one frame among others, which has no titles of axes.
};

}  // namespace velmorak
