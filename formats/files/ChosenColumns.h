#pragma once

#include <velmorak/FileOpener.h>

#include <memory>
#include <string>
#include <vector>

namespace velmorak {

/// Restricts the tables of files to some of their columns, for formats whose readers provide all of them.
/// @param columns names, in the order that is wanted; empty for all columns.
/// @return an opener that throws a Failure about the input "columns" where a file lacks one of them.
std::shared_ptr<const FileOpener> withColumns(std::shared_ptr<const FileOpener> opener,
                                              std::vector<std::string> columns);

}  // namespace velmorak
