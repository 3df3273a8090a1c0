#pragma once

#include "Output/plots/axes/PlotFrame.h"

namespace velmorak {

/// One object in the lower panel.
struct PanelSeries {
    const PlotSeries* source = nullptr;  ///< Of the contents.
    std::vector<PlotPoint> points;       ///< Comparisons, in the unit of the panel.
};

/// The lower panel: objects compared with a reference.
struct PlotPanel {
    PanelKind kind = PanelKind::None;
    std::string title;
    double level = 0.0;  ///< Where an object equals the reference.
    std::vector<PanelSeries> series;
    std::vector<PlotPoint> band;  ///< The errors of the reference, around the level.
    PlotSpan span;

    bool isDrawn() const { return kind != PanelKind::None; }
};

/// Compares the objects with the reference. Pointers refer to the contents.
///
/// ratio:      y / r, with the error of y divided by r; band: 1 +- error of r / r.
/// difference: y - r, with the error of y; band: +- error of r.
/// pull:       (y - r) / sqrt(error of y squared + error of r squared); no band.
/// A function is taken at the centre of a bin. Where r, or for a pull the error, is 0, there is no comparison.
/// @throws Failure, with the input, if there is nothing to compare, or if bins differ.
PlotPanel panelOf(const PlotContents& contents, const PlotFrame& frame, const PlotStyle& style);

}  // namespace velmorak
