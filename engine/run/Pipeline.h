#pragma once

#include <velmorak/Kind.h>

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace velmorak {

/// Which output feeds an input.
struct PipelineWire {
    std::size_t node = 0;  ///< Position in Pipeline::nodes.
    std::string output;
};

struct PipelineInput {
    InputSpec spec;
    std::string value;
    std::optional<PipelineWire> wire;
};

struct PipelineNode {
    std::string name;
    std::string kindName;
    const Kind* kind = nullptr;  ///< Null when no collection of this build offers the kind.
    std::vector<PipelineInput> inputs;
    std::vector<OutputSpec> outputs;
    float x = 0.0F;  ///< Lower left corner of the box in canvas units, y upwards.
    float y = 0.0F;
};

/// What a run works on: a copy of the pipeline made when the run begins. Edits made during the run do not reach it.
struct Pipeline {
    std::vector<PipelineNode> nodes;        ///< Element 0 is the start plug-in.
    std::filesystem::path documentFolder;   ///< Where relative input files are looked for first; may be empty.
    std::filesystem::path resultsFolder;    ///< Made when the first result is written.
    bool isResultsFolderChosen = false;     ///< By its name, for this run; else it is the document's, and no link.
    std::filesystem::path commandLineAida;  ///< Empty when none was given.
    std::filesystem::path document{};       ///< Its file; empty for one that was never saved.
    std::string documentText{};             ///< What would be saved now.
    std::vector<std::string> settings{};    ///< PLUGIN.INPUT=VALUE: what was set for this run, for its record.
};

}  // namespace velmorak
