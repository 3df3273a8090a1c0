#pragma once

#include <velmorak/FileFormat.h>

#include <memory>
#include <string>
#include <vector>

/// Kinds that read the tables of one file format, with inputs file, object and columns.
namespace velmorak {

/// What a kind says of itself.
struct FormatTableTexts {
    std::string name;
    std::string summary;
    std::string notes;
    std::string files;   ///< What the input file takes: "NumPy file, .npy or .npz".
    std::string object;  ///< Description of the input object.
};

std::unique_ptr<Kind> makeFormatTable(FormatTableTexts texts, std::unique_ptr<const FileFormat> format);

/// What differs between the formats of such kinds.
struct TableFormat {
    std::string name;
    std::string description;  ///< As FileFormat::description.
    std::string kind;
    bool (*hasSignature)(const FileStart& start);
    std::vector<FileObject> (*list)(const std::filesystem::path& file, RunContext& context);
    /// Opens a table of a file, or the columns of it.
    std::unique_ptr<TableReader> (*open)(const std::filesystem::path& file, const std::string& object,
                                         const std::vector<std::string>& columns, RunContext& context);
};

std::unique_ptr<FileFormat> makeTableFormat(TableFormat format);

}  // namespace velmorak
