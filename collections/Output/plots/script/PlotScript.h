#pragma once

#include "Output/plots/contents/PlotBoxes.h"
#include "Output/plots/script/PlotSheet.h"

namespace velmorak {

/// Files of a picture for gnuplot, all in one folder and beginning with the base name.
struct PlotFiles {
    std::string script;
    std::string data;
};

/// @param sheet receives the samples of curves, contours, and warnings for the user.
/// @throws Failure, with the input, if the contents cannot be shown.
PlotFiles plotFiles(PlotSheet& sheet, const PlotStyle& style);

/// @return the commands of a script of plotFiles that draw the picture, without the formats and the name of the data.
/// @throws Failure if the text is no such script.
std::string commandsIn(const std::string& script);

/// @return the scale of fonts and lines in a script of plotFiles with a format.
/// @throws Failure if the text is no such script.
double scaleIn(const std::string& script);

/// Begins a PDF whose pages have the size of the style; "set output" ends it.
/// @param scale of fonts and lines.
std::string pdfBegin(const std::string& file, const PlotStyle& style, double scale);

/// Comes before the commands of each page.
/// @param style of the picture, which is scaled to the page if it has another size.
/// @param scale of the picture's fonts and lines.
std::string pageBegin(const std::string& dataFile, const PlotStyle& style, double scale, const PlotStyle& page);

/// Range and tics of one axis.
/// @param axis "x", "y" or "cb".
/// @param hasLabels no: the tics are drawn without their numbers.
std::string axisCommands(const std::string& axis, const PlotSpan& span, bool hasLog, const PlotTics& tics,
                         bool hasLabels);

/// The title of the horizontal axis with the common power of ten, without the unit that marks times.
std::string horizontalTitle(const PlotContents& contents, const PlotPage& page, const PlotStyle& style);

/// Titles that all frames of a sheet have in common.
struct SheetTitles {
    std::string title;
    std::string x;
    std::string y;
};
std::string sheetLabels(const SheetTitles& titles, const PlotLayout& layout);

/// Titles of the picture and its axes, the common powers of ten, and the statistics of a map.
std::string titleLabels(const PlotContents& contents, const PlotPage& page, const PlotStyle& style,
                        const std::string& panelTitle);

/// Statistics box, free texts, lines, regions and the place of the legend.
std::string boxCommands(const PlotBoxes& boxes, const PlotLayout& layout, const PlotStyle& style);

/// Lines and regions of one direction or of both.
std::string guideCommands(const PlotStyle& style, bool hasHorizontal);

}  // namespace velmorak
