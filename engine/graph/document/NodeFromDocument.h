#pragma once

#include "graph/ManagerImpl.h"

#include <string>

namespace velmorak {

/// Prints warnings about a document that is read nevertheless: the first twenty, and how many more there are.
class LoadWarnings {
public:
    explicit LoadWarnings(std::string file) : file(std::move(file)) {}
    ~LoadWarnings();
    LoadWarnings(const LoadWarnings&) = delete;
    LoadWarnings& operator=(const LoadWarnings&) = delete;

    /// @param sentence without full stop.
    void add(std::size_t line, const std::string& sentence);

private:
    std::string file;
    std::size_t count = 0;
};

/// Creates the plug-in that a document describes, without wires. It does not yet belong to the manager.
std::unique_ptr<GraphNode> nodeFromDocument(QzManager& manager, const DocumentPlugin& plugin, const std::string& name,
                                            LoadWarnings& notes);

/// Adds a missing output to a plug-in of an unknown kind. @return position of the named output, or -1.
int outputForBinding(QzBase& node, const std::string& output);

}  // namespace velmorak
