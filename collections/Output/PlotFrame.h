#pragma once

#include "PlotContents.h"

namespace velmorak {

/// Part of an axis that is shown, in its unit.
struct PlotSpan {
    double low = 0.0;
    double high = 1.0;

    bool contains(double value) const { return value >= low && value <= high; }
};

/// A box in the upper corners of the frame; all in parts of the frame's width and height.
struct PlotCorner {
    bool isLeft = false;
    double width = 0.0;
    double height = 0.0;
};

struct PlotFrame {
    PlotSpan x;
    PlotSpan y;
    PlotSpan z;
    double ground = 0.0;  ///< Where the steps of a histogram stand.
};

/// The axes around all that is drawn, high enough that the boxes in the corners hide nothing. Curves take their samples
/// within it.
/// @throws Failure, with the input, if a range is empty, or has nothing above 0 where the axis is logarithmic.
PlotFrame frameOf(PlotContents& contents, const PlotStyle& style, const std::vector<PlotCorner>& corners);

}  // namespace velmorak
