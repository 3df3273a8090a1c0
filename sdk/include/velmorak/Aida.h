#pragma once

#include <velmorak/Kind.h>

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

/// An object of a file that is no table.
struct AidaObject {
    std::string path;
    std::string element;   ///< "histogram1d", ...; of a cloud that was converted that of its histogram.
    DataObjectPtr object;  ///< Null for a table, and where the object cannot be made.
    std::size_t bins = 0;  ///< That the file lists.
};

/// Reads every histogram, profile, set of points and function of a file. An object that cannot be read is told as a
/// warning, with place and reason, and so is damage: what is complete before it is kept.
/// @throws Failure when the file is missing, is no AIDA file, or is damaged before its first object is complete.
std::vector<AidaObject> readAidaObjects(const std::filesystem::path& file, RunContext& context);

/// Reads one object of a type: a Histogram1D, Histogram2D or Histogram3D, a Profile1D or Profile2D, Points, or a
/// FunctionObject.
/// @param path of the object, or its bare name; empty for the only object of the type that the file holds.
/// @throws Failure also when there is no such object, or there are several, with the list of those that fit.
DataObjectPtr readAidaObject(const std::filesystem::path& file, const std::string& path, ValueType type,
                             RunContext& context);

/// Writes objects into one file, in the order of the calls. Numbers read back to the last bit.
class AidaFileWriter {
public:
    /// @throws Failure when the file cannot be made.
    explicit AidaFileWriter(const std::filesystem::path& file);
    ~AidaFileWriter();

    /// @param folder path of the object without its name, "/" for the root.
    void write(const Histogram1D& histogram, const std::string& folder);
    /// A histogram of any dimensions, a profile, points or a function.
    /// @throws Failure for an object of another class.
    void write(const DataObject& object, const std::string& folder);
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
    struct Impl;
    std::unique_ptr<Impl> part;
};

/// A chunk's rows as they stand between <rows> and </rows>; may be called by several threads at once.
std::string aidaRows(const Schema& schema, const Chunk& chunk);

}  // namespace velmorak
