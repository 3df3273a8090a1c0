#include "ResultStore.h"

#include <utility>

namespace velmorak {
namespace {

constexpr std::uint64_t runsKept = 16;

}  // namespace

std::uint64_t ResultStore::beginRun() {
    const std::scoped_lock lock(mutex);
    ++runs;
    std::erase_if(entries, [this](const auto& entry) { return entry.second.lastUse + runsKept < runs; });
    return runs;
}

std::optional<StoredResult> ResultStore::find(const Digest& key) {
    const std::scoped_lock lock(mutex);
    const auto found = entries.find(key);
    if (found == entries.end()) {
        return std::nullopt;
    }
    found->second.lastUse = runs;
    return found->second.result;
}

void ResultStore::keep(std::uint64_t run, const Digest& key, StoredResult result) {
    const std::scoped_lock lock(mutex);
    if (run >= firstRun) {
        entries[key] = {std::move(result), runs};
    }
}

void ResultStore::clear() {
    const std::scoped_lock lock(mutex);
    entries.clear();
    firstRun = runs + 1;
}

}  // namespace velmorak
