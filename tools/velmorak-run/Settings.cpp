#include "Settings.h"

#include "graph/ManagerExtensions.h"
#include "graph/PortChange.h"

#include <velmorak/FormatMeasurement.h>
#include <velmorak/Text.h>
#include <velmorak/Utf8.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <map>
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

void checkUsable(const Pipeline& pipeline, const PipelineInput& input, const Setting& setting) {
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

/// A file name has at most 255 bytes; long ones end with a number that tells them apart.
std::string shortEnough(const std::string& name) {
    constexpr std::size_t maxBytes = 200;
    if (name.size() <= maxBytes) {
        return name;
    }
    std::uint64_t number = 0xcbf29ce484222325U;  // FNV-1a, the same on every machine.
    for (const char character : name) {
        number = (number ^ static_cast<unsigned char>(character)) * 0x100000001b3U;
    }
    std::size_t end = maxBytes;
    while (velmorak::isContinuationByte(name[end])) {
        --end;
    }
    return name.substr(0, end) + "~" + std::to_string(number);
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

/// @return the content of a text that is quoted as a whole, with "" for a quote; else the text.
std::string unquoted(const std::string& text) {
    if (text.size() < 2 || text.front() != '"' || text.back() != '"') {
        return text;
    }
    std::string content;
    for (std::size_t i = 1; i + 1 < text.size(); ++i) {
        const bool isDoubled = text[i] == '"' && i + 2 < text.size() && text[i + 1] == '"';
        if (text[i] == '"' && !isDoubled) {
            return text;
        }
        content += text[i];
        i += isDoubled ? 1 : 0;
    }
    return content;
}

/// Values of a list. Separators inside double quotes do not count; a value that is one quoted text loses the quotes,
/// and two of them inside give one.
std::vector<std::string> listed(const std::string& text, char separator) {
    std::vector<std::string> values(1);
    bool isQuoted = false;
    for (const char character : text) {
        isQuoted = isQuoted != (character == '"');
        if (character == separator && !isQuoted) {
            values.emplace_back();
        } else {
            values.back() += character;
        }
    }
    if (isQuoted) {
        throw UsageError("the list " + velmorak::quoted(text) + " has a quote without its end");
    }
    std::transform(values.begin(), values.end(), values.begin(), unquoted);
    return values;
}

/// @return semicolon where the list has one outside of quotes, so that values may have commas.
char separatorOf(const std::string& text) {
    bool isQuoted = false;
    for (const char character : text) {
        isQuoted = isQuoted != (character == '"');
        if (character == ';' && !isQuoted) {
            return ';';
        }
    }
    return ',';
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

/// Runs with different values have different folders.
void checkFolders(const std::vector<std::vector<Setting>>& points) {
    std::map<std::string, std::vector<std::string>> pointOfFolder;
    for (const std::vector<Setting>& point : points) {
        const std::vector<std::string> texts = textsOf(point);
        const std::string folder = folderNameOf(texts);
        if (pointOfFolder.emplace(folder, texts).first->second != texts) {
            throw UsageError("the scan has two runs whose results would be in " + velmorak::quoted(folder));
        }
    }
}

}  // namespace

Setting settingOf(const std::string& text) {
    return split(text, "PLUGIN.INPUT=VALUE");
}

void apply(QzManager& manager, const Setting& setting) {
    const std::size_t node = positionOf(velmorak::pipelineOf(manager), setting.plugin);
    velmorak::offerInput(manager, node, setting.input);
    const Pipeline pipeline = velmorak::pipelineOf(manager);
    const std::size_t input = inputOf(pipeline.nodes[node], setting.input);
    checkUsable(pipeline, pipeline.nodes[node].inputs[input], setting);
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
    const char separator = separatorOf(whole.value);
    const bool isList = separator == ';' || whole.value.find('"') != std::string::npos;
    const std::vector<std::string> parts = parted(whole.value, ':');
    const std::vector<std::string> values =
        !isList && parts.size() > 1 ? rangeOf(parts, whole.value) : listed(whole.value, separator);
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
    checkFolders(points);
    return points;
}

std::vector<std::string> textsOf(const std::vector<Setting>& point) {
    std::vector<std::string> texts;
    texts.reserve(point.size());
    for (const Setting& setting : point) {
        texts.push_back(setting.plugin + "." + setting.input + "=" + setting.value);
    }
    return texts;
}

std::vector<std::string> applyPoint(QzManager& manager, const std::vector<std::string>& settings,
                                    const std::vector<Setting>& point) {
    for (const Setting& setting : point) {
        apply(manager, setting);
    }
    std::vector<std::string> texts = textsOf(point);
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
    return shortEnough(name);
}
