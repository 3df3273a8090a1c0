#pragma once

#include "Keeper.h"
#include "RunState.h"

#include <cstddef>

namespace velmorak {

/// What a plug-in's result is made from.
RunRecord recordOf(const RunState& state, Keeper& keeper, std::size_t position);

/// One plug-in as the pipeline has it.
RecordedPlugin recordOf(const RunState& state, std::size_t position);

std::vector<RecordedFile> recorded(const std::vector<FileContent>& files);

}  // namespace velmorak
