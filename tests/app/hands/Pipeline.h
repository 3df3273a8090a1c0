#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

/// What a saved document holds of one plug-in, with its place as the canvas shows it (canvas units, y downwards).
struct SavedNode {
    std::string name;
    double x = 0;
    double y = 0;
    double width = 0;
    bool isExpanded = true;
    std::vector<std::string> shownInputs;
    std::vector<std::string> shownOutputs;
    std::map<std::string, std::string> sources;  ///< Input: "plug-in.output" that feeds it.
};

/// A saved document as the analysis library reads it, the start plug-in first.
struct SavedPipeline {
    /// Empty when there is no such document, or when it is just being written.
    static SavedPipeline read(const std::filesystem::path& file);

    const SavedNode& node(const std::string& name) const;
    std::vector<std::string> names() const;

    std::vector<SavedNode> nodes;
    std::string textAgain;  ///< The library's text of what it read.
};

/// A kind with two inputs and an output at least, to be wired in every way.
struct WiredKind {
    static WiredKind first();

    int number = 0;
    std::string name;
    std::vector<std::string> inputs;
    std::string output;
};
