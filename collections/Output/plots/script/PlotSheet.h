#pragma once

#include "Output/plots/script/PlotLayout.h"

#include <string>
#include <vector>

namespace velmorak {

/// What a picture shows: one frame, or a grid of frames, one for each key of lists of histograms.
struct PlotSheet {
    struct Frame {
        PlotContents contents;
        PlotStyle style;
    };
    std::vector<Frame> frames;  ///< At least one.

    // Of a grid:
    std::string title;
    std::vector<std::string> notes;  ///< Lines below all frames.
    PlotLayout layout;               ///< The margins around all frames.

    bool isGrid() const { return frames.front().style.place.has_value(); }
    /// For the user, each once.
    std::vector<std::string> warnings() const;
};

/// @param missing lines about objects that are not there.
/// @throws Failure, with the input, for an object that cannot be drawn, or not together with the others.
PlotSheet plotSheet(const std::vector<PlotObject>& objects, const PlotStyle& style,
                    const std::vector<std::string>& missing = {});

}  // namespace velmorak
