#include "bindings.h"

PortRef sourceOf(const QzBase::Input& input) {
    if (!input.source) {
        return {};
    }
    const auto& outputs = input.source->Outputs();
    return input.sourceOutput < outputs.size() ? PortRef{input.source->name, outputs[input.sourceOutput].name}
                                               : PortRef{};
}

PortMap<PortRef> bindingsOf(QzBase& object) {
    PortMap<PortRef> bindings;
    const auto add = [&bindings](const QzBase& receiver, const QzBase::Input& input) {
        PortRef source = sourceOf(input);
        if (!source.empty()) {
            bindings[{receiver.name, input.name}] = std::move(source);
        }
    };
    for (const QzBase::Input& input : object.Inputs()) {
        add(object, input);
    }
    for (const QzBase::Output& output : object.Outputs()) {
        for (std::size_t i = 0; i < output.consumers.size(); ++i) {
            QzBase& consumer = *output.consumers[i];
            add(consumer, consumer.Inputs().at(static_cast<std::size_t>(output.consumerInputs.at(i))));
        }
    }
    return bindings;
}

bool isBound(QzBase& receiver, const std::string& input, QzBase& sender, const std::string& output) {
    const auto position = static_cast<std::size_t>(receiver.InputIndex(input));
    const auto& inputs = receiver.Inputs();
    if (position >= inputs.size() || inputs[position].source != &sender) {
        return false;
    }
    const auto& outputs = sender.Outputs();
    const std::size_t sourceOutput = inputs[position].sourceOutput;
    return sourceOutput < outputs.size() && outputs[sourceOutput].name == output;
}
