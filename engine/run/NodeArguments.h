#pragma once

#include "run/Pipeline.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace velmorak {

/// What came by wire into one input.
struct Arrival {
    bool isWired = false;
    std::string sourceName;  ///< Plug-in that feeds the input.
    Value value;             ///< Monostate for a table, and when nothing is wired.
};

/// The inputs of one plug-in, checked against what the kind says of them.
/// Threads: may be read by several threads at once.
class NodeArguments : public Arguments {
public:
    /// @param node     outlives this.
    /// @param arrivals parallel to the node's inputs.
    /// @throws Failure when a text or an arrived value is not what an input takes.
    NodeArguments(const PipelineNode& node, const std::vector<Arrival>& arrivals);

    double number(const std::string& input) const override;
    std::int64_t integer(const std::string& input) const override;
    const std::string& text(const std::string& input) const override;
    const Value& value(const std::string& input) const override;
    bool isWired(const std::string& input) const override;
    const std::string& sourceName(const std::string& input) const override;

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

/// The outputs of one plug-in, as far as it has set them.
class NodeResults : public Results {
public:
    /// @param outputs outlives this.
    explicit NodeResults(const std::vector<OutputSpec>& outputs);

    void set(const std::string& output, Value value) override;
    /// Parallel to the outputs.
    const std::vector<Value>& values() const { return all; }

private:
    const std::vector<OutputSpec>& outputs;
    std::vector<Value> all;
};

/// An input of this type can be given as text; any other takes only what a wire brings.
bool isWritable(ValueType type);

/// @return true when an output of the one type may feed an input of the other.
bool mayFeed(ValueType output, ValueType input);

}  // namespace velmorak
