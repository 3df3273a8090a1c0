#include "graph/Bindings.h"

#include "graph/ManagerImpl.h"

#include <algorithm>

namespace velmorak {

void bind(QzBase& receiver, std::size_t input, QzBase& sender, std::size_t output) {
    unbind(receiver, input);
    QzBase::Part& part = QzBase::Part::of(receiver);
    part.unknownFields.danglingSources.erase(part.inputs[input].name);
    part.inputs[input].source = &sender;
    part.inputs[input].sourceOutput = static_cast<std::uint32_t>(output);
    QzBase::Output& feeding = QzBase::Part::of(sender).outputs[output];
    feeding.consumers.push_back(&receiver);
    feeding.consumerInputs.push_back(static_cast<int>(input));
}

void unbind(QzBase& receiver, std::size_t input) {
    QzBase::Input& fed = QzBase::Part::of(receiver).inputs[input];
    if (!fed.source) {
        return;
    }
    QzBase::Output& feeding = QzBase::Part::of(*fed.source).outputs[fed.sourceOutput];
    for (std::size_t i = 0; i < feeding.consumers.size(); ++i) {
        if (feeding.consumers[i] == &receiver && feeding.consumerInputs[i] == static_cast<int>(input)) {
            feeding.consumers.erase(feeding.consumers.begin() + static_cast<std::ptrdiff_t>(i));
            feeding.consumerInputs.erase(feeding.consumerInputs.begin() + static_cast<std::ptrdiff_t>(i));
            break;
        }
    }
    fed.source = nullptr;
    fed.sourceOutput = 0;
}

void unbindAll(QzBase& node) {
    QzBase::Part& part = QzBase::Part::of(node);
    for (std::size_t input = 0; input < part.inputs.size(); ++input) {
        unbind(node, input);
    }
    for (QzBase::Output& output : part.outputs) {
        for (std::size_t i = 0; i < output.consumers.size(); ++i) {
            const auto input = static_cast<std::size_t>(output.consumerInputs[i]);
            QzBase::Input& fed = QzBase::Part::of(*output.consumers[i]).inputs[input];
            fed.source = nullptr;
            fed.sourceOutput = 0;
        }
        output.consumers.clear();
        output.consumerInputs.clear();
    }
}

int outputIndex(const QzBase& node, const std::string& output) {
    const auto& outputs = QzBase::Part::of(node).outputs;
    const auto found = std::ranges::find(outputs, output, &QzBase::Output::name);
    return found == outputs.end() ? -1 : static_cast<int>(found - outputs.begin());
}

}  // namespace velmorak
