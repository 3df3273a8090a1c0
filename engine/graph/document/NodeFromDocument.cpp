#include "graph/document/NodeFromDocument.h"

#include "graph/Bindings.h"
#include "graph/Log.h"
#include "graph/NodeExtent.h"
#include "graph/Nodes.h"
#include "graph/PortChange.h"
#include "graph/Values.h"
#include "run/messages/Visible.h"

#include <algorithm>

namespace velmorak {
namespace {

constexpr std::size_t maxNotes = 20;

ValueType typeNamed(const std::string& name) {
    for (const ValueType type :
         {ValueType::Number, ValueType::Text, ValueType::Choice, ValueType::Table, ValueType::Histogram,
          ValueType::Profile, ValueType::Points, ValueType::Function, ValueType::Histograms}) {
        if (name == nameOf(type)) {
            return type;
        }
    }
    return ValueType::Any;
}

void addOutput(QzBase::Part& part, const std::string& name, const std::string& type) {
    QzBase::Output output;
    output.name = name;
    output.type = type;
    part.outputs.push_back(std::move(output));
    part.outputSpecs.push_back({name, {}, typeNamed(type)});
}

void addPortsOfDocument(QzBase::Part& part, const DocumentPlugin& plugin) {
    for (const DocumentInput& input : plugin.inputs) {
        QzBase::Input made;
        made.name = input.name;
        made.value = input.value.value_or("");
        part.inputs.push_back(std::move(made));
        InputSpec spec;
        spec.name = input.name;
        spec.type = input.value ? ValueType::Text : ValueType::Any;
        part.inputSpecs.push_back(std::move(spec));
    }
    for (const DocumentOutput& output : plugin.outputs) {
        addOutput(part, output.name, output.type);
    }
}

bool isGiven(const DocumentInput& input) {
    return input.from || (input.value && !input.value->empty());
}

/// @param withIdle whether inputs without wire and value count, too.
ValueTexts valuesIn(const DocumentPlugin& plugin, const GraphNode& fresh, bool withIdle) {
    ValueTexts values = valuesOf(fresh);
    for (const DocumentInput& input : plugin.inputs) {
        if (input.value && (withIdle || isGiven(input) || values.contains(input.name))) {
            values[input.name] = *input.value;
        } else if (withIdle || input.from) {
            values.try_emplace(input.name);
        }
    }
    return values;
}

/// Ports for the values in the document, or those of a new plug-in where the values cannot be used.
void applyPorts(GraphNode& node, const DocumentPlugin& plugin, LoadWarnings& notes) {
    Ports ports;
    const std::string reason = tryPorts(*QzBase::Part::of(node).kind, valuesIn(plugin, node, false), ports);
    if (reason.empty()) {
        changePorts(node, ports, {});
    } else {
        notes.add(plugin.line, nameForMessages(node) + ": " + reason);
    }
}

void applyValue(GraphNode& node, std::size_t position, const DocumentInput& input, LoadWarnings& notes) {
    QzBase::Part& part = QzBase::Part::of(node);
    if (!input.value) {
        return;
    }
    part.inputs[position].value = *input.value;
    const std::string reason = valueError(part.kind, part.inputSpecs[position], *input.value);
    if (!reason.empty()) {
        notes.add(input.line, nameForMessages(node) + ", input " + input.name + ": " + reason +
                                  "; the value is kept, but a run cannot use it");
    }
}

/// Inputs that the kind would have if they had a wire or a value. Nothing is lost without them.
class IdleInputs {
public:
    /// @param fresh before its ports are those of the document.
    IdleInputs(const DocumentPlugin& plugin, const GraphNode& fresh);

