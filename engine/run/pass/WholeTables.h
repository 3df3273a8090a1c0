#pragma once

#include "run/plan/Pipeline.h"

#include <cstddef>
#include <memory>
#include <vector>

/// Tables that row-wise plug-ins need as a whole, besides the one whose rows they transform: those of their further
/// inputs of type table. The rows of a stream are collected for that in a pass, and kept until the run ends.
namespace velmorak {

class Plan;
class RunState;
class StoredTable;

/// The input gets such a table.
bool takesWholeTable(const Plan& plan, const Pipeline& pipeline, std::size_t node, const PipelineInput& input);

/// The nodes that give such tables to this one, in the order of its inputs.
std::vector<std::size_t> wholeTables(const RunState& state, std::size_t node);

/// Some plug-in that is still to be executed waits for the rows of the stream as a whole.
bool mustBeCollected(const RunState& state, std::size_t position);

/// Keeps the rows of a stream as a whole.
void keepCollected(RunState& state, std::size_t position, std::shared_ptr<const StoredTable> table);

}  // namespace velmorak
