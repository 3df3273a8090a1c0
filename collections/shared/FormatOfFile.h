#pragma once

#include <velmorak/FileFormat.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

/// Recognises files for kinds.
namespace velmorak {

/// @throws Failure if a file is not to be opened.
using FileCheck = std::function<void(const std::filesystem::path& file)>;

/// @return an opener that checks each file before it opens it.
std::shared_ptr<const FileOpener> checkedOpener(std::shared_ptr<const FileOpener> opener, FileCheck check);

/// @return an opener that first refuses files which certainly have another format than the kind reads, and says which
///         kind to use: "x.db is an SQLite database; use SqliteTable or Table".
/// @param formats outlives the opener.
std::shared_ptr<const FileOpener> refusingOthers(std::shared_ptr<const FileOpener> opener, const std::string& kind,
                                                 const FileFormats& formats);

/// The rows of a table, by reading it to its end.
std::uint64_t countRows(TableReader& reader, const RunContext& context);

/// A table whose columns can all be read.
FileObject tableObject(std::string path, std::string type, std::uint64_t rows, const Schema& schema);

}  // namespace velmorak
