#pragma once

#include "Output/plots/script/PlotScript.h"

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

/// A page of a PDF with several.
struct PdfPage {
    std::string commands;
    std::string data;
    PlotStyle style;     ///< Its size is that of the picture.
    double scale = 1.0;  ///< Of fonts and lines.
};

/// @return the page of a picture that is drawn in the style's size. Warns of nothing.
/// @throws as plotSheet and plotFiles.
PdfPage pdfPageOf(const PlotPicture& picture);

/// @return the page of a picture that was drawn before.
/// @param files path of its script and data, without their extensions.
/// @throws Failure if they cannot be read.
PdfPage pdfPageOf(const std::filesystem::path& files, const PlotStyle& style);

/// @param pages at least one. All are as large as the first picture; others are scaled to it.
/// @throws as drawInto.
std::string drawnPdf(const std::vector<PdfPage>& pages, const RunContext& context);

}  // namespace velmorak
