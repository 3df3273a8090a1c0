#pragma once

#include <velmorak/FileOpener.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// What a collection tells about a file format, so that a file can be recognised and looked at. The kind Table and
/// "velmorak-run --look" take the formats of all collections from here.
namespace velmorak {

/// How a file begins.
struct FileStart {
    std::filesystem::path path;
    std::string bytes;     ///< The first ones, at most maxBytes.
    std::string unpacked;  ///< As bytes, of the content of a file compressed with gzip, bzip2 or zip.

    static constexpr std::size_t maxBytes = 4096;
};

/// @throws Failure if the file cannot be opened or is not a regular file.
FileStart startOf(const std::filesystem::path& file);

/// How well a file suits a format.
enum class Recognition {
    No,
    Possible,  ///< As any text suits a format of plain text.
    Certain,   ///< By a signature of the format.
};

/// A column of a table in a file.
struct FileColumn {
    ColumnInfo info;
    std::string problem{};  ///< Why it cannot be read; empty if it can. Its type then means nothing.
};

/// A table, histogram or other object in a file.
struct FileObject {
    std::string path;                     ///< As the input "object" takes it; empty for the only content of a file.
    std::string type;                     ///< In the words of the format: "TTree", "dataset", "histogram1d".
    std::optional<std::uint64_t> rows{};  ///< Of a table, where known.
    std::vector<FileColumn> columns{};    ///< Of a table.
    std::string description{};            ///< One line about an object that is not a table (summaryOf); may be empty.
    bool isTable = false;
};

/// A file format.
/// Threads: every operation may be called by several threads at once.
class FileFormat {
public:
    virtual ~FileFormat() = default;
    FileFormat(const FileFormat&) = delete;
    FileFormat& operator=(const FileFormat&) = delete;

    /// Unique, in a few words: "ROOT", "SQLite".
    virtual std::string name() const = 0;
    /// A file of the format with its article, for messages: "an SQLite database".
    virtual std::string description() const = 0;
    /// Name of the kind that reads the format's tables; empty if none does.
    virtual std::string tableKind() const = 0;
    /// Of a format without tables: name of the kind that reads its objects.
    virtual std::string objectKind() const { return {}; }
    virtual Recognition recognise(const FileStart& start) const = 0;
    /// Lists what is in a file, in the order of the file.
    /// @throws Failure if the file cannot be read; Stopped.
    virtual std::vector<FileObject> objects(const std::filesystem::path& file, RunContext& context) const = 0;
    /// @param object  path of a table; empty for the only one of a file.
    /// @param columns names of the columns to read, in this order; empty for all that can be read.
    /// @return null if the format has no tables.
    virtual std::shared_ptr<const FileOpener> tableOpener(const std::string& object,
                                                          const std::vector<std::string>& columns) const = 0;

protected:
    FileFormat() = default;
};

/// The formats of all collections.
/// Threads: filled by one thread while collections are loaded; afterwards read by any.
class FileFormats {
public:
    /// @return false, without adding it, if a format of that name is known.
    bool add(std::unique_ptr<FileFormat> format);
    const std::vector<std::unique_ptr<FileFormat>>& all() const { return formats; }
    /// @return the format that the file certainly has, else one that is possible, else null.
    const FileFormat* recognise(const FileStart& start) const;

private:
    std::vector<std::unique_ptr<FileFormat>> formats;
};

/// @return one line about a histogram, profile, set of points or function: bins, ranges, entries, mean and spread.
std::string summaryOf(const DataObject& object);

}  // namespace velmorak
