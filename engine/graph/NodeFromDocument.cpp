#include "graph/NodeFromDocument.h"

#include "graph/Bindings.h"
#include "graph/Log.h"
#include "graph/Nodes.h"
#include "graph/PortChange.h"
#include "graph/Values.h"
#include "run/Visible.h"

namespace velmorak {
namespace {

constexpr std::size_t maxNotes = 20;

ValueType typeNamed(const std::string& name) {
    for (const ValueType type : {ValueType::Number, ValueType::Text, ValueType::Choice, ValueType::Table,
                                 ValueType::Histogram, ValueType::Profile, ValueType::Points, ValueType::Function}) {
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

/// Ports as the document's values make them, or as those of a new plug-in where they cannot be used.
void takePorts(GraphNode& node, const DocumentPlugin& plugin, LoadNotes& notes) {
    ValueTexts values = valuesOf(node);
    for (const DocumentInput& input : plugin.inputs) {
        if (input.value) {
            values[input.name] = *input.value;
        }
    }
    Ports ports;
    const std::string reason = tryPorts(*QzBase::Part::of(node).kind, values, ports);
    if (reason.empty()) {
        changePorts(node, ports, {});
    } else {
        notes.add(plugin.line, nameForMessages(node) + ": " + reason);
    }
}

void takeValue(GraphNode& node, std::size_t position, const DocumentInput& input, LoadNotes& notes) {
    QzBase::Part& part = QzBase::Part::of(node);
    if (!input.value) {
        return;
    }
    part.inputs[position].value = *input.value;
    const std::string reason = refusalOf(part.kind, part.inputSpecs[position], *input.value);
    if (!reason.empty()) {
        notes.add(input.line, nameForMessages(node) + ", input " + input.name + ": " + reason +
                                  "; the value is kept, but a run cannot use it");
    }
}

void takeValues(GraphNode& node, const DocumentPlugin& plugin, LoadNotes& notes) {
    UnknownFields& keepsakes = QzBase::Part::of(node).keepsakes;
    for (const DocumentInput& input : plugin.inputs) {
        const int position = node.InputIndex(input.name);
        if (position >= 0) {
            takeValue(node, static_cast<std::size_t>(position), input, notes);
        } else {
            keepsakes.strayInputs.push_back(input);
            keepsakes.strayInputs.back().from.reset();
        }
    }
}

void takeForeignFields(QzBase::Part& part, const DocumentPlugin& plugin) {
    part.keepsakes.fields = plugin.foreign;
    for (const DocumentInput& input : plugin.inputs) {
        if (!input.foreign.empty()) {
            part.keepsakes.inputFields[input.name] = input.foreign;
        }
    }
    for (const DocumentOutput& output : plugin.outputs) {
        if (!output.foreign.empty()) {
            part.keepsakes.outputFields[output.name] = output.foreign;
        }
    }
}

std::unique_ptr<GraphNode> knownNode(QzManager& manager, std::size_t kind, const DocumentPlugin& plugin,
                                     const std::string& name, LoadNotes& notes) {
    auto node = makeNode(manager, kind, name);
    takePorts(*node, plugin, notes);
    takeValues(*node, plugin, notes);
    return node;
}

std::unique_ptr<GraphNode> unknownNode(QzManager& manager, const DocumentPlugin& plugin, const std::string& name,
                                       LoadNotes& notes) {
    auto node = makeUnknownNode(manager, plugin.kind, name);
    addPortsOfDocument(QzBase::Part::of(*node), plugin);
    notes.add(plugin.line, shortened(name) + " is kept as it is: no collection offers its kind " + quote(plugin.kind));
    return node;
}

}  // namespace

LoadNotes::~LoadNotes() {
    if (count > maxNotes) {
        printMessage(file + ": " + std::to_string(count - maxNotes) + " more lines like these are left out.");
    }
}

void LoadNotes::add(std::size_t line, const std::string& sentence) {
    if (++count <= maxNotes) {
        printMessage(file + ", line " + std::to_string(line) + ": " + sentence + ".");
    }
}

std::unique_ptr<GraphNode> nodeFromDocument(QzManager& manager, const DocumentPlugin& plugin, const std::string& name,
                                            LoadNotes& notes) {
    const Catalogue& catalogue = QzManager::Part::of(manager).catalogue;
    const std::size_t kind = catalogue.find(plugin.kind);
    auto node = kind < catalogue.kinds().size() ? knownNode(manager, kind, plugin, name, notes)
                                                : unknownNode(manager, plugin, name, notes);
    QzBase::Part& part = QzBase::Part::of(*node);
    takeForeignFields(part, plugin);
    part.x = plugin.x;
    part.y = plugin.y;
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
