#pragma once

#include "run/StopPoll.h"
#include "run/plan/Pipeline.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace velmorak {

enum class KindCategory { Unknown, Source, RowWise, Concatenation, Accumulator, Function };

KindCategory categoryOf(const Kind* kind);

/// The dependencies of a pipeline, derived from its wires before anything is executed. Built once, in linear time, and
/// never changed; nodes are positions in Pipeline::nodes.
///
/// Invariants: the order holds every node once. A node comes after those that feed it, unless they lie on a cycle;
/// nodes of a cycle have an error and come before the nodes that the cycle feeds. A stream node has the list of
/// segments that its rows consist of: the sources and stored tables in the order of their rows. Nodes with the same
/// list share a pass.
class Plan {
public:
    /// @param pipeline and anything that isStopping refers to outlive this.
    /// @param isStopping polled; empty: planning is never stopped.
    /// @throws Stopped
    explicit Plan(const Pipeline& pipeline, std::function<bool()> isStopping = {});

    /// All nodes, each after those that feed it, as far as there is no cycle.
    const std::vector<std::size_t>& order() const { return ordered; }
    /// All nodes, each before those that feed it, as far as there is no cycle.
    std::vector<std::size_t> reverseOrder() const { return {ordered.rbegin(), ordered.rend()}; }
    /// Position in the order.
    std::size_t rank(std::size_t node) const { return ranks[node]; }
    /// The nodes that feed this one, in the order of its inputs, each once.
    const std::vector<std::size_t>& upstream(std::size_t node) const { return upstreamOf[node]; }
    const std::vector<std::size_t>& consumers(std::size_t node) const { return consumersOf[node]; }
    /// The start plug-in, or downstream of it.
    bool isInScope(std::size_t node) const { return inScope[node]; }
    KindCategory category(std::size_t node) const { return categories[node]; }
    /// Executed when everything else has ended.
    bool isRunReporter(std::size_t node) const;
    /// A source, row-wise plug-in or concatenation: its rows are not kept.
    bool isStream(std::size_t node) const;
    /// An accumulator that yields a table (StoredTable): its rows are kept, and read in passes of their own.
    bool storesTable(std::size_t node) const;
    /// The node whose table is the input of this one.
    std::optional<std::size_t> tableInput(std::size_t node) const;
    /// The same for a concatenation, which has several, in the order of its inputs; one may occur twice.
    const std::vector<std::size_t>& tableInputs(std::size_t node) const { return tables[node]; }
    /// The sources and stored tables whose rows arrive at this node, in the order of the rows; one may occur twice.
    const std::vector<std::size_t>& segments(std::size_t node) const { return segmentLists[segmentsOf[node]]; }
    /// Number of sources that the rows of its output table consist of: one for a stored table.
    std::size_t segmentsOfOutput(std::size_t node) const { return storesTable(node) ? 1 : segments(node).size(); }
    /// Number of the node's list of segments: equal for two nodes whose lists are equal; 0 for an empty list.
    std::size_t segmentListOf(std::size_t node) const { return segmentsOf[node]; }
    std::size_t segmentListCount() const { return segmentLists.size(); }
    /// @return empty, or a sentence that says why the node cannot run.
    std::string validate(std::size_t node) const;

private:
    void connect();
    void sort();
    void append(std::size_t first, std::vector<std::size_t>& waiting);
    void markScope();
    void findSegments();
    void nameCycles();
    std::string cycleError(std::size_t node, const std::vector<bool>& isMember);
    std::string inputError(std::size_t node, const PipelineInput& input) const;
    std::string categoryError(std::size_t node) const;
    const OutputSpec* outputOf(const PipelineWire& wire) const;
    bool takesRows(std::size_t node, const PipelineInput& input) const;
    bool carriesTable(const PipelineInput& input) const;

    const Pipeline& pipeline;
    StopPoll poll;
    std::vector<KindCategory> categories;
    std::vector<std::vector<std::size_t>> upstreamOf;
    std::vector<std::vector<std::size_t>> consumersOf;
    std::vector<std::size_t> ordered;
    std::vector<std::size_t> ranks;
    std::vector<bool> isUnordered;         ///< While the order is made: not in it yet.
    std::vector<std::string> cycleErrors;  ///< Empty for a node on no cycle.
    std::vector<bool> inScope;
    std::vector<std::vector<std::size_t>> tables;
    std::vector<std::size_t> segmentsOf;  ///< Positions in segmentLists.
    std::vector<std::vector<std::size_t>> segmentLists{{}};
};

}  // namespace velmorak
