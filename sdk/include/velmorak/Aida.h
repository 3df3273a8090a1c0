#pragma once

#include <velmorak/Kind.h>

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// Reads and writes AIDA files, plain or compressed, recognised by content. docs/aida.md lists the supported features.
namespace velmorak {

/// A table or object of a file, as its listing shows it.
struct AidaEntry {
    std::string path;     ///< Absolute, with the name of the object: "/run1/energy".
    std::string element;  ///< "tuple", "cloud1d", "histogram1d", ...
    Schema schema;        ///< Empty unless the entry is a tuple or cloud.
};

/// Lists the objects of a file without keeping their contents.
/// @throws Failure if the file is missing, is not an AIDA file, or is damaged before its first object.
std::vector<AidaEntry> listAida(const std::filesystem::path& file, RunContext& context);

/// Reads one tuple or cloud as a table. A cloud has a column for each dimension (x, y, z) and a column weight.
/// @param object path of the object; empty if the file holds only one tuple or cloud.
/// @throws Failure also if the file has no such object; the message lists the existing ones. TableReader::next throws
///         Failure with row and byte position where the file is damaged.
std::unique_ptr<TableReader> openAidaTable(const std::filesystem::path& file, const std::string& object,
                                           RunContext& context);

/// @param object as in openAidaTable: a path, or a bare name, or empty.
/// @return the path of the table that openAidaTable opens. A path is returned as it is, without a look at the file.
/// @throws as openAidaTable.
std::string aidaTablePath(const std::filesystem::path& file, const std::string& object, RunContext& context);

/// An object of a file other than a table.
struct AidaObject {
    std::string path;
    std::string element;   ///< "histogram1d", ...; for a cloud that was converted, the element of its histogram.
    DataObjectPtr object;  ///< Null for a table, and for an object that cannot be read.
    std::size_t bins = 0;  ///< Number of bins that the file lists.
};

/// Reads every histogram, profile, point set and function of a file. An unreadable object and damage to the file are
/// reported as warnings with position and reason; objects that are complete before the damage are kept.
/// @throws Failure if the file is missing, is not an AIDA file, or is damaged before its first object is complete.
std::vector<AidaObject> readAidaObjects(const std::filesystem::path& file, RunContext& context);

/// Reads one object of a type: a Histogram1D, Histogram2D or Histogram3D, a Profile1D or Profile2D, Points, or a
/// FunctionObject.
/// @param path path of the object, or its bare name; empty if the file holds only one object of the type.
/// @throws Failure also if no object or more than one matches; the message lists the candidates.
DataObjectPtr readAidaObject(const std::filesystem::path& file, const std::string& path, ValueType type,
                             RunContext& context);

/// Writes objects to one file, in the order of the calls. Numbers read back with the same bits.
class AidaFileWriter {
public:
    /// @throws Failure if the file cannot be created.
    explicit AidaFileWriter(const std::filesystem::path& file);
    ~AidaFileWriter();

    /// Writes an object of any class listed in DataObjects.h.
    /// @param folder folder of the object within the file; "/" is the root.
    /// @throws Failure for an object of another class.
    void write(const DataObject& object, const std::string& folder);
    /// Begins a table. Its rows follow chunk by chunk, then endTable; nothing else may be written in between. A list
    /// column becomes a nested tuple of one column.
    /// @throws Failure if an AIDA file cannot hold the name of a column: it is empty, contains "=", or starts or ends
    ///         with blanks.
    void beginTable(const std::string& name, const std::string& title, const std::string& folder, const Schema& schema);
    void writeRows(const Chunk& chunk);
    /// @param rows the texts that aidaRows returned for chunks of the table, in chunk order.
    void writeRows(std::string_view rows);
    void endTable();
    /// Completes the file. @throws Failure if it could not be written, for example because the disk is full.
    void close();

private:
    struct Impl;
    std::unique_ptr<Impl> part;
};

/// @return the rows of a chunk in XML, as the file holds them between <rows> and </rows>.
/// Threads: may be called by several threads at once.
std::string aidaRows(const Schema& schema, const Chunk& chunk);

}  // namespace velmorak
