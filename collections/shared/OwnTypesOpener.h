#pragma once

#include <velmorak/FileOpener.h>

#include <filesystem>
#include <functional>
#include <memory>

namespace velmorak {

/// Opens the table of a file.
using OpenTable = std::function<std::unique_ptr<TableReader>(const std::filesystem::path& file, RunContext& context)>;

/// An opener for a format whose files alone decide on the types of the columns.
std::shared_ptr<const FileOpener> openerWith(OpenTable open);

}  // namespace velmorak
