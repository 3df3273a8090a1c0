#pragma once

#include "Options.h"

#include <iosfwd>

class StopOnSignal;

/// Does what the command line asks for.
/// @param output for what is asked for on standard output. @throws UsageError
ExitStatus execute(const Options& order, StopOnSignal& signals, std::ostream& output);