    std::size_t countIn(const DocumentPlugin& plugin, const GraphNode& node) const;
    bool contain(const DocumentInput& input) const;

private:
    Ports possible;
};

IdleInputs::IdleInputs(const DocumentPlugin& plugin, const GraphNode& fresh) {
    const std::string reason = tryPorts(*QzBase::Part::of(fresh).kind, valuesIn(plugin, fresh, true), possible);
    if (!reason.empty()) {
        possible = {};
    }
}

std::size_t IdleInputs::countIn(const DocumentPlugin& plugin, const GraphNode& node) const {
    return static_cast<std::size_t>(std::ranges::count_if(
        plugin.inputs, [&](const DocumentInput& input) { return node.InputIndex(input.name) < 0 && contain(input); }));
}

bool IdleInputs::contain(const DocumentInput& input) const {
    const bool isPossible = std::ranges::find(possible.inputs, input.name, &InputSpec::name) != possible.inputs.end();
    return isPossible && !isGiven(input) && input.foreign.empty();
}

void applyValues(GraphNode& node, const DocumentPlugin& plugin, const IdleInputs& idle, LoadWarnings& notes) {
    UnknownFields& unknownFields = QzBase::Part::of(node).unknownFields;
    for (const DocumentInput& input : plugin.inputs) {
        const int position = node.InputIndex(input.name);
        if (position >= 0) {
            applyValue(node, static_cast<std::size_t>(position), input, notes);
        } else if (!idle.contain(input)) {
            unknownFields.unknownInputs.push_back(input);
            unknownFields.unknownInputs.back().from.reset();
        }
    }
}

void copyForeignFields(QzBase::Part& part, const DocumentPlugin& plugin) {
    part.unknownFields.fields = plugin.foreign;
    for (const DocumentInput& input : plugin.inputs) {
        if (!input.foreign.empty()) {
            part.unknownFields.inputFields[input.name] = input.foreign;
        }
    }
    for (const DocumentOutput& output : plugin.outputs) {
        if (!output.foreign.empty()) {
            part.unknownFields.outputFields[output.name] = output.foreign;
        }
    }
}

/// A box keeps its head where the document has it: its position is that of its lower left corner.
void raiseBy(GraphNode& node, std::size_t idleInputs) {
    const std::size_t inputs = node.Inputs().size();
    const std::size_t rows = std::max(inputs, node.Outputs().size());
    const std::size_t formerRows = std::max(inputs + idleInputs, node.Outputs().size());
    if (rows > 0) {
        QzBase::Part::of(node).y +=
            fullExtent(node).height / static_cast<float>(rows) * static_cast<float>(formerRows - rows);
    }
}

std::unique_ptr<GraphNode> knownNode(QzManager& manager, std::size_t kind, const DocumentPlugin& plugin,
                                     const std::string& name, LoadWarnings& notes) {
    auto node = makeNode(manager, kind, name);
    const IdleInputs idle(plugin, *node);
    applyPorts(*node, plugin, notes);
    applyValues(*node, plugin, idle, notes);
    QzBase::Part::of(*node).y = plugin.y;
    raiseBy(*node, idle.countIn(plugin, *node));
    return node;
}

std::unique_ptr<GraphNode> unknownNode(QzManager& manager, const DocumentPlugin& plugin, const std::string& name,
                                       LoadWarnings& notes) {
    auto node = makeUnknownNode(manager, plugin.kind, name);
    addPortsOfDocument(QzBase::Part::of(*node), plugin);
    notes.add(plugin.line, shortened(name) + " is kept as it is: no collection offers its kind " + quote(plugin.kind));
    return node;
}

}  // namespace

LoadWarnings::~LoadWarnings() {
    if (count > maxNotes) {
        printMessage(file + ": " + std::to_string(count - maxNotes) + " more lines like these are left out.");
    }
}

void LoadWarnings::add(std::size_t line, const std::string& sentence) {
    if (++count <= maxNotes) {
        printMessage(file + ", line " + std::to_string(line) + ": " + sentence + ".");
    }
}

std::unique_ptr<GraphNode> nodeFromDocument(QzManager& manager, const DocumentPlugin& plugin, const std::string& name,
                                            LoadWarnings& notes) {
    const Catalogue& catalogue = QzManager::Part::of(manager).catalogue;
    const std::size_t kind = catalogue.find(plugin.kind);
    auto node = kind < catalogue.kinds().size() ? knownNode(manager, kind, plugin, name, notes)
                                                : unknownNode(manager, plugin, name, notes);
    QzBase::Part& part = QzBase::Part::of(*node);
    copyForeignFields(part, plugin);
    part.x = plugin.x;
    part.y = part.kind ? part.y : plugin.y;
    part.isExpanded = !plugin.isCollapsed;
    return node;
}

int outputForBinding(QzBase& node, const std::string& output) {
    const int found = outputIndex(node, output);
    QzBase::Part& part = QzBase::Part::of(node);
    if (found >= 0 || part.kind) {
        return found;
    }
    addOutput(part, output, "any");
    return static_cast<int>(part.outputs.size()) - 1;
}

}  // namespace velmorak
