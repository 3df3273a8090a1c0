#include "graph/collections/Collections.h"
#include "graph/collections/Factory.h"
#include "isolate/process/HostProcess.h"
#include "run/KindConfig.h"

#include <velmorak/Expression.h>
#include <velmorak/FileFormat.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace velmorak {
namespace {

/// What the kinds of a host use to its end.
struct Loaded {
    FileFormats formats;
    std::vector<OfferedKind> others;
};

class HostRegistry : public Registry {
public:
    explicit HostRegistry(const FileFormats& known) : known(known) {}

    void group(const std::string& name) override { currentGroup = name; }
    void add(std::unique_ptr<Kind> kind) override { kinds.push_back({currentGroup, std::move(kind)}); }
    void addFormat(std::unique_ptr<FileFormat> format) override { own.push_back(std::move(format)); }
    const FileFormats& formats() const override {
        needsFormats = true;
        return known;
    }

    std::vector<isolation::LoadedKind> kinds;
    std::vector<std::unique_ptr<FileFormat>> own;
    mutable bool needsFormats = false;

private:
    const FileFormats& known;
    std::string currentGroup;
};

isolation::LoadedCollection load(const isolation::Load& order) {
    auto& loaded = *new Loaded;
    HostRegistry registry(loaded.formats);
    registerInto(registry, order.object, order.factory);
    isolation::LoadedCollection collection{std::move(registry.kinds), !registry.own.empty()};
    if (registry.needsFormats) {
        CollectionSearch search{order.collections, order.factory};
        search.except = order.object;
        loaded.others = loadCollections(search, loaded.formats);
    }
    for (std::unique_ptr<FileFormat>& format : registry.own) {
        loaded.formats.add(std::move(format));
    }
    return collection;
}

}  // namespace
}  // namespace velmorak

/// What the program velmorak-kind-host does. @return its status.
extern "C" __attribute__((visibility("default"))) int velmorakKindHost();

int velmorakKindHost() {
    velmorak::Expression::limitCombinations(velmorak::kindConfigFromEnvironment().maxCombinations);
    return velmorak::isolation::runHost(velmorak::load);
}
