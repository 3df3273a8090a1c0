#pragma once

#include "run/Pipeline.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace velmorak {

enum class KindCategory { Unknown, Source, RowWise, Concatenation, Accumulator, Function };

KindCategory categoryOf(const Kind* kind);

/// What the wires of a pipeline mean for its run, before anything is executed.
class Plan {
public:
    /// @param pipeline outlives this.
    explicit Plan(const Pipeline& pipeline);

    /// All plug-ins, each after those that feed it, as far as there is no cycle.
    const std::vector<std::size_t>& order() const { return ordered; }
    /// All plug-ins, each before those that feed it, as far as there is no cycle.
    std::vector<std::size_t> orderUpstream() const { return {ordered.rbegin(), ordered.rend()}; }
    /// Place in the order.
    std::size_t rank(std::size_t node) const { return ranks[node]; }
    /// Plug-ins that feed this one, in the order of its inputs, each once.
    const std::vector<std::size_t>& upstream(std::size_t node) const { return upstreamOf[node]; }
    const std::vector<std::size_t>& consumers(std::size_t node) const { return consumersOf[node]; }
    /// The start plug-in, and all that is downstream of it.
    bool isInScope(std::size_t node) const { return asked[node]; }
    KindCategory category(std::size_t node) const { return categories[node]; }
    /// The plug-in is executed when all else has ended.
    bool isRunReporter(std::size_t node) const;
    /// A source, row-wise plug-in or concatenation: its rows pass and are not kept.
    bool isStream(std::size_t node) const;
    /// The plug-in whose table comes into this one.
    std::optional<std::size_t> tableInput(std::size_t node) const;
    /// The same for a concatenation, which takes several, in the order of its inputs; one may be there twice.
    const std::vector<std::size_t>& tableInputs(std::size_t node) const { return tables[node]; }
    /// The sources whose rows come to, or from, this plug-in, in the order of the rows; one may be there twice.
    const std::vector<std::size_t>& segments(std::size_t node) const { return legLists[segmentsOf[node]]; }
    /// The same for two plug-ins when their legs are; 0 when there are none.
    std::size_t legsNumber(std::size_t node) const { return segmentsOf[node]; }
    /// One more than the greatest legsNumber.
    std::size_t legsNumbers() const { return legLists.size(); }
    /// @return empty, or why the plug-in cannot run, as a sentence.
    std::string validate(std::size_t node) const;

private:
    void connect();
    void sort();
    void append(std::size_t first, std::vector<std::size_t>& waitsFor);
    void ask();
    void findSegments();
    void nameCycles();
    std::vector<std::vector<std::size_t>> cycleMembers() const;
    std::string cycleSentence(std::size_t node, const std::vector<bool>& isMember) const;
    std::string inputError(std::size_t node, const PipelineInput& input) const;
    std::string categoryError(std::size_t node) const;
    const OutputSpec* outputOf(const PipelineWire& wire) const;
    bool bringsTable(const PipelineInput& input) const;

    const Pipeline& pipeline;
    std::vector<KindCategory> categories;
    std::vector<std::vector<std::size_t>> upstreamOf;
    std::vector<std::vector<std::size_t>> consumersOf;
    std::vector<std::size_t> ordered;
    std::vector<std::size_t> ranks;
    std::vector<bool> unordered;      ///< While the order is made: not in it yet.
    std::vector<std::string> cycles;  ///< Objection of those that lie on a cycle.
    std::vector<bool> asked;
    std::vector<std::vector<std::size_t>> tables;
    std::vector<std::size_t> segmentsOf;  ///< Positions in legLists.
    std::vector<std::vector<std::size_t>> legLists{{}};
};

}  // namespace velmorak
