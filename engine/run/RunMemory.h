#pragma once

#include "run/plan/Pipeline.h"
#include "run/results/RunHistory.h"
#include "store/DiskStore.h"
#include "store/FileHashes.h"
#include "store/ResultStore.h"

#include <optional>
#include <set>

namespace velmorak {

/// The state that a runner keeps from run to run: cached results, file hashes and history. With a cache folder it
/// survives the program.
/// Threads: used by the thread of the run; store.clear may be called on any.
class RunMemory {
public:
    RunMemory(CacheConfig config, DiskStore::Warn warn);

    /// Loads the history of the pipeline's document.
    void recall(const Pipeline& pipeline);
    DiskStore& diskStore() { return disk; }
    /// Stores a history and the file hashes.
    void writeDown(const RunHistory& now);

private:
    DiskStore disk;
    std::optional<Digest> historyKey;  ///< Of the document of the history; no value before the first run.
    bool wasUntitled = false;

public:
    ResultStore store;
    FileHashes digests;
    RunHistory history;
    std::set<const Kind*> refused;  ///< Kinds that did not stop and are not called again.
};

}  // namespace velmorak
