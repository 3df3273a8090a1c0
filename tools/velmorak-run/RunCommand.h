#pragma once

#include "Options.h"

#include <iosfwd>

class StopOnSignal;

/// Carries out the command line.
/// @param output standard output: lists, comparisons, events. @throws UsageError
ExitStatus execute(const Options& options, StopOnSignal& signals, std::ostream& output);
