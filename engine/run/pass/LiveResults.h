#pragma once

#include "run/RunState.h"
#include "run/pass/OperatorChain.h"

#include <cstddef>
#include <optional>
#include <set>

namespace velmorak {

/// Shows the histograms and profiles that a pass fills, as far as they are filled, to a listener that asks for them.
/// Copies of the states that were merged so far are merged and finished; the states themselves are not touched, so that
/// the results of the run have the same bits, looked at or not.
/// Threads: one at a time, between the commits of chunks.
class LiveResults {
public:
    /// @param state and chain outlive this.
    LiveResults(RunState& state, OperatorChain& chain) : state(state), chain(chain) {}

    /// Called after each chunk.
    void update();

private:
    std::optional<ResultsSoFar> resultsOf(std::size_t position);
    bool isSmall(const Operator& op, const Accumulator& kind, const Schema& schema);

    RunState& state;
    OperatorChain& chain;
    std::set<std::size_t> small;  ///< Nodes whose objects are small enough to be copied while the run waits.
    std::set<std::size_t> large;
};

}  // namespace velmorak
