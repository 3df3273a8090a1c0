#pragma once

#include "run/ResultCache.h"
#include "run/RunMemory.h"
#include "run/RunState.h"
#include "run/StreamPass.h"
#include "store/FilePrefetchHasher.h"

#include <cstddef>
#include <list>
#include <optional>
#include <set>
#include <unordered_map>
#include <vector>

namespace velmorak {

/// One run of a pipeline, from what is needed to what is kept.
class RunScheduler {
public:
    /// @param state, memory and workers outlive this.
    /// @param explains reasons are said.
    RunScheduler(RunState& state, RunMemory& memory, bool explains, Executor& executor);

    void run(RunReport& report);

private:
    void findNeeded();
    bool isWanted(std::size_t position) const;
    bool reuse(std::size_t position);
    void sayReasons();
    void failInvalidNodes();
    void evaluateReady();
    void evaluateIfReady(std::size_t position);
    std::optional<std::size_t> failedUpstream(std::size_t position) const;
    void evaluateReporters();
    void evaluate(std::size_t position);
    void evaluateFunction(const Function& function, std::size_t position, NodeResults& results);
    void evaluateUnfilled(const Accumulator& accumulator, std::size_t position, NodeResults& results);

    bool passNext();
    bool isTarget(std::size_t position) const;
    bool isReady(std::size_t target, std::unordered_map<std::size_t, bool>& known) const;
    void findTables();
    std::vector<OperatorInstance> operatorsFor(const std::vector<std::size_t>& targets) const;

    void takeInFinished();
    void finalizeRemaining();
    void finalize(std::size_t position, bool isInReused);
    void reportTo(RunReport& report);

    RunState& state;
    RunMemory& memory;
    bool explains;
    StopPoll poll;
    Executor& executor;
    ResultCache cache;
    FilePrefetchHasher prefetchHasher;
    bool hasSwept = false;
    std::set<std::size_t> agenda;  ///< Places in the plan's order to go to in the next sweep.
    bool hasTables = false;
    std::list<std::vector<std::size_t>> tables;  ///< The targets of each that is still to be passed.
};

}  // namespace velmorak
