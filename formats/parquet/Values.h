#pragma once

#include "parquet/Leaves.h"

#include <velmorak/Table.h>

namespace velmorak::parquet {

/// Decodes the values of a page, which are dense: missing ones are not in it.
/// @param encoding any but those with a dictionary.
/// @param type     of the column: leaf.type, or real where values are missing.
/// @throws Failure if the bytes are damaged or the encoding does not suit the type.
Column decodeValues(const Leaf& leaf, Encoding encoding, Bytes bytes, std::size_t count, ColumnType type);

/// Decodes positions in a dictionary, and looks them up there.
Column decodePositions(const Column& dictionary, Bytes bytes, std::size_t count);

}  // namespace velmorak::parquet
