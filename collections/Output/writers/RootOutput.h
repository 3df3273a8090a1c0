#pragma once

#include "NamedObjects.h"

#include <root/write/FileWriter.h>
#include <root/write/TreeWriter.h>

#include <memory>
#include <optional>

namespace velmorak {

/// Contents of a ROOT file.
struct RootContents {
    std::string fileName;
    std::string folder;
    root::Packing packing = root::Packing::Zstd;
    std::vector<NamedObject> objects;
    std::optional<root::TreeLayout> table;
};

/// A ROOT file that is being written. Nothing is on disk before the first call; without complete() the file is removed.
/// Threads: one at a time, except for rowsOf.
class RootOutput {
public:
    RootOutput(RootContents contents, RunContext& context);

    /// Rows of the table as appendRows takes them. Many are compressed here, few with others later.
    /// @throws Failure for a text that a tree cannot hold.
    std::string rowsOf(const Chunk& chunk) const;
    /// @throws Failure if the file cannot be created or written.
    void appendRows(const std::string& rows);
    /// Writes the rest and renames the file to its final name. @throws as appendRows.
    void complete();

private:
    void begin();

    RootContents contents;
    RunContext& context;
    std::unique_ptr<ResultFile> result;
    std::unique_ptr<root::FileWriter> file;
    std::optional<root::TreeWriter> table;
};

}  // namespace velmorak
