#pragma once

#include "aida/text/XmlReader.h"

#include <filesystem>
#include <memory>
#include <string>

#include <velmorak/Kind.h>

namespace velmorak::io {

/// As openAidaTable of the SDK, with the choice of how rows are read. Both ways give the same rows, warnings and
/// failures.
std::unique_ptr<TableReader> openAidaTable(const std::filesystem::path& file, const std::string& object,
                                           RunContext& context, RowReading reading);

}  // namespace velmorak::io
