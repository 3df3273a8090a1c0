#pragma once

#include "Output/plots/PlotStyle.h"

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

/// @return the style of the first Plot of the run that draws all these outputs, with the looks and labels of exactly
///         these, in their order; nothing if there is no such Plot or its values cannot be used.
std::optional<PlotStyle> styleInRun(const RunRecord& record, const std::vector<ItemSource>& items);

}  // namespace velmorak
