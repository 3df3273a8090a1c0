#pragma once

#include "PlotScript.h"

#include <velmorak/Run.h>

#include <filesystem>

namespace velmorak {

/// Draws into a folder: base name with .dat, .gp, and one picture for each format.
/// @throws Failure if gnuplot is not installed or fails; Stopped.
void drawInto(const std::filesystem::path& folder, const PlotFiles& files, const PlotStyle& style,
              const RunContext& context);

/// Objects that are drawn into one picture, in a style whose base name and formats do not matter.
struct PlotPicture {
    std::vector<PlotObject> objects;
    PlotStyle style;
};

/// @return the picture as SVG, as Plot draws it. Warns about objects that it cannot draw.
/// @throws as plotSheet, plotFiles and drawInto.
std::string drawnSvg(const PlotPicture& picture, RunContext& context);

/// @return a PDF with one page for each picture; all pages are as large as the first. Warns of nothing.
/// @throws as plotSheet, plotFiles and drawInto.
std::string drawnPdf(const std::vector<PlotPicture>& pictures, const RunContext& context);

}  // namespace velmorak
