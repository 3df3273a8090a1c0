#pragma once

#include "run/Runner.h"

#include <filesystem>
#include <map>
#include <string>

/// What a run gave, as texts that can be compared bit for bit.
namespace velmorak::test {

/// Names, kinds, values and wires.
std::string textOf(const Pipeline& pipeline);

/// Every bit of a value.
std::string bitsOf(const Value& value);

/// By plug-in: how it ended, and all bits of what it gave. Of a table nothing, for its rows are not kept.
std::map<std::string, std::string> resultsOf(const Pipeline& pipeline, const RunReport& report);

/// By name in the folder: content.
std::map<std::string, std::string> filesIn(const std::filesystem::path& folder);

}  // namespace velmorak::test
