#pragma once

#include <velmorak/StateBytes.h>
#include <velmorak/Table.h>

#include <vector>

/// Columns as part of the bytes of a state.
namespace velmorak {

void saveColumns(const std::vector<ColumnPtr>& columns, StateWriter& writer);

/// Reads what saveColumns wrote. Offsets of lists ascend from 0 to the number of values.
/// @throws Failure if the bytes are not such columns.
std::vector<ColumnPtr> loadColumns(StateReader& reader);

}  // namespace velmorak
