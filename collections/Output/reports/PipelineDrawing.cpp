#include "PipelineDrawing.h"

#include "Html.h"
#include "Output/plots/text/PlotText.h"

#include <velmorak/Utf8.h>
#include <velmorak/Value.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>
#include <vector>

namespace velmorak {

namespace {

constexpr double headHeight = 30.0;
constexpr double rowHeight = 20.0;
constexpr double margin = 12.0;
constexpr double titleCharacter = 8.8;
constexpr double kindCharacter = 6.4;
constexpr double portCharacter = 6.4;

/// Box of a plug-in in canvas units, y downwards.
struct Box {
    double left = 0.0;
    double top = 0.0;
    double width = 0.0;
    double height = 0.0;
    std::vector<std::string> inputs;
    std::vector<std::string> outputs;

    double rowAt(std::size_t row) const { return top + headHeight + (static_cast<double>(row) + 0.5) * rowHeight; }
};

using Boxes = std::map<std::string, Box>;

std::string number(double value) {
    return textOf(std::round(10.0 * value) / 10.0);
}

std::size_t longest(const std::vector<std::string>& names) {
    std::size_t most = 0;
    for (const std::string& name : names) {
        most = std::max(most, characterCount(name));
    }
    return most;
}

/// A box at its place, with the inputs that are wired.
Box placedBox(const RecordedPlugin& plugin) {
    Box box;
    // The record has the lower left corner of the full box, even if fewer ports are drawn.
    const auto rows = static_cast<double>(std::max(plugin.inputs.size(), plugin.outputs.size()));
    box.left = plugin.x;
    box.top = -(static_cast<double>(plugin.y) + rowHeight * rows + headHeight);
    for (const RecordedInput& input : plugin.inputs) {
        if (!input.plugin.empty()) {
            box.inputs.push_back(input.name);
        }
    }
    return box;
}

/// Adds the outputs that feed the plug-in to their boxes.
void addWiredOutputs(const RecordedPlugin& plugin, Boxes& boxes) {
    for (const RecordedInput& input : plugin.inputs) {
        const auto producer = boxes.find(input.plugin);
        if (producer == boxes.end()) {
            continue;
        }
        std::vector<std::string>& outputs = producer->second.outputs;
        if (std::find(outputs.begin(), outputs.end(), input.output) == outputs.end()) {
            outputs.push_back(input.output);
        }
    }
}

void setSize(const RecordedPlugin& plugin, Box& box) {
    const double heading = std::max(titleCharacter * static_cast<double>(characterCount(plugin.name)),
                                    kindCharacter * static_cast<double>(characterCount(plugin.kind)));
    const auto ports = static_cast<double>(longest(box.inputs) + longest(box.outputs));
    box.width = 14.0 + std::max(heading, portCharacter * ports + 14.0);
    box.height = headHeight + rowHeight * static_cast<double>(std::max(box.inputs.size(), box.outputs.size()));
}

Boxes placedBoxes(const RunRecord& record) {
    Boxes boxes;
    for (const RecordedPlugin& plugin : record.plugins) {
        boxes[plugin.name] = placedBox(plugin);
    }
    for (const RecordedPlugin& plugin : record.plugins) {
        addWiredOutputs(plugin, boxes);
    }
    for (const RecordedPlugin& plugin : record.plugins) {
        setSize(plugin, boxes[plugin.name]);
    }
    return boxes;
}

std::string label(double x, double y, const std::string& text, const std::string& style) {
    return "<text x=\"" + number(x) + "\" y=\"" + number(y) + "\" " + style + ">" + escaped(text) + "</text>\n";
}

std::string frameStyle(RecordedState state) {
    if (state == RecordedState::Failed) {
        return R"(stroke="#C00000" stroke-width="3")";
    }
    const bool isMissing = state == RecordedState::NotRun || state == RecordedState::Unfinished;
    return isMissing ? R"(stroke="#C00000" stroke-width="1.5" stroke-dasharray="5 3")"
                     : R"(stroke="#404040" stroke-width="1")";
}

std::string drawnBox(const RecordedPlugin& plugin, const Box& box, bool isStart) {
    std::string text = "<g>" + element("title", plugin.kind + " \"" + plugin.name + "\"") + "\n";
    text += "<rect x=\"" + number(box.left) + "\" y=\"" + number(box.top) + "\" width=\"" + number(box.width) +
            "\" height=\"" + number(box.height) + R"(" rx="4" fill=")" + (isStart ? "#80E666" : "#E6E666") + "\" " +
            frameStyle(plugin.state) + "/>\n";
    text += label(box.left + 7, box.top + 13, plugin.name, R"(font-size="12" font-weight="bold")");
    text += label(box.left + 7, box.top + 25, plugin.kind, R"(font-size="10" fill="#404040")");
    for (std::size_t i = 0; i < box.inputs.size(); ++i) {
        text += label(box.left + 7, box.rowAt(i) + 3.5, box.inputs[i], "font-size=\"10\"");
    }
    for (std::size_t i = 0; i < box.outputs.size(); ++i) {
        text +=
            label(box.left + box.width - 7, box.rowAt(i) + 3.5, box.outputs[i], R"(font-size="10" text-anchor="end")");
    }
    return text + "</g>\n";
}

std::size_t rowOf(const std::vector<std::string>& names, const std::string& name) {
    return static_cast<std::size_t>(std::find(names.begin(), names.end(), name) - names.begin());
}

std::string drawnWire(const Box& from, std::size_t outputRow, const Box& to, std::size_t inputRow) {
    const double x1 = from.left + from.width;
    const double y1 = from.rowAt(outputRow);
    const double x2 = to.left;
    const double y2 = to.rowAt(inputRow);
    const double reach = std::max(25.0, 0.5 * std::abs(x2 - x1));
    return "<path d=\"M" + number(x1) + " " + number(y1) + " C" + number(x1 + reach) + " " + number(y1) + " " +
           number(x2 - reach) + " " + number(y2) + " " + number(x2) + " " + number(y2) +
           R"(" fill="none" stroke="#0072B2" stroke-width="1.5"/>)" + "\n";
}

std::string opening(const Boxes& boxes) {
    double left = 1e9;
    double top = 1e9;
    double right = -1e9;
    double bottom = -1e9;
    for (const auto& [name, box] : boxes) {
        left = std::min(left, box.left);
        top = std::min(top, box.top);
        right = std::max(right, box.left + box.width);
        bottom = std::max(bottom, box.top + box.height);
    }
    const double width = right - left + 2 * margin;
    return R"(<svg class="pipeline" viewBox=")" + number(left - margin) + " " + number(top - margin) + " " +
           number(width) + " " + number(bottom - top + 2 * margin) +
           "\" style=\"max-width:" + number(std::max(1.6 * width, 300.0)) + "px\" role=\"img\">\n";
}

}  // namespace

std::string drawnPipeline(const RunRecord& record) {
    const Boxes boxes = placedBoxes(record);
    if (boxes.empty()) {
        return {};
    }
    std::string text = opening(boxes);
    for (const RecordedPlugin& plugin : record.plugins) {
        for (const RecordedInput& input : plugin.inputs) {
            if (const auto producer = boxes.find(input.plugin); producer != boxes.end()) {
                const Box& to = boxes.at(plugin.name);
                text += drawnWire(producer->second, rowOf(producer->second.outputs, input.output), to,
                                  rowOf(to.inputs, input.name));
            }
        }
    }
    for (const RecordedPlugin& plugin : record.plugins) {
        text += drawnBox(plugin, boxes.at(plugin.name), &plugin == &record.plugins.front());
    }
    return text + "</svg>\n";
}

}  // namespace velmorak
