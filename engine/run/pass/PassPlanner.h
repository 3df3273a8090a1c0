#pragma once

#include "run/pass/Operator.h"

#include <cstddef>
#include <list>
#include <set>
#include <unordered_map>
#include <vector>

namespace velmorak {

class RunState;

/// Decides which nodes the next pass over rows computes.
///
/// The targets of a pass are the nodes that take rows of the same list of segments and whose values are all final. Each
/// list of segments is passed again for targets whose values were not final the first time.
class PassPlanner {
public:
    /// @param state outlives this.
    explicit PassPlanner(const RunState& state);

    /// @return the targets of the next pass; empty if no remaining target can be computed now.
    std::vector<std::size_t> nextTargets();
    /// @return the targets and the operators upstream of them, each after those that feed it.
    std::vector<OperatorInstance> operatorsFor(const std::vector<std::size_t>& targets) const;

    /// @return the nodes whose stored tables some target that is still to be computed reads.
    std::set<std::size_t> storedTablesToRead() const;

private:
    bool isTarget(std::size_t position) const;
    bool isReady(std::size_t target, std::unordered_map<std::size_t, bool>& known) const;
    void findTables();

    const RunState& state;
    bool hasTables = false;
    std::list<std::vector<std::size_t>> tables;  ///< The targets of each list of segments that is still to be passed.
};

}  // namespace velmorak
