#pragma once

#include "run/RunState.h"
#include "run/parts/PartFile.h"
#include "run/pass/PassPlanner.h"

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

namespace velmorak {

class Executor;

/// What writing a part has come to.
struct WrittenPass {
    std::string problem;  ///< Why it cannot be complete; else empty.
    PartSummary summary{};
};

/// Reads a range of the rows of the targets' table, and writes the states of the targets instead of finishing them.
/// A target that cannot be prepared is left out: merging fails in the same way.
/// @param summary gets the rows.
/// @return empty, or why the part is not complete. A Failure of the writer is left in it.
WrittenPass writePass(RunState& state, const PassPlanner& planner, const std::vector<std::size_t>& targets,
                      const PassRange& range, Executor& executor, PartWriter& writer);

/// Merges the states of the parts of a whole pass as far as that is possible without finishing the targets, and writes
/// them as one part.
/// @param parts all of the pass, in the order of the rows.
/// @return false if a target cannot be prepared or merges from first to last, or if the run was stopped.
/// @throws Failure if a part is damaged, or lacks states. A failure of the writer is left in it.
bool gatherPass(RunState& state, const PassPlanner& planner, const std::vector<std::size_t>& targets,
                const std::vector<std::filesystem::path>& parts, PartWriter& writer);

/// Finishes the targets with the states of the parts of their pass, instead of reading rows.
/// @param parts in the order of the rows.
/// @throws Failure if a part is damaged, or lacks states.
void mergePass(RunState& state, const PassPlanner& planner, const std::vector<std::size_t>& targets,
               const std::vector<std::filesystem::path>& parts);

}  // namespace velmorak
