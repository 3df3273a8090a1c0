#pragma once

#include "run/Pipeline.h"

#include <iosfwd>

/// Writes each plug-in with its kind, and its inputs with type and value or with what feeds them.
void list(const velmorak::Pipeline& pipeline, std::ostream& stream);

/// Says what could not run, without running anything.
/// @return false when something was said.
bool check(const velmorak::Pipeline& pipeline, std::ostream& stream);
