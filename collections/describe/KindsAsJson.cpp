#include "KindsAsJson.h"

#include <nlohmann/json.hpp>

#include <cmath>
#include <ostream>

namespace velmorak {
namespace {

using Json = nlohmann::ordered_json;

Json inputAsJson(const InputSpec& input) {
    Json json = {
        {"name", input.name}, {"description", input.description}, {"type", nameOf(input.type)}, {"value", input.value}};
    if (!input.choices.empty()) {
        json["choices"] = input.choices;
    }
    if (std::isfinite(input.minimum)) {
        json["minimum"] = input.minimum;
    }
    if (std::isfinite(input.maximum)) {
        json["maximum"] = input.maximum;
    }
    json["integer"] = input.isInteger;
    json["optional"] = input.isOptional;
    return json;
}

std::string shapeOf(const Kind& kind) {
    return dynamic_cast<const Source*>(&kind)          ? "source"
           : dynamic_cast<const RowWise*>(&kind)       ? "row-wise"
           : dynamic_cast<const Concatenation*>(&kind) ? "concatenation"
           : dynamic_cast<const Accumulator*>(&kind)   ? "accumulator"
                                                       : "function";
}

Json kindAsJson(const GroupOfKinds& group, const Kind& kind) {
    const Ports ports = kind.ports({});
    Json inputs = Json::array();
    for (const InputSpec& input : ports.inputs) {
        inputs.push_back(inputAsJson(input));
    }
    Json outputs = Json::array();
    for (const OutputSpec& output : ports.outputs) {
        outputs.push_back({{"name", output.name}, {"description", output.description}, {"type", nameOf(output.type)}});
    }
    return {{"group", group.name},       {"name", kind.name()}, {"shape", shapeOf(kind)}, {"summary", kind.summary()},
            {"version", kind.version()}, {"inputs", inputs},    {"outputs", outputs}};
}

}  // namespace

bool writeJson(const std::vector<GroupOfKinds>& groups, std::ostream& stream) {
    Json kinds = Json::array();
    for (const GroupOfKinds& group : groups) {
        for (const auto& kind : group.kinds) {
            kinds.push_back(kindAsJson(group, *kind));
        }
    }
    stream << kinds.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
    return static_cast<bool>(stream.flush());
}

}  // namespace velmorak
