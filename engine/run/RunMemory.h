#pragma once

#include "run/Pipeline.h"
#include "run/RunHistory.h"
#include "store/DiskStore.h"
#include "store/FileHashes.h"
#include "store/ResultStore.h"

#include <optional>
#include <set>

namespace velmorak {

/// What a runner remembers from run to run, and where there is a place for it, from program to program.
/// Threads: used by the run's thread; store.clear may be called on any.
class RunMemory {
public:
    RunMemory(CacheConfig config, DiskStore::Warn warn);

    /// Brings to mind what is known of the pipeline's document.
    void recall(const Pipeline& pipeline);
    /// Writes down how the plug-ins are remembered if the program should end now.
    void writeDown(const RunHistory& now);

private:
    DiskStore disk;
    std::optional<Digest> historyKey;  ///< Of the document that history is about; nothing before the first run.
    bool wasUntitled = false;

public:
    ResultStore store;
    FileHashes digests;
    RunHistory history;
    std::set<const Kind*> refused;  ///< Did not stop; never called again.
};

}  // namespace velmorak
