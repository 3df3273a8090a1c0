#pragma once

#include "Output/plots/script/Drawing.h"
#include "PlotSettings.h"

#include <string>
#include <vector>

namespace velmorak {

/// The pictures of a report's PDF, a page for each.
struct PdfContents {
    std::vector<PictureInRun> inRun;      ///< Come first.
    std::vector<PlotPicture> ofReport{};  ///< Drawn in the size of the first page.
};

/// Writes the PDF beside the page of a report. Warns of pictures in the run whose script or data cannot be read.
/// @param page name of the page in the results folder.
/// @param contents at least one picture.
/// @throws Failure if no picture can be drawn or the file cannot be written; Stopped.
void writeReportPdf(const std::string& page, const PdfContents& contents, RunContext& context);

}  // namespace velmorak
