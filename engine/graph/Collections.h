#pragma once

#include <QzKind.h>
#include <velmorak/Kind.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace velmorak {

/// A kind as a collection has registered it.
struct OfferedKind {
    QzKind record;
    std::unique_ptr<Kind> kind;
};

/// Loads the collections that lie in the folders. One that cannot be loaded, is made with another kit, does not offer
/// the factory or throws is reported on standard error and skipped whole, and so is one that has ended a program while
/// it was loaded. A kind whose name is taken, or is none, or whose ports contradict themselves is reported and skipped
/// by itself.
/// @param notes folder for notes about what is being loaded; see LoadingNote. Empty for none.
/// @return groups in alphabetical order, and so are the kinds in each.
std::vector<OfferedKind> loadCollections(const std::vector<std::filesystem::path>& folders,
                                         const std::filesystem::path& notes, const std::string& factory);

}  // namespace velmorak
