#pragma once

#include "run/RunMemory.h"
#include "run/RunState.h"
#include "run/pass/PassPlanner.h"
#include "run/pass/PassRunner.h"
#include "run/pass/StreamPass.h"
#include "run/results/ResultCache.h"
#include "store/FilePrefetchHasher.h"

#include <cstddef>
#include <optional>
#include <set>
#include <vector>

namespace velmorak {

/// Executes one run: decides which nodes are needed, reuses cached results, evaluates functions, and passes streams.
///
/// The life of a node, whose status changes only here and in StreamPass, on the thread of the run:
///  - not requested, unless it is in scope or feeds a needed node that is not reused (findNeeded, from downstream up);
///  - reused, if the cache has a result for its key; nodes upstream are then needed only for other consumers;
///  - failed at once, if the plan has an error for it (failInvalidNodes);
///  - evaluated when all its values are final (evaluateReady), or as part of a pass (passNext) if it takes rows;
///  - skipped as soon as something upstream has failed; unfinished if the run is stopped first.
/// A final status never changes. A result is put into the cache as soon as it is final, so that a killed program loses
/// only the work in progress. Reporters run last, whatever happened to the nodes that feed them.
class RunScheduler {
public:
    /// @param state, memory and executor outlive this.
    /// @param explains prints why each node is executed or reused.
    /// @param passRunner outlives this; null: passes read all rows.
    RunScheduler(RunState& state, RunMemory& memory, bool explains, Executor& executor,
                 PassRunner* passRunner = nullptr);

    void run(RunReport& report);

private:
    void findNeeded();
    bool isWanted(std::size_t position) const;
    bool isLeftOut(std::size_t position) const;
    bool isAskedFor(std::size_t position) const;
    bool reuse(std::size_t position);
    void printReasons();
    void failInvalidNodes();
    void evaluateReady();
    void evaluateIfReady(std::size_t position);
    std::optional<std::size_t> failedUpstream(std::size_t position) const;
    void evaluateReporters();
    void evaluate(std::size_t position);
    void evaluateFunction(const Function& function, std::size_t position, NodeResults& results);
    void evaluateUnfilled(const Accumulator& accumulator, std::size_t position, NodeResults& results);

    bool passNext();

    void setFormerAside();
    void finishFormer(RunReport& report);

    void commitFinished();
    void finalizeRemaining();
    void finalize(std::size_t position, bool isInReused);
    void reportTo(RunReport& report);
    void warnOfLostRows();
    void freeStoredTables();

    RunState& state;
    RunMemory& memory;
    bool explains;
    StopPoll poll;
    Executor& executor;
    ResultCache cache;
    FilePrefetchHasher prefetchHasher;
    PassPlanner passPlanner;
    PassRunner* passRunner;
    bool hasFilledAgenda = false;
    std::set<std::size_t> agenda;  ///< Ranks of nodes to look at again, because something that feeds them became final.
};

}  // namespace velmorak
