#include "graph/collections/Catalogue.h"

#include "graph/Paths.h"
#include "graph/collections/Collections.h"
#include "graph/collections/Examples.h"

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

struct Catalogue::FoundExamples {
    std::once_flag once;
    std::vector<QzExample> records;
};

Catalogue::Catalogue(SearchPath search, const std::string& factory)
    : search(std::move(search)), foundExamples(std::make_unique<FoundExamples>()) {
    const CollectionSearch collections{
        this->search.collections, factory, this->search.loadingNotes, this->search.isolation, {}};
    for (OfferedKind& offered : loadCollections(collections, *fileFormats)) {
        records.push_back(std::move(offered.record));
        made.push_back(std::move(offered.kind));
    }
}

Catalogue::~Catalogue() = default;

const std::vector<QzExample>& Catalogue::examples() const {
    std::call_once(foundExamples->once, [this] { foundExamples->records = listExamples(search.examples); });
    return foundExamples->records;
}

std::size_t Catalogue::find(const std::string& kindName) const {
    const auto found = std::ranges::find(records, kindName, &QzKind::name);
    return static_cast<std::size_t>(found - records.begin());
}

bool Catalogue::isExample(const fs::path& file) const {
    const fs::path whole = resolved(file);
    return std::ranges::any_of(search.examples, [&](const fs::path& folder) {
        const fs::path root = resolved(folder);
        return std::mismatch(root.begin(), root.end(), whole.begin(), whole.end()).first == root.end();
    });
}

const Catalogue& sharedCatalogue(const Catalogue::SearchPath& search, const std::string& factory) {
    std::call_once(shared().once, [&] { shared().made = new Catalogue(search, factory); });
    return *shared().made;
}

const Catalogue* sharedCatalogueIfMade() {
    return shared().made;
}

}  // namespace velmorak
