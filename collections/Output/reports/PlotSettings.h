#pragma once

#include "Output/plots/script/PlotStyle.h"

#include <velmorak/RunRecord.h>

#include <optional>
#include <string>
#include <vector>

namespace velmorak {

/// An output of a plug-in.
struct ItemSource {
    std::string plugin;
    std::string output;
};

/// How a Plot of the run draws.
struct SettingsInRun {
    std::string plot;  ///< Its name.
    PlotStyle style;
};

/// @return the first Plot of the run that draws all these outputs, and its style with the looks and labels of exactly
///         these, in their order; nothing if there is no such Plot or its values cannot be used.
std::optional<SettingsInRun> settingsInRun(const RunRecord& record, const std::vector<ItemSource>& items);

/// A picture that a Plot of the run has drawn.
struct PictureInRun {
    std::string plot;  ///< Name of the Plot.
    std::string file;  ///< Of the picture, its script and its data in the results folder, without extension.
    PlotStyle style;   ///< Has the size of the picture.
};

/// @return the pictures of all Plots that succeeded, in the order of the record.
std::vector<PictureInRun> picturesInRun(const RunRecord& record);

}  // namespace velmorak
