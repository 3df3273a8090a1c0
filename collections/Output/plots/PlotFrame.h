#pragma once

#include "PlotContents.h"

namespace velmorak {

/// Range of an axis, in its unit.
struct PlotSpan {
    double low = 0.0;
    double high = 1.0;

    bool contains(double value) const { return value >= low && value <= high; }
};

/// A box in an upper corner of the frame, in fractions of the frame's width and height.
struct PlotCorner {
    bool isLeft = false;
    double width = 0.0;
    double height = 0.0;
};

struct PlotFrame {
    PlotSpan x;
    PlotSpan y;
    PlotSpan z;
    double ground = 0.0;  ///< Base line of histograms drawn as steps.
};

/// Determines axes around all series, high enough that the boxes in the corners hide nothing. Samples the curves
/// within them.
/// @throws Failure, with the input, if a range is empty, or has no value above 0 for a logarithmic axis.
PlotFrame frameOf(PlotContents& contents, const PlotStyle& style, const std::vector<PlotCorner>& corners);

}  // namespace velmorak
