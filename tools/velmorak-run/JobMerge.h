#pragma once

#include "Options.h"

#include "run/parts/JobFolder.h"

class StopOnSignal;

/// Makes the results of a job from those of its parts. @throws UsageError
ExitStatus mergeJob(const velmorak::JobFolder& job, const velmorak::JobPlan& plan, const Options& options,
                    StopOnSignal& signals);
