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

/// Opens a table of a file.
using OpenObject = std::unique_ptr<TableReader> (*)(const std::filesystem::path& file, const std::string& object,
                                                    const std::vector<std::string>& columns, RunContext& context);

/// An opener for the table, or the columns of it.
std::shared_ptr<const FileOpener> openerFor(OpenObject open, const std::string& object,
                                            const std::vector<std::string>& columns);

}  // namespace velmorak
