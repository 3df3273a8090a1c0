#pragma once

#include "DigestsAhead.h"
#include "Keeper.h"
#include "RunMemory.h"
#include "RunState.h"
#include "StreamPass.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace velmorak {

/// One run of a pipeline, from what is needed to what is kept.
class Execution {
public:
    /// @param state, memory and workers outlive this.
    /// @param explains reasons are said.
    Execution(RunState& state, RunMemory& memory, bool explains, Workers& workers);

    void run(RunReport& report);

private:
    void findNeeded();
    bool isWanted(std::size_t position) const;
    bool reuse(std::size_t position);
    void sayReasons();
    void settleObjections();
    void sweep();
    void visit(std::size_t position);
    std::optional<std::size_t> failedFeeder(std::size_t position) const;
    void evaluateTellers();
    void evaluate(std::size_t position);
    void evaluateFunction(const Function& function, std::size_t position, NodeResults& results);
    void evaluateUnfilled(const Accumulator& accumulator, std::size_t position, NodeResults& results);

    bool passNext();
    bool isTarget(std::size_t position) const;
    bool isReady(std::size_t target) const;
    std::vector<std::vector<std::size_t>> waitingTables() const;
    std::vector<StepPlace> stepsFor(const std::vector<std::size_t>& legs) const;

    void tellSettled();
    void settleRest();
    void settle(std::size_t position, bool isInReused);
    void reportTo(RunReport& report);

    RunState& state;
    RunMemory& memory;
    bool explains;
    Workers& workers;
    Keeper keeper;
    DigestsAhead ahead;
};

}  // namespace velmorak
