#pragma once

#include "run/NodeContext.h"
#include "store/DiskStore.h"

#include <velmorak/Value.h>

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <vector>

namespace velmorak {

/// A file that a result depends on, and what it held then.
struct FileContent {
    NamedFile file;
    Digest digest{};
};

/// What is kept of a plug-in that has done its work.
struct StoredResult {
    std::vector<Value> outputs;
    std::vector<FileContent> files;    ///< Its own and those of all that is upstream of it.
    std::vector<FileContent> asked;    ///< Its own only.
    std::vector<FileContent> written;  ///< Files that it left, by the names that it gave them.
};

/// Results by what they were made from: in memory, where what the last runs neither used nor made is forgotten, and on
/// disk behind it.
/// Threads: every operation may be called on any thread.
class ResultStore {
public:
    explicit ResultStore(DiskStore& disk) : disk(disk) {}

    /// @return a number for keep: after clear, a run that had begun before keeps nothing.
    std::uint64_t beginRun();
    std::optional<StoredResult> find(const Digest& key);
    /// @return why no later program will find the result; empty where one will, or where there is no place for any.
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
    std::mutex mutex;
    std::map<Digest, Entry> entries;
    std::uint64_t runs = 0;
    std::uint64_t firstRun = 0;  ///< First run after the last clear.
};

}  // namespace velmorak
