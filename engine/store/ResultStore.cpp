#include "store/ResultStore.h"

#include "store/StoreBytes.h"

#include <fmt/format.h>

#include <algorithm>

namespace velmorak {
namespace {

constexpr std::uint64_t runsKept = 16;
/// Of one result on disk: its bytes lie in memory, and more than once, when it is read.
constexpr std::uint64_t maxBytes = std::uint64_t{256} << 20;

double inMebibytes(std::uint64_t bytes) {
    constexpr double mebibyte = 1024.0 * 1024.0;
    return static_cast<double>(bytes) / mebibyte;
}

}  // namespace

std::uint64_t ResultStore::beginRun() {
    const std::scoped_lock lock(mutex);
    ++runs;
    std::erase_if(entries, [this](const auto& entry) { return entry.second.lastUse + runsKept < runs; });
    return runs;
}

std::optional<StoredResult> ResultStore::findInMemory(const Digest& key) {
    const std::scoped_lock lock(mutex);
    const auto found = entries.find(key);
    if (found == entries.end()) {
        return std::nullopt;
    }
    found->second.lastUse = runs;
    return found->second.result;
}

std::optional<StoredResult> ResultStore::find(const Digest& key) {
    if (std::optional<StoredResult> known = findInMemory(key)) {
        return known;
    }
    const std::optional<std::string> bytes = disk.read(key);
    std::optional<StoredResult> result = bytes ? storedResultFrom(*bytes) : std::nullopt;
    if (result) {
        const std::scoped_lock lock(mutex);
        entries[key] = {*result, runs};
    }
    return result;
}

bool ResultStore::keepInMemory(std::uint64_t run, const Digest& key, const StoredResult& result) {
    const std::scoped_lock lock(mutex);
    if (run < firstRun) {
        return false;
    }
    entries[key] = {result, runs};
    return true;
}

std::string ResultStore::keep(std::uint64_t run, const Digest& key, const StoredResult& result) {
    if (!keepInMemory(run, key, result) || !disk.isUsed()) {
        return {};
    }
    const std::uint64_t limit = std::min(disk.limitBytes(), maxBytes);
    const std::optional<std::uint64_t> bytes = countBytesOf(result);
    if (bytes > limit) {
        return fmt::format("it takes {:.1f} MiB, and the limit is {:.1f} MiB", inMebibytes(*bytes), inMebibytes(limit));
    }
    if (bytes) {
        disk.write(key, *bytes, [&](const ByteSink& sink) { bytesOf(result, sink); });
    }
    const std::scoped_lock lock(mutex);
    if (run < firstRun) {
        disk.remove(key);  // Cleared meanwhile.
    }
    return {};
}

void ResultStore::clear() {
    {
        const std::scoped_lock lock(mutex);
        entries.clear();
        firstRun = runs + 1;
    }
    disk.clear();
}

}  // namespace velmorak
