#pragma once

#include "Options.h"
#include "Settings.h"

#include "graph/ManagerExtensions.h"
#include "run/parts/JobPlan.h"

#include <QzManager.h>
#include <velmorak/Failure.h>

#include <filesystem>

class StopOnSignal;

/// Reports failures of the library as mistakes in the command line or its files.
template <typename Work>
auto orUsageError(const Work& work) {
    try {
        return work();
    } catch (const velmorak::Failure& failure) {
        throw UsageError(failure.what());
    }
}

/// A manager with the pipeline of one of the plan's runs.
class PlannedPipeline {
public:
    /// @throws UsageError if the pipeline is not as it was planned.
    PlannedPipeline(const velmorak::JobPlan& plan, const velmorak::PlannedRun& run, const Options& options,
                    const velmorak::MovedFiles& moved);

    const velmorak::RunReport& run(StopOnSignal& signals, velmorak::PassRunner& passRunner,
                                   const std::filesystem::path& results);

    QzManager manager{"QzAnalysisFactory"};
};
