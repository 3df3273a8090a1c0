#pragma once

#include <string>
#include <vector>

namespace velmorak {

/// A file that was read, by its content.
struct RecordedFile {
    std::string name;    ///< As the plug-in named it; empty for the AIDA file of the command line.
    std::string sha256;  ///< 64 hexadecimal digits; empty when it cannot be read any more.
};

struct RecordedInput {
    std::string name;
    std::string value;   ///< Text; without meaning where something is wired.
    std::string plugin;  ///< Whose output feeds it; empty where nothing is wired.
    std::string output;
};

struct RecordedPlugin {
    std::string name;
    std::string kind;
    int version = 0;
    std::vector<RecordedInput> inputs;
};

/// What a result was made from: enough to make it again.
struct RunRecord {
    std::string program;                  ///< Version of the analysis library, as in "0.2.0".
    std::vector<RecordedPlugin> plugins;  ///< Each after those that feed it, as far as there is no cycle.
    std::vector<RecordedFile> files;      ///< By name, each once.
};

}  // namespace velmorak
