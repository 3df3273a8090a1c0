#include "store/ResultStore.h"

#include "store/StoreBytes.h"

#include <fmt/format.h>

#include <algorithm>

namespace velmorak {
namespace {

constexpr std::uint64_t runsKept = 16;
/// Of one result on disk: reading it needs several times as much memory.
constexpr std::uint64_t maxResultBytes = std::uint64_t{256} << 20;

double inMebibytes(std::uint64_t bytes) {
    constexpr double mebibyte = 1024.0 * 1024.0;
    return static_cast<double>(bytes) / mebibyte;
}

}  // namespace

std::uint64_t ResultStore::beginRun() {
    const MutexLock lock(mutex);
    const std::uint64_t number = ++runs;
    std::erase_if(entries, [number](const auto& entry) { return entry.second.lastUse + runsKept < number; });
    return number;
}

std::optional<StoredResult> ResultStore::findInMemory(const Digest& key) {
    const MutexLock lock(mutex);
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
        const MutexLock lock(mutex);
        entries[key] = {*result, runs};
    }
    return result;
}

bool ResultStore::keepInMemory(std::uint64_t run, const Digest& key, const StoredResult& result) {
    const MutexLock lock(mutex);
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
    const std::uint64_t limit = std::min(disk.limitBytes(), maxResultBytes);
    const std::optional<std::uint64_t> bytes = countBytesOf(result);
    if (bytes > limit) {
        return fmt::format("{:.1f} MiB exceed the limit of {:.1f} MiB", inMebibytes(*bytes), inMebibytes(limit));
    }
    if (bytes) {
        disk.write(key, *bytes, [&](const ByteSink& sink) { bytesOf(result, sink); });
    }
    const MutexLock lock(mutex);
    if (run < firstRun) {
        disk.remove(key);  // clear was called meanwhile.
    }
    return {};
}

void ResultStore::clear() {
    {
        const MutexLock lock(mutex);
        entries.clear();
        firstRun = runs + 1;
    }
    disk.clear();
}

}  // namespace velmorak
