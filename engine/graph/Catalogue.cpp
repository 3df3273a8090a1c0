#include "graph/Catalogue.h"

#include "graph/Collections.h"
#include "graph/Examples.h"
#include "graph/Paths.h"

#include <algorithm>
#include <atomic>
#include <mutex>

namespace velmorak {
namespace {

namespace fs = std::filesystem;

/// The library's one catalogue. It is never destroyed, because kinds may be in use until the program has ended.
struct Shared {
    std::once_flag once;
    std::atomic<const Catalogue*> made{nullptr};
};

Shared& shared() {
    static Shared theOne;
    return theOne;
}

}  // namespace

Catalogue::Catalogue(SearchPath where, const std::string& factory) : places(std::move(where)) {
    for (OfferedKind& offered : loadCollections(places.collections, factory)) {
        records.push_back(std::move(offered.record));
        made.push_back(std::move(offered.kind));
    }
    exampleRecords = listExamples(places.examples);
}

std::size_t Catalogue::find(const std::string& kindName) const {
    const auto found = std::ranges::find(records, kindName, &QzKind::name);
    return static_cast<std::size_t>(found - records.begin());
}

bool Catalogue::isExample(const fs::path& file) const {
    const fs::path whole = resolved(file);
    return std::ranges::any_of(places.examples, [&](const fs::path& folder) {
        const fs::path root = resolved(folder);
        return std::mismatch(root.begin(), root.end(), whole.begin(), whole.end()).first == root.end();
    });
}

Catalogue::SearchPath standardPlaces() {
    Catalogue::SearchPath places{pathList("VELMORAK_COLLECTIONS"), pathList("VELMORAK_EXAMPLES")};
    const fs::path library = libraryFolder();
    places.collections.push_back(library / "collections");
    places.examples.push_back((library / VELMORAK_SHARE_FROM_LIB / "examples").lexically_normal());
    return places;
}

const Catalogue& sharedCatalogue(const std::string& factory) {
    std::call_once(shared().once, [&] { shared().made = new Catalogue(standardPlaces(), factory); });
    return *shared().made;
}

const Catalogue* sharedCatalogueIfMade() {
    return shared().made;
}

}  // namespace velmorak
