#pragma once

#include <velmorak/Axis.h>
#include <velmorak/Table.h>

/// Keys that are binned: the key of a row is the lower edge of its bin.
namespace velmorak {

/// @param values reals, single ones.
/// @return lower edges of the bins; -Infinity below the first one, the last edge above, and NaN stays NaN.
ColumnPtr lowerEdges(const Axis& bins, const Column& values);

/// @param lower edges that lowerEdges gave.
/// @return the upper edges of the same bins; Infinity above the last one.
ColumnPtr upperEdges(const Axis& bins, const Column& lower);

}  // namespace velmorak
