#pragma once

#include "isolate/IsolationConfig.h"

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

/// Which collections are loaded, and how.
struct CollectionSearch {
    std::vector<std::filesystem::path> folders;
    std::string factory;
    std::filesystem::path
        notes{};  ///< Folder for notes about the collections being loaded; see LoadingNote. Empty for none.
    IsolationConfig isolation{};
    std::filesystem::path except{};  ///< A shared object that is not loaded; may be empty.
};

/// Loads the collections in the folders. A collection is reported on standard error and skipped as a whole when it
/// cannot be loaded, was built with other SDK headers, does not export the factory, throws, or ended an earlier program
/// while that loaded it. A kind is reported and skipped alone when its name is in use or invalid, or when its ports
/// contradict each other. A collection whose kinds run in helper processes is loaded by one, and in this program only
/// if it has file formats.
/// @param formats receives the file formats of the collections.
/// @return sorted by group, then by name.
std::vector<OfferedKind> loadCollections(const CollectionSearch& search, FileFormats& formats);

}  // namespace velmorak
