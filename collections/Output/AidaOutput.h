#pragma once

#include <velmorak/Aida.h>
#include <velmorak/Run.h>

namespace velmorak {

/// What goes into one AIDA file, in order.
struct AidaContents {
    struct Object {
        std::string name;
        DataObjectPtr object;  ///< Null for the table.
    };
    std::string fileName;
    std::string folder;
    std::vector<Object> objects;
    Schema schema;  ///< Of the table, if there is one.
};

/// A file in the making. Nothing is on disk before the first call, and nothing stays there without complete().
/// Threads: one at a time.
class AidaOutput {
public:
    AidaOutput(AidaContents whatToWrite, RunContext& run);

    const Schema& schema() const { return contents.schema; }
    /// Rows of the table as aidaRows made them. @throws Failure if the file cannot be made.
    void appendRows(const std::string& rows);
    /// Writes what is left and gives the file its name. @throws Failure if that cannot be done.
    void complete();

private:
    void begin();
    void writeObjectsUpToTable();

    AidaContents contents;
    RunContext& context;
    std::size_t next = 0;  ///< Position of the first object that is not written or begun.
    bool isInTable = false;
    std::unique_ptr<ResultFile> file;
    std::unique_ptr<AidaFileWriter> writer;
};

}  // namespace velmorak
