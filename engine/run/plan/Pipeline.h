#pragma once

#include "run/KindConfig.h"

#include <velmorak/Kind.h>

#include <cstddef>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace velmorak {

/// The output that feeds an input.
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
    const Kind* kind = nullptr;  ///< Null if no collection provides the kind.
    std::vector<PipelineInput> inputs;
    std::vector<OutputSpec> outputs;
    float x = 0.0F;  ///< Lower left corner of the box in canvas units, y upwards.
    float y = 0.0F;
};

/// Files that are elsewhere than they were when the run was planned.
struct MovedFiles {
    std::filesystem::path folder;                         ///< In which the planner was started.
    std::map<std::string, std::filesystem::path> places;  ///< By absolute path.
};

/// The input of a run: a copy of the pipeline, made when the run begins, so that edits during the run cannot race.
struct Pipeline {
    std::vector<PipelineNode> nodes;       ///< Element 0 is the start plug-in.
    std::filesystem::path documentFolder;  ///< Searched first for relative input files; may be empty.
    std::filesystem::path resultsFolder;   ///< Created when the first result is written.
    bool isResultsFolderChosen =
        false;                      ///< Named by the user for this run; else the document's, which must not be a link.
    bool mayWriteAnywhere = false;  ///< Results may also be outside of the results folder.
    std::filesystem::path commandLineAida;  ///< Empty without one.
    std::filesystem::path document{};       ///< Path; empty for one that was never saved.
    std::string documentText{};             ///< As it would be saved now.
    std::vector<std::string> settings{};    ///< PLUGIN.INPUT=VALUE: values set for this run, for its record.
    std::string partial{};                  ///< Which rows the results lack, as a sentence without its end.
    MovedFiles moved{};                     ///< Of a planned run.
    KindConfig kinds{};
};

}  // namespace velmorak
