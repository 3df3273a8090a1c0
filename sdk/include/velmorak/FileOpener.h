#pragma once

#include <velmorak/Kind.h>

#include <filesystem>
#include <memory>
#include <set>
#include <string>

/// What a source needs of a file format to read any number of its files as one table.
namespace velmorak {

/// The columns of one file.
struct FileColumns {
    Schema schema;
    std::set<std::string> undecided{};  ///< Columns that would suit any type, because the file shows no value of them.

    bool operator==(const FileColumns&) const = default;
};

/// Opens files of one format with the values of one plug-in.
/// Threads: several files may be opened at once.
class FileOpener {
public:
    virtual ~FileOpener() = default;
    /// Looks at the beginning of a file.
    /// @param file outlives the call only.
    /// @throws Failure about the file, or about an input of the plug-in that does not suit it; Stopped.
    virtual FileColumns columnsOf(const std::filesystem::path& file, RunContext& context) const = 0;
    /// @param wanted types that the columns must have, where the format leaves a choice; null for the types that the
    ///               file itself suggests.
    /// @param context outlives the reader.
    /// @throws as columnsOf.
    virtual std::unique_ptr<TableReader> open(const std::filesystem::path& file, const Schema* wanted,
                                              RunContext& context) const = 0;
    /// Checks the names of the columns that any of the files has. @throws Failure.
    virtual void checkNames(const std::set<std::string>& /*names*/) const {}
};

}  // namespace velmorak
