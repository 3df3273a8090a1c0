#pragma once

#include "run/Runner.h"

#include <filesystem>
#include <map>
#include <string>

/// The results of a run, as texts that can be compared bit for bit.
namespace velmorak::test {

/// Names, kinds, values and wires.
std::string textOf(const Pipeline& pipeline);

/// Every bit of a value.
std::string bitsOf(const Value& value);

/// By plug-in: its status and all bits of its outputs, except tables, whose rows are not kept.
std::map<std::string, std::string> resultsOf(const Pipeline& pipeline, const RunReport& report);

/// Content of the files, by name in the folder.
std::map<std::string, std::string> filesIn(const std::filesystem::path& folder);

}  // namespace velmorak::test
