#pragma once

#include <velmorak/Fit.h>
#include <velmorak/Value.h>

namespace velmorak {

/// What a fit is made to: the bins of a one-dimensional histogram or profile, or points of x and y.
/// @param isCounted only a histogram will do.
/// @throws Failure about the input "data" for anything else.
FitData entriesOf(const Value& value, bool isCounted);

}  // namespace velmorak
