#pragma once

#include "run/RunState.h"
#include "run/results/ResultCache.h"

#include <cstddef>

namespace velmorak {

/// The record of one result: the plug-in, everything upstream of it, and the files that they read.
RunRecord makeRunRecord(const RunState& state, ResultCache& cache, std::size_t position);

/// The record of the whole run for a run reporter: all plug-ins with their states, and all files.
RunRecord makeReporterRecord(const RunState& state, ResultCache& cache, std::size_t reporter);

/// The files that plug-ins went on without, in the order of the plug-ins.
std::vector<SkippedFile> skippedFiles(const RunState& state);

std::vector<RecordedFile> recordFiles(const std::vector<FileContent>& files);

}  // namespace velmorak
