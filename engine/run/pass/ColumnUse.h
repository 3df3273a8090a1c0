#pragma once

#include "run/RunState.h"
#include "run/pass/OperatorChain.h"
#include "run/pass/SourceSet.h"

namespace velmorak {

/// Works out, from the last operators of a pass back to its sources, which columns of each table are used, and tells
/// the sources and operators. Without operators, and where the rows of an operator are the result, all are.
/// @param sources that are open. @param chain that is prepared; operators that fail here are dropped.
void selectColumns(RunState& state, SourceSet& sources, OperatorChain& chain);

}  // namespace velmorak
