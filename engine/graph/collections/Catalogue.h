#pragma once

#include "isolate/IsolationConfig.h"

#include <QzKind.h>
#include <velmorak/FileFormat.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace velmorak {

/// The kinds and file formats that collections offer and the examples that come with them.
/// Lifetime: kinds live in shared objects that are never unloaded.
/// Threads:  filled by one thread; afterwards read by any.
class Catalogue {
public:
    /// Folders in which collections, and groups of examples, are looked for; earlier ones win.
    struct SearchPath {
        std::vector<std::filesystem::path> collections;
        std::vector<std::filesystem::path> examples;
        std::filesystem::path loadingNotes{};  ///< Folder for notes; see LoadingNote. Empty for none.
        IsolationConfig isolation{};           ///< Which kinds run in helper processes.
    };

    /// Loads every collection that exports the factory. One that cannot be used is reported on standard error and
    /// skipped.
    Catalogue(SearchPath search, const std::string& factory);
    ~Catalogue();

    const std::vector<QzKind>& kinds() const { return records; }
    /// Found by the first call: only the editor lists them. Threads: any.
    const std::vector<QzExample>& examples() const;
    /// Parallel to kinds().
    const Kind& kind(std::size_t number) const { return *made[number]; }
    const FileFormats& formats() const { return *fileFormats; }
    /// @return kinds().size() when no kind has the name.
    std::size_t find(const std::string& kindName) const;
    /// @return whether the file lies below a folder of examples, also by way of a link.
    bool isExample(const std::filesystem::path& file) const;

private:
    SearchPath search;
    std::vector<QzKind> records;
    std::unique_ptr<FileFormats> fileFormats = std::make_unique<FileFormats>();  ///< Kinds hold references to them.
    std::vector<std::unique_ptr<Kind>> made;
    struct FoundExamples;
    std::unique_ptr<FoundExamples> foundExamples;
};

/// The program's catalogue. Made by the first call, with its arguments; later calls give the same.
const Catalogue& sharedCatalogue(const Catalogue::SearchPath& search, const std::string& factory);

/// The program's catalogue if it has been made, else null.
const Catalogue* sharedCatalogueIfMade();

}  // namespace velmorak
