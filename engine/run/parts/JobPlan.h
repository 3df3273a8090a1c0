#pragma once

#include "run/pass/PassRange.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace velmorak {

/// An input file as it was when the job was planned. Its content is summed by the part that reads it.
struct PlannedFile {
    std::string path;  ///< Empty for a table that comes from no file.
    std::uint64_t bytes = 0;
    std::int64_t modifiedNs = 0;
    std::string place{};   ///< In a bundle: path relative to the folder of the job.
    std::string sha256{};  ///< In a bundle, where a copy may have another time.
};

/// One pass over the rows of a table.
struct PlannedPass {
    unsigned round = 1;                ///< After those rounds whose results it needs.
    std::vector<std::string> targets;  ///< Plug-ins that it computes.
    std::vector<std::size_t> needs;    ///< Earlier passes whose results it needs.
    std::vector<PlannedFile> files;    ///< In the order of the rows.
};

/// A plug-in whose rows are read when the parts are merged.
struct LeftToMerge {
    std::string plugin;
    std::string reason;  ///< "cuts" counts the rows before each row.
};

/// What one execution of the document computes. A scan has one for each of its values.
struct PlannedRun {
    std::string documentText;           ///< With the settings.
    std::vector<std::string> settings;  ///< PLUGIN.INPUT=VALUE
    std::string folder;                 ///< In the results folder; empty for the results folder itself.
    std::vector<PlannedPass> passes;
    std::vector<LeftToMerge> leftToMerge;
    std::vector<PlannedFile> otherFiles;                       ///< Lists of files, for example.
    std::map<std::string, std::vector<std::string>> listings;  ///< Names in folders, by FolderListing.
    /// Answers to factOf, by plug-in and name.
    std::map<std::pair<std::string, std::string>, std::string> facts{};
};

/// A share of a pass.
struct PlannedPart {
    std::size_t run = 0;
    std::size_t pass = 0;  ///< Of the run.
    PassRange range;
};

/// What all processes of a job agree on. Parts are numbered from 1, those of earlier rounds first.
struct JobPlan {
    std::string program;                        ///< Version of the library.
    std::map<std::string, std::string> builds;  ///< Of the kinds, by name.
    std::string time;                           ///< When it was made.
    std::string document;                       ///< Path.
    std::string aidaFile;                       ///< Of the command line; empty without one.
    std::string folder;                         ///< In which the planner was started.
    std::string resultsFolder;                  ///< Empty for the one beside the document.
    std::vector<PlannedRun> runs;
    std::vector<PlannedPart> parts;
    std::string digest{};  ///< Of everything above.

    const PlannedPass& passOf(const PlannedPart& part) const { return runs[part.run].passes[part.pass]; }
    unsigned roundOf(std::size_t part) const { return passOf(parts[part]).round; }
    /// Positions of the parts of a pass, in the order of their rows.
    std::vector<std::size_t> partsOf(std::size_t run, std::size_t pass) const;
};

/// The path of an input file as plans have it.
std::string plannedPath(const std::filesystem::path& file);

/// Writes the plan, which gets its digest.
/// @throws Failure if it cannot be written.
void writePlan(const std::filesystem::path& file, JobPlan& plan);

/// @throws Failure if the file cannot be read, or is not a plan as writePlan leaves it.
JobPlan readPlan(const std::filesystem::path& file);

}  // namespace velmorak
