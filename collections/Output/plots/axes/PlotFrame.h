#pragma once

#include "Output/plots/contents/PlotContents.h"

namespace velmorak {

/// Range of an axis, in its unit.
struct PlotSpan {
    double low = 0.0;
    double high = 1.0;

    bool contains(double value) const { return value >= low && value <= high; }
};

struct PlotFrame {
    PlotSpan x;
    PlotSpan y;
    PlotSpan z;
    double ground = 0.0;  ///< Base line of histograms drawn as steps.
};

/// Determines axes around all series, and samples the curves within them.
/// @throws Failure, with the input, if a range is empty, or has no value above 0 for a logarithmic axis.
PlotFrame frameOf(PlotContents& contents, const PlotStyle& style);

/// Positions along an axis as drawn: logarithms on a logarithmic axis.
double positionAlong(double value, bool hasLog);
double valueAtPosition(double position, bool hasLog);

/// Moves the upper end of the vertical axis to a position, rounded to few digits.
void raise(PlotFrame& frame, double position, bool hasLog);

}  // namespace velmorak
