#pragma once

#include "run/Runner.h"

#include <filesystem>
#include <string>
#include <string_view>

namespace velmorak {

/// Name of the file in the results folder that says how its results were made.
inline constexpr std::string_view runFileName = "run.json";

/// What a run was and what became of it, as JSON. docs/run-record.md describes it.
/// @param isOver false while the run goes on: should the program be killed, this is what remains.
std::string runFileText(const Pipeline& pipeline, const RunReport& report, bool isOver);

/// Puts the text into the results folder. @return empty, or why that cannot be done, as a sentence.
std::string writeRunFile(const std::filesystem::path& resultsFolder, const std::string& text);

/// "done", "reused", ...
std::string_view nameOf(NodeStatus status);

}  // namespace velmorak
