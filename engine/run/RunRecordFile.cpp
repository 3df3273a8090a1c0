#include "run/RunRecordFile.h"

#include "run/ResultsPlace.h"
#include "run/Version.h"
#include "store/Sha256.h"

#include <velmorak/ObjectBytes.h>

#include <fmt/chrono.h>
#include <fmt/format.h>
#include <unistd.h>
#include <nlohmann/json.hpp>

#include <fstream>
#include <new>
#include <stdexcept>
#include <system_error>

namespace velmorak {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

std::string sumOf(std::string_view bytes) {
    Sha256 digester;
    digester.add(bytes.data(), bytes.size());
    return hexOf(digester.finish());
}

std::string sumOf(const DataObject& object) {
    Sha256 digester;
    bytesOf(object, [&](std::string_view piece) { digester.add(piece.data(), piece.size()); });
    return hexOf(digester.finish());
}

std::string timeText(std::chrono::system_clock::time_point time) {
    const auto milliseconds = std::chrono::floor<std::chrono::milliseconds>(time);
    const auto seconds = std::chrono::floor<std::chrono::seconds>(milliseconds);
    return fmt::format("{:%Y-%m-%dT%H:%M:%S}.{:03}Z", fmt::gmtime(std::chrono::system_clock::to_time_t(seconds)),
                       (milliseconds - seconds).count());
}

Json documentOf(const Pipeline& pipeline) {
    return {{"file", pipeline.document.string()},
            {"sha256", sumOf(pipeline.documentText)},
            {"text", pipeline.documentText}};
}

Json filesOf(const std::vector<RecordedFile>& files) {
    Json all = Json::array();
    for (const RecordedFile& file : files) {
        all.push_back({{"file", file.name}, {"sha256", file.sha256}});
    }
    return all;
}

/// A sum over the value; null where there is none, or only its collection knows what it is.
Json valueSum(const Value& value) {
    if (const auto* number = std::get_if<double>(&value)) {
        return textOf(*number);
    }
    if (const auto* text = std::get_if<std::string>(&value)) {
        return sumOf(*text);
    }
    try {
        const auto* object = std::get_if<DataObjectPtr>(&value);
        return object ? Json(sumOf(**object)) : Json();
    } catch (const std::invalid_argument&) {
        return {};
    } catch (const std::bad_alloc&) {
        return {};  // A result that is there is worth more than its sum.
    } catch (const std::length_error&) {
        return {};
    }
}

Json outputsOf(const PipelineNode& node, const NodeReport& report) {
    Json all = Json::array();
    for (std::size_t i = 0; i < std::min(node.outputs.size(), report.outputs.size()); ++i) {
        if (const Json sum = valueSum(report.outputs[i]); !sum.is_null()) {
            const bool isNumber = std::holds_alternative<double>(report.outputs[i]);
            all.push_back({{"name", node.outputs[i].name}, {isNumber ? "value" : "sha256", sum}});
        }
    }
    return all;
}

Json inputsOf(const Pipeline& pipeline, const PipelineNode& node) {
    Json all = Json::array();
    for (const PipelineInput& input : node.inputs) {
        if (input.wire && input.wire->node < pipeline.nodes.size()) {
            all.push_back(
                {{"name", input.spec.name}, {"from", {pipeline.nodes[input.wire->node].name, input.wire->output}}});
        } else {
            all.push_back({{"name", input.spec.name}, {"value", input.value}});
        }
    }
    return all;
}

Json pluginOf(const Pipeline& pipeline, std::size_t position, const NodeReport& report) {
    const PipelineNode& node = pipeline.nodes[position];
    return {{"name", node.name},
            {"kind", node.kindName},
            {"version", node.kind ? node.kind->version() : 0},
            {"inputs", inputsOf(pipeline, node)},
            {"outcome", nameOf(report.status)},
            {"sentence", report.sentence},
            {"reason", report.reason},
            {"rowsIn", report.rowsIn},
            {"rowsOut", report.rowsOut},
            {"seconds", report.seconds},
            {"outputs", outputsOf(node, report)},
            {"results", filesOf(report.written)}};
}

/// Values of the inputs that are seeds of random numbers, by plug-in.
Json seedsOf(const Pipeline& pipeline) {
    Json seeds = Json::object();
    for (const PipelineNode& node : pipeline.nodes) {
        for (const PipelineInput& input : node.inputs) {
            if (input.spec.isSeed && !input.wire) {
                seeds[node.name] = input.value;
            }
        }
    }
    return seeds;
}

}  // namespace

std::string_view nameOf(NodeStatus status) {
    switch (status) {
        case NodeStatus::Done:
            return "done";
        case NodeStatus::Reused:
            return "reused";
        case NodeStatus::Failed:
            return "failed";
        case NodeStatus::Skipped:
            return "skipped";
        case NodeStatus::Unfinished:
            return "unfinished";
        case NodeStatus::NotRequested:
            break;
    }
    return "not asked";
}

std::string runFileText(const Pipeline& pipeline, const RunReport& report, bool isOver) {
    Json record{{"run", 1}, {"velmorak", version()}};
    record["complete"] = isOver && !report.wasStopped;
    record["began"] = timeText(report.began);
    record["seconds"] = report.seconds;
    record["threads"] = report.threads;
    record["document"] = documentOf(pipeline);
    record["settings"] = pipeline.settings;
    record["aida"] = pipeline.commandLineAida.string();
    record["seed"] = seedsOf(pipeline);
    record["inputs"] = filesOf(report.files);
    record["plugins"] = Json::array();
    for (std::size_t i = 0; i < pipeline.nodes.size(); ++i) {
        NodeReport none;
        none.status = NodeStatus::Unfinished;
        record["plugins"].push_back(pluginOf(pipeline, i, i < report.nodes.size() ? report.nodes[i] : none));
    }
    return record.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::string writeRunFile(const fs::path& resultsFolder, const std::string& text) {
    const fs::path file = resultsFolder / runFileName;
    const fs::path temporary = resultsFolder / fmt::format("{}{}-run.json", temporaryMark, getpid());
    std::error_code error;
    fs::create_directories(resultsFolder, error);
    std::ofstream stream(temporary, std::ios::binary | std::ios::trunc);
    stream << text << std::flush;
    const bool isWritten = stream.good();
    stream.close();
    if (isWritten) {
        fs::rename(temporary, file, error);
    }
    if (isWritten && !error) {
        return "";
    }
    std::error_code ignored;
    fs::remove(temporary, ignored);
    return "The record of the run cannot be written: " + file.string() + (error ? ": " + error.message() : "");
}

}  // namespace velmorak
