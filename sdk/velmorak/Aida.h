#pragma once

#include "Kind.h"

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// AIDA files, plain or gzip, told apart by content. docs/aida.md says what is read and written.
namespace velmorak {

/// One top-level object of a file.
struct AidaEntry {
    std::string path;     ///< "/" separated, from the root, with its name: "/run1/energy".
    std::string element;  ///< "tuple", "cloud1d", "histogram1d", ...
    Schema schema;        ///< Of a tuple or cloud; else empty.
};

/// Lists the objects of a file without keeping their contents.
/// @throws Failure when the file is missing, is no AIDA file, or is damaged before its first object.
std::vector<AidaEntry> listAida(const std::filesystem::path& file, RunContext& context);

/// Reads one tuple or cloud as a table: a cloud has columns x, y, z as far as it has dimensions, and weight.
/// @param object path of the object; empty for the only tuple or cloud that the file holds.
/// @throws Failure also when there is no such object, with the list of those that there are. next throws Failure, with
///         row and byte position, where the file is damaged.
std::unique_ptr<TableReader> openAidaTable(const std::filesystem::path& file, const std::string& object,
                                           RunContext& context);

/// Writes objects into one file, in the order of the calls. Numbers read back to the last bit.
class AidaFileWriter {
public:
    /// @throws Failure when the file cannot be made.
    explicit AidaFileWriter(const std::filesystem::path& file);
    ~AidaFileWriter();

    /// @param folder path of the object without its name, "/" for the root.
    void write(const Histogram1D& histogram, const std::string& folder);
    /// A table is begun, written chunk by chunk and ended; nothing else may be written in between. A list column
    /// becomes a nested tuple of one column.
    /// @throws Failure for a column that no such file can name: with "=" in its name, or blanks at an end.
    void beginTable(const std::string& name, const std::string& title, const std::string& folder, const Schema& schema);
    void writeRows(const Chunk& chunk);
    /// @param rows what aidaRows made of chunks of the table, one after the other.
    void writeRows(std::string_view rows);
    void endTable();
    /// Completes the file. @throws Failure when it could not be written, for example on a full disk.
    void close();

private:
    struct Part;
    std::unique_ptr<Part> part;
};

/// A chunk's rows as they stand between <rows> and </rows>; may be called by several threads at once.
std::string aidaRows(const Schema& schema, const Chunk& chunk);

}  // namespace velmorak
