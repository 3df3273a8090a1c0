#pragma once

#include "numpy/write/RowStore.h"

#include <velmorak/Run.h>

#include <iosfwd>

namespace velmorak::numpy {

/// Writes an array of records (.npy) with a field for each column. Lists must all have the same length.
/// @throws Failure with the column that cannot be a field; Stopped.
void writeRecords(RowStore& rows, std::ostream& out, const RunContext& context);

/// Writes an archive (.npz) with an array for each column. A column of lists has a second one, NAME.offsets: the list
/// of row i has the values [offsets[i], offsets[i + 1]) of the array NAME.
/// @param out can seek. @throws Failure with the column that cannot be an array; Stopped.
void writeArchive(RowStore& rows, std::ostream& out, bool deflates, const RunContext& context);

}  // namespace velmorak::numpy
