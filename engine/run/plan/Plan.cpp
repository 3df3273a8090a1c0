#include "run/plan/Plan.h"

#include "run/NodeArguments.h"
#include "run/ValueCheck.h"
#include "run/messages/Visible.h"
#include "run/pass/WholeTables.h"
#include "run/plan/Cycles.h"

#include <algorithm>
#include <cstdint>
#include <deque>
#include <map>
#include <unordered_map>

namespace velmorak {
namespace {

/// A limit, because concatenations that double a table again and again would read its source for ever. Any number of
/// different tables may follow each other.
std::size_t maxSegments(const Pipeline& pipeline) {
    constexpr std::size_t minLimit = 1000;
    return std::max(minLimit, pipeline.nodes.size());
}

std::string article(const std::string& noun) {
    return (std::string("aeiou").find(noun.front()) == std::string::npos ? "a " : "an ") + noun;
}

std::string typeName(ValueType type) {
    return std::string(nameOf(type));
}

std::string aboutInput(const std::string& input, const std::string& sentence) {
    return "input \"" + input + "\": " + sentence;
}

}  // namespace

KindCategory categoryOf(const Kind* kind) {
    if (dynamic_cast<const Source*>(kind)) {
        return KindCategory::Source;
    }
    if (dynamic_cast<const RowWise*>(kind)) {
        return KindCategory::RowWise;
    }
    if (dynamic_cast<const Concatenation*>(kind)) {
        return KindCategory::Concatenation;
    }
    if (dynamic_cast<const Accumulator*>(kind)) {
        return KindCategory::Accumulator;
    }
    return dynamic_cast<const Function*>(kind) ? KindCategory::Function : KindCategory::Unknown;
}

Plan::Plan(const Pipeline& pipeline, std::function<bool()> isStopping)
    : pipeline(pipeline),
      poll(std::move(isStopping)),
      upstreamOf(pipeline.nodes.size()),
      consumersOf(pipeline.nodes.size()),
      isUnordered(pipeline.nodes.size(), true),
      cycleErrors(pipeline.nodes.size()),
      inScope(pipeline.nodes.size(), false),
      tables(pipeline.nodes.size()),
      segmentsOf(pipeline.nodes.size()) {
    for (const PipelineNode& node : pipeline.nodes) {
        categories.push_back(categoryOf(node.kind));
    }
    connect();
    sort();
    markScope();
    findSegments();
}

bool Plan::isRunReporter(std::size_t node) const {
    const Kind* kind = pipeline.nodes[node].kind;
    return kind != nullptr && kind->isRunReporter();
}

bool Plan::isStream(std::size_t node) const {
    return categories[node] == KindCategory::Source || categories[node] == KindCategory::RowWise ||
           categories[node] == KindCategory::Concatenation;
}

bool Plan::storesTable(std::size_t node) const {
    const std::vector<OutputSpec>& outputs = pipeline.nodes[node].outputs;
    return categories[node] == KindCategory::Accumulator &&
           std::any_of(outputs.begin(), outputs.end(),
                       [](const OutputSpec& output) { return output.type == ValueType::Table; });
}

std::optional<std::size_t> Plan::tableInput(std::size_t node) const {
    return tables[node].empty() ? std::nullopt : std::optional(tables[node].front());
}

void Plan::connect() {
    for (std::size_t node = 0; node < pipeline.nodes.size(); ++node) {
        for (const PipelineInput& input : pipeline.nodes[node].inputs) {
            poll.step();
            if (!input.wire || input.wire->node >= pipeline.nodes.size()) {
                continue;
            }
            const std::size_t producer = input.wire->node;
            // A node that already feeds this one by another input has it as the last of its consumers.
            std::vector<std::size_t>& fed = consumersOf[producer];
            if (fed.empty() || fed.back() != node) {
                upstreamOf[node].push_back(producer);
                fed.push_back(node);
            }
            if (takesRows(node, input)) {
                tables[node].push_back(producer);
            }
        }
    }
}

/// Rows come from the first input that carries a table; those of a concatenation from every such input.
bool Plan::takesRows(std::size_t node, const PipelineInput& input) const {
    const bool isMissing = tables[node].empty() || categories[node] == KindCategory::Concatenation;
    return isMissing && carriesTable(input);
}

void Plan::append(std::size_t first, std::vector<std::size_t>& waiting) {
    isUnordered[first] = false;
    for (std::deque<std::size_t> ready{first}; !ready.empty(); ready.pop_front()) {
        ordered.push_back(ready.front());
        for (const std::size_t consumer : consumersOf[ready.front()]) {
            poll.step();
            if (--waiting[consumer] == 0 && isUnordered[consumer]) {
                isUnordered[consumer] = false;
                ready.push_back(consumer);
            }
        }
    }
}

void Plan::sort() {
    const std::size_t count = pipeline.nodes.size();
    std::vector<std::size_t> waiting(count);
    for (std::size_t node = 0; node < count; ++node) {
        waiting[node] = upstreamOf[node].size();
    }
    for (std::size_t node = 0; node < count; ++node) {
        if (upstreamOf[node].empty()) {
            append(node, waiting);
        }
    }
    nameCycles();
    // Nodes on a cycle fail before anything is executed; they come before the nodes that they feed.
    for (std::size_t node = 0; node < count; ++node) {
        if (isUnordered[node] && !cycleErrors[node].empty()) {
            append(node, waiting);
        }
    }
    ranks.resize(count);
    for (std::size_t rank = 0; rank < ordered.size(); ++rank) {
        ranks[ordered[rank]] = rank;
    }
}

void Plan::markScope() {
    std::vector<std::size_t> reached;
    if (!pipeline.nodes.empty()) {
        reached.push_back(0);
        inScope[0] = true;
    }
    while (!reached.empty()) {
        const std::size_t node = reached.back();
        reached.pop_back();
        for (const std::size_t consumer : consumersOf[node]) {
            poll.step();
            if (!inScope[consumer]) {
                inScope[consumer] = true;
                reached.push_back(consumer);
            }
        }
    }
}

void Plan::findSegments() {
    std::map<std::vector<std::size_t>, std::size_t> numbers{{{}, 0}};
    for (const std::size_t node : ordered) {
        poll.step();
        const bool hasOneTable = tables[node].size() == 1 && !storesTable(tables[node].front());
        if (categories[node] != KindCategory::Source && hasOneTable) {
            segmentsOf[node] = segmentsOf[tables[node].front()];
            continue;
        }
        std::vector<std::size_t> segments;
        if (categories[node] == KindCategory::Source) {
            segments = {node};
        } else {
            for (const std::size_t producer : tables[node]) {
                const std::vector<std::size_t> stored{producer};
                const std::vector<std::size_t>& more =
                    storesTable(producer) ? stored : segmentLists[segmentsOf[producer]];
                segments.insert(segments.end(), more.begin(), more.end());
            }
        }
        segments.resize(std::min(segments.size(), maxSegments(pipeline) + 1));
        const auto [known, isNew] = numbers.emplace(segments, segmentLists.size());
        if (isNew) {
            segmentLists.push_back(std::move(segments));
        }
        segmentsOf[node] = known->second;
    }
}

const OutputSpec* Plan::outputOf(const PipelineWire& wire) const {
    const std::vector<OutputSpec>& outputs = pipeline.nodes[wire.node].outputs;
    const auto found =
        std::find_if(outputs.begin(), outputs.end(), [&](const OutputSpec& spec) { return spec.name == wire.output; });
    return found == outputs.end() ? nullptr : &*found;
}

bool Plan::carriesTable(const PipelineInput& input) const {
    if (!input.wire || input.wire->node >= pipeline.nodes.size()) {
        return false;
    }
    const OutputSpec* output = outputOf(*input.wire);
    const bool givesRows = isStream(input.wire->node) || storesTable(input.wire->node);
    return output != nullptr && output->type == ValueType::Table && givesRows;
}

std::string Plan::validate(std::size_t node) const {
    const PipelineNode& checked = pipeline.nodes[node];
    if (!checked.kind) {
        return "no collection of this build offers the kind \"" + checked.kindName + "\"";
    }
    if (categories[node] == KindCategory::Unknown) {
        return "its kind belongs to none of the categories source, row-wise, concatenation, accumulator and function";
    }
    if (!cycleErrors[node].empty()) {
        return cycleErrors[node];
    }
    for (const PipelineInput& input : checked.inputs) {
        if (const std::string sentence = inputError(node, input); !sentence.empty()) {
            return aboutInput(input.spec.name, sentence);
        }
    }
    return categoryError(node);
}

std::string Plan::inputError(std::size_t node, const PipelineInput& input) const {
    const InputSpec& spec = input.spec;
    if (!input.wire) {
        const bool isMissing = !takesText(spec) && !spec.isOptional;
        const std::string wanted = spec.type == ValueType::Any ? "something" : article(typeName(spec.type));
        return isMissing ? "nothing is wired where " + wanted + " is needed" : "";
    }
    if (input.wire->node >= pipeline.nodes.size()) {
        return "it is wired to a plug-in that does not exist";
    }
    const PipelineNode& producer = pipeline.nodes[input.wire->node];
    const OutputSpec* output = outputOf(*input.wire);
    if (!producer.kind) {
        return "";  // The producer fails with a better message.
    }
    if (!output) {
        return "\"" + producer.name + "\" has no output \"" + input.wire->output + "\"";
    }
    if (!mayFeed(output->type, spec.type)) {
        return "output \"" + output->name + "\" of \"" + producer.name + "\" is " + article(typeName(output->type)) +
               ", where " + article(typeName(spec.type)) + " is needed";
    }
    const bool takesTables = categories[node] == KindCategory::RowWise ||
                             categories[node] == KindCategory::Concatenation ||
                             categories[node] == KindCategory::Accumulator;
    if (output->type == ValueType::Table && !takesTables) {
        return "output \"" + output->name + "\" of \"" + producer.name + "\" is a table, which this kind does not take";
    }
    return "";
}

std::string Plan::categoryError(std::size_t node) const {
    if (isRunReporter(node) && (categories[node] != KindCategory::Function || !pipeline.nodes[node].outputs.empty())) {
        return "its kind reports on the run and must therefore be a function without outputs";
    }
    if (segments(node).size() > maxSegments(pipeline)) {
        return "it would read more than " + std::to_string(maxSegments(pipeline)) + " tables one after the other";
    }
    const PipelineInput* first = nullptr;
    for (const PipelineInput& input : pipeline.nodes[node].inputs) {
        if (!carriesTable(input)) {
            continue;
        }
        if (first && categories[node] != KindCategory::Concatenation &&
            !takesWholeTable(*this, pipeline, node, input)) {
            return aboutInput(input.spec.name, "input \"" + first->spec.name +
                                                   "\" is wired to a table already; a plug-in takes only one");
        }
        first = first ? first : &input;
    }
    return isStream(node) && categories[node] != KindCategory::Source && !first ? "no table is wired" : "";
}

/// The error of the first node of a cycle lists its members; those of the others name the first.
void Plan::nameCycles() {
    std::vector<bool> isMember(pipeline.nodes.size(), false);
    for (const std::vector<std::size_t>& members : findCycles(consumersOf, isUnordered, poll)) {
        for (const std::size_t member : members) {
            poll.step();
            isMember[member] = true;
            cycleErrors[member] = "dependency cycle with \"" + shortened(pipeline.nodes[members.front()].name) + "\"";
        }
        cycleErrors[members.front()] = cycleError(members.front(), isMember);
        for (const std::size_t member : members) {
            isMember[member] = false;
        }
    }
}

std::string Plan::cycleError(std::size_t node, const std::vector<bool>& isMember) {
    constexpr std::size_t maxNamed = 10;
    // The shortest path back to the node, searched against the direction of the wires.
    std::unordered_map<std::size_t, std::size_t> next;
    std::deque<std::size_t> reached{node};
    for (; !reached.empty() && !next.contains(node); reached.pop_front()) {
        for (const std::size_t producer : upstreamOf[reached.front()]) {
            poll.step();
            if (isMember[producer] && next.emplace(producer, reached.front()).second) {
                reached.push_back(producer);
            }
        }
    }
    std::string path;
    std::size_t before = node;
    std::size_t others = 0;
    for (std::size_t at = next.at(node); at != node; at = next.at(at)) {
        if (++others < maxNamed) {
            path += " -> \"" + shortened(pipeline.nodes[at].name) + "\"";
        }
        before = at;
    }
    if (others >= maxNamed) {
        path += " -> (" + std::to_string(others - maxNamed + 1) + " more)";
    }
    const std::string name = "\"" + shortened(pipeline.nodes[node].name) + "\"";
    std::string sentence = "dependency cycle: " + name + path + " -> " + name;
    for (const PipelineInput& input : pipeline.nodes[node].inputs) {
        if (input.wire && input.wire->node == before) {
            return aboutInput(input.spec.name, sentence);
        }
    }
    return sentence;
}

}  // namespace velmorak
