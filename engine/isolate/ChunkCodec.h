#pragma once

#include "isolate/Message.h"

#include <velmorak/Table.h>

#include <vector>

namespace velmorak::isolation {

/// Writes everything but the owner. The numbers of a column are copied once.
/// @param known columns that the other side has: only their positions are written.
void writeChunk(MessageWriter& message, const Chunk& chunk, const std::vector<ColumnPtr>& known = {});
/// @param known the same columns on this side.
Chunk readChunk(MessageReader& message, const std::vector<ColumnPtr>& known = {});

}  // namespace velmorak::isolation
