#pragma once

#include "run/plan/Pipeline.h"

#include <cstddef>
#include <iosfwd>

/// Prints each plug-in with its kind, and its inputs with type and value or with the output that feeds them.
void printPlugins(const velmorak::Pipeline& pipeline, std::ostream& stream);

/// Prints what makes plug-ins of the pipeline impossible to run, without running anything.
/// @return number of plug-ins with an error.
std::size_t printErrors(const velmorak::Pipeline& pipeline, std::ostream& stream);
