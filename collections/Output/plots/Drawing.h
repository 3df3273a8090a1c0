#pragma once

#include "PlotScript.h"

#include <velmorak/Run.h>

#include <filesystem>

namespace velmorak {

/// Draws into a folder: base name with .dat, .gp, and one picture for each format.
/// @throws Failure if gnuplot is not installed or fails; Stopped.
void drawInto(const std::filesystem::path& folder, const PlotFiles& files, const PlotStyle& style,
              const RunContext& context);

/// @return the picture as SVG, as Plot draws it. Warns about objects that it cannot draw.
/// @throws as plotContents, plotFiles and drawInto.
std::string drawnSvg(const std::vector<PlotObject>& objects, RunContext& context);

}  // namespace velmorak
