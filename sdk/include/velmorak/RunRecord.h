#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace velmorak {

/// A file that the run read, identified by its content.
struct RecordedFile {
    std::string name;         ///< As given to the plug-in; empty for the AIDA file of the command line.
    std::string sha256;       ///< 64 hexadecimal digits; empty if the file is no longer readable.
    std::uint64_t bytes = 0;  ///< Set only for a kind that isRunReporter().
};

/// A file that a plug-in should have read and went on without.
struct SkippedFile {
    std::string plugin;
    std::string file;  ///< Path.
    std::string reason;
};

/// A result file of an earlier run.
struct FormerFile {
    std::string plugin;  ///< That made it.
    std::string file;    ///< Its name in the results folder.

    bool operator==(const FormerFile&) const = default;
};

struct RecordedInput {
    std::string name;
    std::string value;   ///< Its text; meaningless if the input is wired.
    std::string plugin;  ///< The plug-in that feeds it; empty if it is not wired.
    std::string output;
    bool isSeed = false;  ///< As InputSpec::isSeed.
};

/// How a plug-in ended. Done covers execution as well as reuse of a cached result.
enum class RecordedState { NotRequested, Done, Failed, NotRun, Unfinished };

struct RecordedPlugin {
    std::string name;
    std::string kind;
    int version = 0;
    std::vector<RecordedInput> inputs;
    /// From here on, set only for a kind that isRunReporter().
    std::vector<std::string> outputs{};
    float x = 0.0F;  ///< Lower left corner of the box in canvas units, y upwards.
    float y = 0.0F;
    RecordedState state = RecordedState::NotRequested;
    std::string sentence{};  ///< The reason why it failed or was not run.
};

/// The provenance of a result: enough to reproduce it.
struct RunRecord {
    /// File name of the document, without folder; empty for a pipeline without one. Set only for a kind that
    /// isRunReporter(), as is the hash.
    std::string document{};
    std::string documentSha256{};         ///< Of the document's text at the start of the run: 64 hexadecimal digits.
    std::string program;                  ///< Version of the analysis library, as in "0.2.0".
    std::vector<RecordedPlugin> plugins;  ///< In topological order, except within dependency cycles.
    std::vector<RecordedFile> files;      ///< Sorted by name, each once.
    std::vector<FormerFile> former{};     ///< Set only for a run reporter: not made again, now in the folder "former".
    std::vector<SkippedFile> skipped{};   ///< Set only for a run reporter. Without a file: why results are partial.
};

}  // namespace velmorak
