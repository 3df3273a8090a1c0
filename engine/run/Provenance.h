#pragma once

#include "run/ResultCache.h"
#include "run/RunState.h"

#include <cstddef>

namespace velmorak {

/// What a plug-in's result is made from.
RunRecord recordOf(const RunState& state, ResultCache& cache, std::size_t position);

/// All plug-ins of the run and how they have ended, for one that tells of it.
RunRecord recordOfRun(const RunState& state, ResultCache& cache, std::size_t reporter);

/// One plug-in as the pipeline has it.
RecordedPlugin recordOf(const RunState& state, std::size_t position);

std::vector<RecordedFile> recorded(const std::vector<FileContent>& files);

}  // namespace velmorak
