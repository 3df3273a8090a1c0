#pragma once

#include "columnar/ColumnSource.h"

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// Files and streams of Arrow (IPC), also known as Feather 2, as tables. See docs/arrow.md.
namespace velmorak {

/// Whether a file that begins with these bytes is an Arrow file, or an Arrow stream.
bool isArrowFile(std::string_view firstBytes);
bool isArrowStream(std::string_view firstBytes);

/// @throws Failure if the file is missing or is not of Arrow.
columnar::TableSummary summariseArrow(const std::filesystem::path& file);

/// Opens a file. Batches are decoded when a chunk is completed, on any thread.
/// @param columns names of the columns to provide, in this order; empty for all that can be read.
/// @param wanted  where it has an integer or boolean column as reals, so do the chunks; may be null.
/// @throws Failure also if there is no such column, with a list of the existing ones, and for a column that cannot be
///         read, with the reason.
std::unique_ptr<TableReader> openArrow(const std::filesystem::path& file, const std::vector<std::string>& columns,
                                       const Schema* wanted, RunContext& context);

}  // namespace velmorak
