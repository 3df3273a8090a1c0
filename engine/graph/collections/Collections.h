#pragma once

#include <QzKind.h>
#include <velmorak/FileFormat.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace velmorak {

/// A kind that a collection has registered.
struct OfferedKind {
    QzKind record;
    std::unique_ptr<Kind> kind;
};

/// Loads the collections in the folders. A collection is reported on standard error and skipped as a whole when it
/// cannot be loaded, was built with other SDK headers, does not export the factory, throws, or ended an earlier program
/// while that loaded it. A kind is reported and skipped alone when its name is in use or invalid, or when its ports
/// contradict each other.
/// @param notes folder for notes about the collections being loaded; see LoadingNote. Empty for none.
/// @param formats receives the file formats of the collections.
/// @return sorted by group, then by name.
std::vector<OfferedKind> loadCollections(const std::vector<std::filesystem::path>& folders,
                                         const std::filesystem::path& notes, const std::string& factory,
                                         FileFormats& formats);

}  // namespace velmorak
