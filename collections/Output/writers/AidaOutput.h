#pragma once

#include "NamedObjects.h"

#include <velmorak/Aida.h>
#include <velmorak/Run.h>

namespace velmorak {

/// Contents of an AIDA file, in order.
struct AidaContents {
    std::string fileName;
    std::string folder;
    std::vector<NamedObject> objects;
    Schema schema;  ///< Of the table, if there is one.
};

/// An AIDA file that is being written. Nothing is on disk before the first call; without complete() the file is
/// removed. Threads: one at a time.
class AidaOutput {
public:
    AidaOutput(AidaContents contents, RunContext& context);

    const Schema& schema() const { return contents.schema; }
    /// Appends rows of the table, as formatted by aidaRows. @throws Failure if the file cannot be created.
    void appendRows(const std::string& rows);
    /// Writes the rest and renames the file to its final name. @throws Failure if that fails.
    void complete();

private:
    void begin();
    void writeObjectsUpToTable();

    AidaContents contents;
    RunContext& context;
    std::size_t next = 0;  ///< Position of the first object that is not yet written or begun.
    bool isInTable = false;
    std::unique_ptr<ResultFile> file;
    std::unique_ptr<AidaFileWriter> writer;
};

}  // namespace velmorak
