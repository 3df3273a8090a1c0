#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace velmorak {

/// A file that was read, by its content.
struct RecordedFile {
    std::string name;         ///< As the plug-in named it; empty for the AIDA file of the command line.
    std::string sha256;       ///< 64 hexadecimal digits; empty when it cannot be read any more.
    std::uint64_t bytes = 0;  ///< Known only to a kind that tells of the run.
};

struct RecordedInput {
    std::string name;
    std::string value;   ///< Text; without meaning where something is wired.
    std::string plugin;  ///< Whose output feeds it; empty where nothing is wired.
    std::string output;
};

/// How a plug-in ended. Whether it was executed or its stored result was still right makes no difference.
enum class RecordedState { NotRequested, Done, Failed, NotRun, Unfinished };

struct RecordedPlugin {
    std::string name;
    std::string kind;
    int version = 0;
    std::vector<RecordedInput> inputs;
    /// What follows is known only to a kind that tells of the run.
    std::vector<std::string> outputs{};
    float x = 0.0F;  ///< Lower left corner of the box in canvas units, y upwards.
    float y = 0.0F;
    RecordedState state = RecordedState::NotRequested;
    std::string sentence{};  ///< Why it failed or was not run.
};

/// What a result was made from: enough to make it again.
struct RunRecord {
    /// File name of the document, without folder; empty for a pipeline without one. Known only to a kind that tells of
    /// the run, as is the sum.
    std::string document{};
    std::string documentSha256{};         ///< Of the document's text as it was run: 64 hexadecimal digits.
    std::string program;                  ///< Version of the analysis library, as in "0.2.0".
    std::vector<RecordedPlugin> plugins;  ///< Each after those that feed it, as far as there is no cycle.
    std::vector<RecordedFile> files;      ///< By name, each once.
};

}  // namespace velmorak
