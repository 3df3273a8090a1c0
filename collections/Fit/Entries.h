#pragma once

#include <velmorak/Fit.h>
#include <velmorak/Value.h>

namespace velmorak {

/// The data of a fit: the bins of a one-dimensional histogram or profile, or points with x and y.
/// @param isCounted accept a histogram only.
/// @throws Failure for the input "data" if it is anything else.
FitData entriesOf(const Value& value, bool isCounted);

}  // namespace velmorak
