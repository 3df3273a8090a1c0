#include "ScanTable.h"

#include "run/NodeContext.h"
#include "run/messages/Visible.h"

#include <velmorak/Value.h>

#include <algorithm>
#include <iterator>
#include <optional>

namespace {

using velmorak::NodeReport;
using velmorak::NodeStatus;
using velmorak::Pipeline;
using velmorak::PipelineNode;
using velmorak::RunReport;

constexpr const char* errorSuffix = "_error";

std::string statusWordOf(const RunReport& report) {
    if (report.wasStopped) {
        return "stopped";
    }
    if (report.hasFailure()) {
        return "failed";
    }
    return report.skipped.empty() ? "done" : "files skipped";
}

std::string reasonOf(const Pipeline& pipeline, const RunReport& report) {
    for (std::size_t i = 0; i < std::min(pipeline.nodes.size(), report.nodes.size()); ++i) {
        if (report.nodes[i].status == NodeStatus::Failed) {
            return velmorak::titleOf(pipeline.nodes[i]) + ": " + velmorak::visible(report.nodes[i].sentence);
        }
    }
    return "";
}

bool hasOutput(const PipelineNode& node, const std::string& name) {
    return std::any_of(node.outputs.begin(), node.outputs.end(),
                       [&](const velmorak::OutputSpec& output) { return output.name == name; });
}

bool isErrorOfOther(const PipelineNode& node, const std::string& output) {
    const std::string suffix = errorSuffix;
    return output.size() > suffix.size() && output.ends_with(suffix) &&
           hasOutput(node, output.substr(0, output.size() - suffix.size()));
}

std::string csvField(const std::string& text) {
    if (text.find_first_of(",\"\r\n") == std::string::npos) {
        return text;
    }
    std::string field = "\"";
    for (const char character : text) {
        field += character;
        if (character == '"') {
            field += character;
        }
    }
    return field + "\"";
}

std::string joined(const std::vector<std::string>& fields) {
    std::string row;
    for (const std::string& field : fields) {
        row += (&field == &fields.front() ? "" : ",") + csvField(field);
    }
    return row + "\n";
}

}  // namespace

std::vector<std::vector<Setting>> scanPointsOf(const velmorak::JobPlan& plan) {
    std::vector<std::vector<Setting>> points;
    for (const velmorak::PlannedRun& run : plan.runs) {
        std::vector<std::string> texts;
        for (auto text = run.settings.rbegin(); text != run.settings.rend(); ++text) {
            if (folderNameOf(texts) == run.folder) {
                break;
            }
            texts.insert(texts.begin(), *text);
        }
        std::vector<Setting> point;
        std::transform(texts.begin(), texts.end(), std::back_inserter(point), settingOf);
        points.push_back(std::move(point));
    }
    return points;
}

ScanTable::ScanTable(const std::vector<std::vector<Setting>>& points) {
    for (const std::vector<Setting>& point : points) {
        ScanRun run;
        names.clear();
        for (const Setting& setting : point) {
            names.push_back(setting.plugin + "." + setting.input);
            run.values.push_back(setting.value);
        }
        run.folder = folderNameOf(textsOf(point));
        all.push_back(std::move(run));
    }
}

void ScanTable::add(std::size_t position, const Pipeline& pipeline, const RunReport& report) {
    ScanRun& run = all.at(position);
    run.status = statusWordOf(report);
    run.reason = reasonOf(pipeline, report);
    addNumbers(run, pipeline, report);
    for (const NodeReport& node : report.nodes) {
        for (const velmorak::RecordedFile& file : node.written) {
            run.files.push_back(file.name);
        }
    }
}

void ScanTable::addNumbers(ScanRun& run, const Pipeline& pipeline, const RunReport& report) {
    for (std::size_t i = 0; i < std::min(pipeline.nodes.size(), report.nodes.size()); ++i) {
        const PipelineNode& node = pipeline.nodes[i];
        const std::vector<velmorak::Value>& outputs = report.nodes[i].outputs;
        for (std::size_t j = 0; j < std::min(node.outputs.size(), outputs.size()); ++j) {
            const std::optional<velmorak::NumberWithError> number = velmorak::numberIn(outputs[j]);
            if (!number) {
                continue;
            }
            run.numbers[{i, j}] = {number->value(), number->error(), number->hasError()};
            const std::string& name = node.outputs[j].name;
            ScanQuantity& quantity = columns[{i, j}];
            quantity.plugin = node.name;
            quantity.output = name;
            quantity.hasErrors |= number->hasError() && !hasOutput(node, name + errorSuffix);
            quantity.isErrorOnly = isErrorOfOther(node, name);
        }
    }
}

ScanTable::Quantities ScanTable::changing() const {
    Quantities changing;
    for (const auto& [position, quantity] : columns) {
        std::optional<double> first;
        bool differs = false;
        for (const ScanRun& run : all) {
            if (const auto found = run.numbers.find(position); found != run.numbers.end()) {
                differs = differs || (first && *first != found->second.value);
                first = first.value_or(found->second.value);
            }
        }
        if (differs && !quantity.isErrorOnly) {
            changing.emplace(position, quantity);
        }
    }
    return changing;
}

std::string ScanTable::csv() const {
    std::vector<std::string> heading = names;
    heading.emplace_back("status");
    for (const auto& [position, quantity] : columns) {
        heading.push_back(quantity.name());
        if (quantity.hasErrors) {
            heading.push_back(quantity.name() + errorSuffix);
        }
    }
    heading.insert(heading.end(), {"folder", "reason"});
    std::string text = joined(heading);
    for (const ScanRun& run : all) {
        text += csvRow(run);
    }
    return text;
}

std::string ScanTable::csvRow(const ScanRun& run) const {
    std::vector<std::string> row = run.values;
    row.push_back(run.status);
    for (const auto& [position, quantity] : columns) {
        const auto found = run.numbers.find(position);
        const bool isThere = found != run.numbers.end();
        row.push_back(isThere ? velmorak::textOf(found->second.value) : "");
        if (quantity.hasErrors) {
            row.push_back(isThere && found->second.hasError ? velmorak::textOf(found->second.error) : "");
        }
    }
    row.insert(row.end(), {run.folder, run.reason});
    return joined(row);
}
