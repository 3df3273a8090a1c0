#pragma once

#include "run/plan/Pipeline.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace velmorak {

/// The value that a wire brought to one input.
struct Arrival {
    bool isWired = false;
    std::string sourceName;    ///< Name of the plug-in that feeds the input.
    std::string sourceOutput;  ///< And of its output.
    Value value;               ///< Monostate for a table and for an unwired input.
    std::string failure{};     ///< How the plug-in that feeds the input failed; empty if it did not.
};

/// The inputs of one plug-in, checked against their specifications.
/// Threads: may be read by several threads at once.
class NodeArguments : public Arguments {
public:
    /// @param node outlives this.
    /// @param arrivals parallel to the node's inputs.
    /// @throws Failure if a text or a value from a wire does not suit its input.
    NodeArguments(const PipelineNode& node, const std::vector<Arrival>& arrivals);

    double number(const std::string& input) const override;
    NumberWithError numberWithError(const std::string& input) const override;
    std::int64_t integer(const std::string& input) const override;
    const std::string& text(const std::string& input) const override;
    const Value& value(const std::string& input) const override;
    bool isWired(const std::string& input) const override;
    bool has(const std::string& input) const override;
    std::string whyMissing(const std::string& input) const override;
    const std::string& sourceName(const std::string& input) const override;
    const std::string& sourceOutput(const std::string& input) const override;

private:
    struct Entry {
        const InputSpec* spec = nullptr;
        Arrival arrival;
        std::string text;
        double number = 0.0;
        bool hasNumber = false;
    };

    static Entry entryOf(const PipelineInput& input, const Arrival& arrival);
    const Entry& find(const std::string& input) const;
    const Entry& findNumber(const std::string& input) const;

    std::map<std::string, Entry> entries;
};

/// Collects the outputs that a plug-in sets.
class NodeResults : public Results {
public:
    /// @param outputs outlives this.
    explicit NodeResults(const std::vector<OutputSpec>& outputs);

    void set(const std::string& output, Value value) override;
    void leave(const std::string& output, Value value) override;
    /// Parallel to the outputs; monostate for one that was not set.
    const std::vector<Value>& values() const { return all; }
    /// Likewise, the results of a plug-in that failed.
    const std::vector<Value>& remains() const { return left; }

private:
    std::size_t check(const std::string& output, const Value& value) const;

    const std::vector<OutputSpec>& outputs;
    std::vector<Value> all;
    std::vector<Value> left;
};

/// @return whether an output of the first type may feed an input of the second.
bool mayFeed(ValueType output, ValueType input);

}  // namespace velmorak
