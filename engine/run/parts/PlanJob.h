#pragma once

#include "run/parts/JobPlan.h"
#include "run/plan/Pipeline.h"

#include <atomic>
#include <cstddef>
#include <iosfwd>
#include <string>

namespace velmorak {

struct PlanOptions {
    std::size_t parts = 1;    ///< Of each pass, at most.
    std::size_t threads = 0;  ///< For looking at the files; 0: as many as a run has.
    std::string folder{};     ///< For the results, in the results folder; empty for that folder itself.
};

/// Plans one execution of the pipeline and adds it to the job: which passes there are, which files they read, and how
/// each is divided. Looks at the columns of all files, and reads those that are larger than a part to count their rows.
/// @param messages gets warnings of plug-ins.
/// @throws Failure if a plug-in cannot run, or a file cannot be read; Stopped.
void planRun(JobPlan& plan, const Pipeline& pipeline, const PlanOptions& options, std::ostream& messages,
             const std::atomic<bool>& stopping);

/// Brings the parts into the order of their rounds, and fills in program and time. Called once, after planRun.
void completePlan(JobPlan& plan);

}  // namespace velmorak
