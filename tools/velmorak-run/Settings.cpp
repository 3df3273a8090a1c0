#include "Settings.h"

#include "graph/ManagerExtensions.h"

#include <velmorak/FormatMeasurement.h>
#include <velmorak/Text.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

namespace {

using velmorak::Pipeline;
using velmorak::PipelineInput;
using velmorak::PipelineNode;
using velmorak::suggestion;

constexpr double maxPoints = 10000.0;

template <typename Items, typename NameOf>
std::vector<std::string> namesOf(const Items& items, const NameOf& nameOf) {
    std::vector<std::string> names;
    std::transform(items.begin(), items.end(), std::back_inserter(names), nameOf);
    return names;
}

std::size_t positionOf(const Pipeline& pipeline, const std::string& plugin) {
    const std::vector<std::string> names = namesOf(pipeline.nodes, [](const PipelineNode& node) { return node.name; });
    const auto found = std::find(names.begin(), names.end(), plugin);
    if (found == names.end()) {
        throw UsageError("no plug-in is named " + velmorak::quoted(plugin) + suggestion(plugin, names));
    }
    return static_cast<std::size_t>(found - names.begin());
}

std::size_t inputOf(const PipelineNode& node, const std::string& input) {
    const std::vector<std::string> names =
        namesOf(node.inputs, [](const PipelineInput& each) { return each.spec.name; });
    const auto found = std::find(names.begin(), names.end(), input);
    if (found == names.end()) {
        throw UsageError("plug-in " + velmorak::quoted(node.name) + " has no input " + velmorak::quoted(input) +
                         suggestion(input, names));
    }
    return static_cast<std::size_t>(found - names.begin());
}

void refuseUnusable(const Pipeline& pipeline, const PipelineInput& input, const Setting& setting) {
    const std::string place = "input " + velmorak::quoted(setting.input) + " of " + velmorak::quoted(setting.plugin);
    if (input.wire) {
        throw UsageError(place + " is fed by " + velmorak::quoted(pipeline.nodes[input.wire->node].name) +
                         "; a value would have no effect");
    }
    const std::vector<std::string>& choices = input.spec.choices;
    if (!choices.empty() && std::find(choices.begin(), choices.end(), setting.value) == choices.end()) {
        throw UsageError(place + " does not take " + velmorak::quoted(setting.value) +
                         suggestion(setting.value, choices));
    }
}

Setting split(const std::string& text, const std::string& form) {
    const std::size_t equals = text.find('=');
    const std::size_t dot = equals == std::string::npos ? equals : text.rfind('.', equals);
    if (dot == std::string::npos || dot == 0 || dot + 1 == equals) {
        throw UsageError(velmorak::quoted(text) + " does not have the form " + form);
    }
    return {text.substr(0, dot), text.substr(dot + 1, equals - dot - 1), text.substr(equals + 1)};
}

std::vector<std::string> parted(const std::string& text, char separator) {
    std::vector<std::string> parts;
    std::size_t begin = 0;
    for (std::size_t end = 0; end != std::string::npos; begin = end + 1) {
        end = text.find(separator, begin);
        parts.push_back(text.substr(begin, end == std::string::npos ? end : end - begin));
    }
    return parts;
}

std::vector<std::string> rangeOf(const std::vector<std::string>& parts, const std::string& text) {
    double from = 0.0;
    double to = 0.0;
    double step = 0.0;
    const bool isRead = parts.size() == 3 && velmorak::readNumber(parts[0], from) &&
                        velmorak::readNumber(parts[1], to) && velmorak::readNumber(parts[2], step);
    // A step that meets the end but for rounding counts as meeting it.
    const double steps = std::floor((to - from) / step + 1e-9);
    if (!isRead || !(steps >= 0.0) || !(steps < maxPoints)) {
        throw UsageError(velmorak::quoted(text) + " is not a range from:to:step with at most 10000 values");
    }
    std::vector<std::string> values;
    for (int i = 0; i <= static_cast<int>(steps); ++i) {
        values.push_back(velmorak::formatNumber(from + i * step));
    }
    return values;
}

}  // namespace

Setting settingOf(const std::string& text) {
    return split(text, "PLUGIN.INPUT=VALUE");
}

void apply(QzManager& manager, const Setting& setting) {
    const Pipeline pipeline = velmorak::pipelineOf(manager);
    const std::size_t node = positionOf(pipeline, setting.plugin);
    const std::size_t input = inputOf(pipeline.nodes[node], setting.input);
    refuseUnusable(pipeline, pipeline.nodes[node].inputs[input], setting);
    manager.SetInputValue(static_cast<int>(node), static_cast<int>(input), setting.value);
    const std::string& now = manager.plugins[node]->Inputs()[input].value;
    if (now != setting.value) {
        throw UsageError("input " + velmorak::quoted(setting.input) + " of " + velmorak::quoted(setting.plugin) +
                         " does not take " + velmorak::quoted(setting.value) + "; it is " + velmorak::quoted(now));
    }
}

void startAt(QzManager& manager, const std::string& plugin) {
    manager.SetStart(static_cast<int>(positionOf(velmorak::pipelineOf(manager), plugin)));
}

std::vector<Setting> scanOf(const std::string& text) {
    const Setting whole = split(text, "PLUGIN.INPUT=from:to:step or PLUGIN.INPUT=a,b,c");
    const std::vector<std::string> parts = parted(whole.value, ':');
    const std::vector<std::string> values = parts.size() > 1 ? rangeOf(parts, whole.value) : parted(whole.value, ',');
    std::vector<Setting> points;
    points.reserve(values.size());
    for (const std::string& value : values) {
        points.push_back({whole.plugin, whole.input, value});
    }
    return points;
}

std::vector<std::vector<Setting>> pointsOf(const std::vector<std::string>& scans) {
    std::vector<std::vector<Setting>> points(1);
    for (const std::string& text : scans) {
        const std::vector<Setting> values = scanOf(text);
        if (static_cast<double>(points.size() * values.size()) > maxPoints) {
            throw UsageError("the scans have more than 10000 combinations");
        }
        std::vector<std::vector<Setting>> longer;
        for (const std::vector<Setting>& point : points) {
            for (const Setting& value : values) {
                longer.push_back(point);
                longer.back().push_back(value);
            }
        }
        points = std::move(longer);
    }
    return points;
}

std::vector<std::string> applyPoint(QzManager& manager, const std::vector<std::string>& settings,
                                    const std::vector<Setting>& point) {
    std::vector<std::string> texts;
    for (const Setting& setting : point) {
        apply(manager, setting);
        texts.push_back(setting.plugin + "." + setting.input + "=" + setting.value);
    }
    std::vector<std::string> all = settings;
    all.insert(all.end(), texts.begin(), texts.end());
    velmorak::recordSettings(manager, all);
    return texts;
}

std::string folderNameOf(const std::vector<std::string>& settings) {
    std::string name;
    for (const std::string& setting : settings) {
        name += (name.empty() ? "" : ",") + setting;
    }
    std::replace(name.begin(), name.end(), '/', '_');
    return name;
}
