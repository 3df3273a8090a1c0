#pragma once

#include "Output/plots/script/PlotPanel.h"

#include <cstddef>

namespace velmorak {

/// The numbers of a picture as text, in blocks, and where each part is in it.
struct PlotData {
    std::string text;
    std::vector<std::size_t> series;    ///< First block of each series; the second one follows.
    std::size_t stack = 0;              ///< The sum of the stack with its errors.
    std::vector<std::size_t> contours;  ///< Of each object with contours.
    std::size_t panelBand = 0;          ///< The errors of the reference.
    std::vector<std::size_t> panel;     ///< Of each compared object; what lies outside of the panel follows.
    std::size_t end = 0;                ///< The number of the next block.
};

/// Curves and contours must have been sampled. Numbers outside of the frame are moved to its edge.
/// @param first number of the first block, which those of other frames come before.
PlotData plotData(const PlotContents& contents, const PlotFrame& frame, const PlotPanel& panel, std::size_t first = 0);

}  // namespace velmorak
