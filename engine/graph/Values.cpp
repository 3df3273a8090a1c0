#include "graph/Values.h"

#include "graph/Log.h"
#include "graph/collections/KindCheck.h"
#include "graph/document/Json.h"

#include "run/messages/NodeError.h"

#include <optional>
#include <set>
#include <stdexcept>
#include <utility>

namespace velmorak {
namespace {

/// Calls a function of a kind. @return empty, or why it failed, without full stop.
template <typename Work>
std::string failureOf(Work&& work) {
    const std::optional<NodeError> error = errorIn(std::forward<Work>(work));
    return error ? withoutFullStop(error->sentence) : "";
}

std::string kindError(const Kind& kind, const InputSpec& spec, const std::string& value) {
    std::string refusal;
    const std::string failure = failureOf([&] { refusal = withoutFullStop(kind.refusal(spec.name, value)); });
    return failure.empty() ? refusal : failure;
}

template <typename Spec>
void removeDuplicateNames(std::vector<Spec>& specs) {
    std::set<std::string> names;
    std::erase_if(specs, [&](const Spec& spec) { return !names.insert(spec.name).second; });
}

}  // namespace

std::string valueError(const Kind* kind, const InputSpec& spec, const std::string& value) {
    if (validUtf8(value) != value) {
        return "the text is not UTF-8";
    }
    if (!kind) {
        return {};
    }
    if (!takesText(spec)) {
        const std::string wanted = spec.type == ValueType::Any ? "this value" : "a " + std::string(nameOf(spec.type));
        return "only a wire can supply " + wanted;
    }
    const std::string refusal = value == spec.value ? "" : typeError(spec, value);
    return refusal.empty() ? kindError(*kind, spec, value) : refusal;
}

Ports portsOf(const Kind& kind, const ValueTexts& values) {
    Ports ports = kind.ports(values);
    if (const std::string reason = portNameError(ports); !reason.empty()) {
        throw std::runtime_error(reason);
    }
    removeDuplicateNames(ports.inputs);
    removeDuplicateNames(ports.outputs);
    return ports;
}

std::string tryPorts(const Kind& kind, const ValueTexts& values, Ports& ports) {
    return failureOf([&] { ports = portsOf(kind, values); });
}

}  // namespace velmorak
