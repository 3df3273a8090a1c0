#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

/// One plug-in of a saved document, at its position on the canvas (canvas units, y downwards).
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
    /// Empty if there is no such document, or while it is being written.
    static SavedPipeline read(const std::filesystem::path& file);

    const SavedNode& node(const std::string& name) const;
    std::vector<std::string> names() const;

    std::vector<SavedNode> nodes;
    std::string textAgain;  ///< The library's text of the document that it has read.
};

/// A kind with at least two inputs and one output.
struct WiredKind {
    static WiredKind first();

    int number = 0;
    std::string name;
    std::vector<std::string> inputs;
    std::string output;
};
