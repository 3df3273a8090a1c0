#include "graph/PortChange.h"

#include "graph/Bindings.h"
#include "graph/ManagerImpl.h"
#include "graph/PortTexts.h"
#include "graph/Values.h"

#include <algorithm>

namespace velmorak {
namespace {

/// New position of each port by its old one, -1 for a removed port.
struct Moves {
    std::vector<int> inputs;
    std::vector<int> outputs;
};

template <typename Port, typename Spec>
std::vector<int> movesOf(const std::vector<Port>& ports, const std::vector<Spec>& specs) {
    std::vector<int> moves;
    for (const Port& port : ports) {
        const auto found = std::ranges::find(specs, port.name, &Spec::name);
        moves.push_back(found == specs.end() ? -1 : static_cast<int>(found - specs.begin()));
    }
    return moves;
}

void unbindRemovedPorts(QzBase& node, const Moves& moves) {
    QzBase::Part& part = QzBase::Part::of(node);
    for (std::size_t i = 0; i < part.inputs.size(); ++i) {
        if (moves.inputs[i] < 0) {
            unbind(node, i);
        }
    }
    for (std::size_t i = 0; i < part.outputs.size(); ++i) {
        while (moves.outputs[i] < 0 && !part.outputs[i].consumers.empty()) {
            unbind(*part.outputs[i].consumers.back(), static_cast<std::size_t>(part.outputs[i].consumerInputs.back()));
        }
    }
}

std::string firstValue(QzBase::Part& part, const InputSpec& spec) {
    if (!takesText(spec)) {
        return {};
    }
    auto& strays = part.unknownFields.unknownInputs;
    const auto stray = std::ranges::find(strays, spec.name, &UnknownInput::name);
    if (stray == strays.end()) {
        return spec.value;
    }
    std::string value = stray->value.value_or(spec.value);
    part.unknownFields.inputFields[spec.name] = stray->foreign;
    strays.erase(stray);
    return valueError(part.kind, spec, value).empty() ? value : spec.value;
}

void replaceInputs(QzBase::Part& part, const Ports& ports, const std::vector<int>& moves) {
    const std::vector<InputSpec>& specs = ports.inputs;
    std::vector<QzBase::Input> made(specs.size());
    std::vector<bool> isKept(specs.size(), false);
    for (std::size_t i = 0; i < part.inputs.size(); ++i) {
        if (moves[i] >= 0) {
            const auto place = static_cast<std::size_t>(moves[i]);
            made[place] = std::move(part.inputs[i]);
            isKept[place] = part.inputSpecs[i].type == specs[place].type;
        }
    }
    for (std::size_t i = 0; i < specs.size(); ++i) {
        made[i].name = specs[i].name;
        made[i].description = descriptionOf(specs[i], ports);
        if (!isKept[i]) {
            made[i].value = firstValue(part, specs[i]);
        }
    }
    part.inputs = std::move(made);
    part.inputSpecs = specs;
}

void replaceOutputs(QzBase::Part& part, const std::vector<OutputSpec>& specs, const std::vector<int>& moves) {
    std::vector<QzBase::Output> made(specs.size());
    for (std::size_t i = 0; i < part.outputs.size(); ++i) {
        if (moves[i] >= 0) {
            made[static_cast<std::size_t>(moves[i])] = std::move(part.outputs[i]);
        }
    }
    for (std::size_t i = 0; i < specs.size(); ++i) {
        made[i].name = specs[i].name;
        made[i].type = nameOf(specs[i].type);
        made[i].description = descriptionOf(specs[i]);
    }
    part.outputs = std::move(made);
    part.outputSpecs = specs;
}

/// Updates the far ends of the node's wires, in other plug-ins or in the node itself.
void followMoves(const QzBase& node, const Moves& moves, QzBase& other) {
    QzBase::Part& part = QzBase::Part::of(other);
    for (QzBase::Input& input : part.inputs) {
        if (input.source == &node) {
            input.sourceOutput = static_cast<std::uint32_t>(moves.outputs[input.sourceOutput]);
        }
    }
    for (QzBase::Output& output : part.outputs) {
        for (std::size_t i = 0; i < output.consumers.size(); ++i) {
            if (output.consumers[i] == &node) {
                output.consumerInputs[i] = moves.inputs[static_cast<std::size_t>(output.consumerInputs[i])];
            }
        }
    }
}

}  // namespace

ValueTexts valuesOf(const QzBase& node) {
    const QzBase::Part& part = QzBase::Part::of(node);
    ValueTexts values;
    for (const UnknownInput& stray : part.unknownFields.unknownInputs) {
        if (stray.value && !stray.value->empty()) {
            values[stray.name] = *stray.value;
        }
    }
    for (std::size_t i = 0; i < part.inputs.size(); ++i) {
        const QzBase::Input& input = part.inputs[i];
        if (input.source || !input.value.empty() || !part.inputSpecs[i].value.empty()) {
            values[input.name] = input.value;
        }
    }
    return values;
}

std::string tryPortsWith(const QzBase& node, const std::string& input, const std::string& value, Ports& ports) {
    const QzBase::Part& part = QzBase::Part::of(node);
    ValueTexts values = valuesOf(node);
    const int position = node.InputIndex(input);
    const QzBase* const source = position >= 0 ? part.inputs[static_cast<std::size_t>(position)].source : nullptr;
    const bool hasDefault = position >= 0 && !part.inputSpecs[static_cast<std::size_t>(position)].value.empty();
    if (value.empty() && !source && !hasDefault) {
        values.erase(input);
    } else {
        values[input] = value;
    }
    return tryPorts(*part.kind, values, ports);
}

void changePorts(QzBase& node, const Ports& ports, const std::vector<QzBase*>& others) {
    QzBase::Part& part = QzBase::Part::of(node);
    const Moves moves{movesOf(part.inputs, ports.inputs), movesOf(part.outputs, ports.outputs)};
    unbindRemovedPorts(node, moves);
    replaceInputs(part, ports, moves.inputs);
    replaceOutputs(part, ports.outputs, moves.outputs);
    for (QzBase* other : others) {
        followMoves(node, moves, *other);
    }
}

bool offerInput(QzManager& manager, std::size_t position, const std::string& input) {
    QzBase& node = *manager.plugins[position];
    if (node.InputIndex(input) >= 0) {
        return true;
    }
    if (!QzBase::Part::of(node).kind) {
        return false;
    }
    Ports ports;
    if (!tryPortsWith(node, input, "0", ports).empty() ||
        std::ranges::find(ports.inputs, input, &InputSpec::name) == ports.inputs.end()) {
        return false;
    }
    const std::lock_guard guard(QzManager::Part::of(manager).lock);
    changePorts(node, ports, manager.plugins);
    return true;
}

}  // namespace velmorak
