#pragma once

#include "store/DiskStore.h"
#include "store/FileContent.h"

#include <velmorak/Mutex.h>
#include <velmorak/Value.h>

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace velmorak {

/// The cached results of a node.
struct StoredResult {
    std::vector<Value> outputs;
    std::vector<FileContent> files;    ///< Input files of the node and of everything upstream.
    std::vector<FileContent> asked;    ///< Input files of the node itself.
    std::vector<FileContent> written;  ///< Result files, by the names that the node gave them.
};

/// Results by cache key: in memory, where results are evicted that the last runs neither used nor made, and behind that
/// on disk.
/// Threads: every operation may be called on any thread.
class ResultStore {
public:
    /// @param disk outlives this.
    explicit ResultStore(DiskStore& disk) : disk(disk) {}

    /// @return a number for keep. After clear, keep ignores the results of runs that began before.
    std::uint64_t beginRun();
    std::optional<StoredResult> find(const Digest& key);
    /// @return why the result is not on disk for later programs; empty if it is, or if there is no disk cache.
    /// @throws std::bad_alloc
    std::string keep(std::uint64_t run, const Digest& key, const StoredResult& result);
    void clear();

private:
    struct Entry {
        StoredResult result;
        std::uint64_t lastUse = 0;
    };

    std::optional<StoredResult> findInMemory(const Digest& key);
    bool keepInMemory(std::uint64_t run, const Digest& key, const StoredResult& result);

    DiskStore& disk;
    Mutex mutex;
    std::map<Digest, Entry> entries VELMORAK_GUARDED_BY(mutex);
    std::uint64_t runs VELMORAK_GUARDED_BY(mutex) = 0;
    std::uint64_t firstRun VELMORAK_GUARDED_BY(mutex) = 0;  ///< First run after the last clear.
};

}  // namespace velmorak
