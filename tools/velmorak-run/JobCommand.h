#pragma once

#include "Options.h"

#include <QzManager.h>

#include <iosfwd>

class StopOnSignal;

/// Plans a job: the pipeline that the manager holds, divided into parts. @throws UsageError
ExitStatus planJob(QzManager& manager, const Options& options, StopOnSignal& signals, std::ostream& output);

/// Carries out --part, --merge or --status. @throws UsageError
/// @param output standard output: the status.
ExitStatus workOnJob(const Options& options, StopOnSignal& signals, std::ostream& output);
