#pragma once

#include "run/Runner.h"

#include <atomic>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velmorak {

/// Name of the file in the results folder that records how the results were made.
inline constexpr std::string_view runRecordFileName = "run.json";

/// The record of a run as JSON; docs/run-record.md describes it.
/// @param isOver false while the run goes on; this is what remains if the program is killed.
/// @param stopping polled: when the run is asked to end, sums of objects are left out, since large ones take seconds.
std::string runRecordText(const Pipeline& pipeline, const RunReport& report, bool isOver,
                          const std::atomic<bool>& stopping);

/// Writes the text to the record in the results folder. @return empty, or a sentence that says why that failed.
std::string writeRunRecord(const std::filesystem::path& resultsFolder, const std::string& text);

/// The part of a record by which a run is repeated and its results are compared.
struct StoredRunRecord {
    /// Values of numbers and SHA-256 sums of everything else, by title: file "plot.svg", output "sum".
    using Sums = std::map<std::string, std::string>;
    struct Plugin {
        bool isDone = false;  ///< Executed or reused.
        Sums results;
    };

    std::string documentText;
    std::filesystem::path documentFile;  ///< Empty for a pipeline that was never saved.
    std::string aidaFile;
    std::vector<std::string> settings;
    std::vector<FormerFile> files;  ///< All result files that it names, also those of still earlier runs.
    Sums inputs;  ///< Sums of the files that were read, by name; empty for the AIDA file of the command line.
    std::map<std::string, Plugin> plugins;
    std::optional<double> date{};  ///< Of the files that it wrote, in seconds since 1970; old records have none.
};

/// @throws Failure when the file cannot be read or holds no record.
StoredRunRecord readRunRecord(const std::filesystem::path& file);

/// "done", "reused", ...
std::string_view nameOf(NodeStatus status);

}  // namespace velmorak
