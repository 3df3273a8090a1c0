#pragma once

#include "graph/ManagerImpl.h"

#include <string>

namespace velmorak {

/// What is worth saying about a document that is read nevertheless. A damaged document may give cause for any number
/// of lines; only the first ones are said.
class LoadNotes {
public:
    explicit LoadNotes(std::string documentFile) : file(std::move(documentFile)) {}
    ~LoadNotes();
    LoadNotes(const LoadNotes&) = delete;
    LoadNotes& operator=(const LoadNotes&) = delete;

    /// @param sentence without full stop.
    void add(std::size_t line, const std::string& sentence);

private:
    std::string file;
    std::size_t count = 0;
};

/// The plug-in that a document describes, without bindings, not yet among the manager's.
std::unique_ptr<GraphNode> nodeFromDocument(QzManager& manager, const DocumentPlugin& plugin, const std::string& name,
                                            LoadNotes& notes);

/// @return position of the named output; a plug-in of an unknown kind gets one that it lacks. -1 when there is none.
int outputForBinding(QzBase& node, const std::string& output);

}  // namespace velmorak
