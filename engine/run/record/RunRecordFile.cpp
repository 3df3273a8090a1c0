#include "run/record/RunRecordFile.h"

#include "run/record/Version.h"
#include "run/record/WholeFile.h"
#include "store/Sha256.h"

#include <velmorak/Failure.h>
#include <velmorak/ObjectBytes.h>

#include <fmt/chrono.h>
#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <new>
#include <stdexcept>
#include <system_error>

namespace velmorak {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

constexpr int formatVersion = 1;

/// The keys of the format, for writer and reader alike.
namespace key {
constexpr const char* run = "run";
constexpr const char* velmorak = "velmorak";
constexpr const char* complete = "complete";
constexpr const char* began = "began";
constexpr const char* date = "date";
constexpr const char* seconds = "seconds";
constexpr const char* threads = "threads";
constexpr const char* document = "document";
constexpr const char* settings = "settings";
constexpr const char* aida = "aida";
constexpr const char* seed = "seed";
constexpr const char* inputs = "inputs";
constexpr const char* plugins = "plugins";
constexpr const char* file = "file";
constexpr const char* sha256 = "sha256";
constexpr const char* text = "text";
constexpr const char* name = "name";
constexpr const char* value = "value";
constexpr const char* from = "from";
constexpr const char* kind = "kind";
constexpr const char* version = "version";
constexpr const char* error = "error";
constexpr const char* outcome = "outcome";
constexpr const char* sentence = "sentence";
constexpr const char* reason = "reason";
constexpr const char* rowsIn = "rowsIn";
constexpr const char* rowsOut = "rowsOut";
constexpr const char* outputs = "outputs";
constexpr const char* results = "results";
constexpr const char* skipped = "skipped";
constexpr const char* former = "former";
constexpr const char* partial = "partial";
constexpr const char* files = "files";
constexpr const char* plugin = "plugin";
}  // namespace key

std::string sumOf(std::string_view bytes) {
    Sha256 digester;
    digester.add(bytes.data(), bytes.size());
    return hexOf(digester.finish());
}

/// @throws Stopped
std::string sumOf(const DataObject& object, const std::atomic<bool>& stopping) {
    Sha256 digester;
    bytesOf(object, [&](std::string_view piece) {
        if (stopping) {
            throw Stopped();
        }
        digester.add(piece.data(), piece.size());
    });
    return hexOf(digester.finish());
}

std::string timeText(std::chrono::system_clock::time_point time) {
    const auto milliseconds = std::chrono::floor<std::chrono::milliseconds>(time);
    const auto seconds = std::chrono::floor<std::chrono::seconds>(milliseconds);
    return fmt::format("{:%Y-%m-%dT%H:%M:%S}.{:03}Z", fmt::gmtime(std::chrono::system_clock::to_time_t(seconds)),
                       (milliseconds - seconds).count());
}

Json documentOf(const Pipeline& pipeline) {
    return {{key::file, pipeline.document.string()},
            {key::sha256, sumOf(pipeline.documentText)},
            {key::text, pipeline.documentText}};
}

Json filesOf(const std::vector<RecordedFile>& files) {
    Json all = Json::array();
    for (const RecordedFile& file : files) {
        all.push_back({{key::file, file.name}, {key::sha256, file.sha256}});
    }
    return all;
}

Json skippedOf(const std::vector<SkippedFile>& files) {
    Json all = Json::array();
    for (const SkippedFile& file : files) {
        all.push_back({{key::plugin, file.plugin}, {key::file, file.file}, {key::reason, file.reason}});
    }
    return all;
}

Json formerOf(const std::vector<FormerFile>& files) {
    Json all = Json::array();
    for (const FormerFile& file : files) {
        all.push_back({{key::plugin, file.plugin}, {key::file, file.file}});
    }
    return all;
}

/// The value of a number, a sum of anything else; null when there is none, or only its collection knows its bytes.
Json valueSum(const Value& value, const std::atomic<bool>& stopping) {
    if (const std::optional<NumberWithError> number = numberIn(value)) {
        return textOf(number->value());
    }
    if (const auto* text = std::get_if<std::string>(&value)) {
        return sumOf(*text);
    }
    try {
        const auto* object = std::get_if<DataObjectPtr>(&value);
        return object ? Json(sumOf(**object, stopping)) : Json();
    } catch (const Stopped&) {
        return {};
    } catch (const std::invalid_argument&) {
        return {};
    } catch (const std::bad_alloc&) {
        return {};  // Too large to sum: the result itself is worth more.
    } catch (const std::length_error&) {
        return {};
    }
}

Json outputsOf(const PipelineNode& node, const NodeReport& report, const std::atomic<bool>& stopping) {
    Json all = Json::array();
    for (std::size_t i = 0; i < std::min(node.outputs.size(), report.outputs.size()); ++i) {
        if (const Json sum = valueSum(report.outputs[i], stopping); !sum.is_null()) {
            const std::optional<NumberWithError> number = numberIn(report.outputs[i]);
            all.push_back({{key::name, node.outputs[i].name}, {number ? key::value : key::sha256, sum}});
            if (number && number->hasError()) {
                all.back()[key::error] = textOf(number->error());
            }
        }
    }
    return all;
}

Json inputsOf(const Pipeline& pipeline, const PipelineNode& node) {
    Json all = Json::array();
    for (const PipelineInput& input : node.inputs) {
        if (input.wire && input.wire->node < pipeline.nodes.size()) {
            all.push_back({{key::name, input.spec.name},
                           {key::from, {pipeline.nodes[input.wire->node].name, input.wire->output}}});
        } else {
            all.push_back({{key::name, input.spec.name}, {key::value, input.value}});
        }
    }
    return all;
}

Json pluginOf(const Pipeline& pipeline, std::size_t position, const NodeReport& report,
              const std::atomic<bool>& stopping) {
    const PipelineNode& node = pipeline.nodes[position];
    return {{key::name, node.name},
            {key::kind, node.kindName},
            {key::version, node.kind ? node.kind->version() : 0},
            {key::inputs, inputsOf(pipeline, node)},
            {key::files, report.files},
            {key::outcome, nameOf(report.status)},
            {key::sentence, report.sentence},
            {key::reason, report.reason},
            {key::rowsIn, report.rowsIn},
            {key::rowsOut, report.rowsOut},
            {key::seconds, report.seconds},
            {key::outputs, outputsOf(node, report, stopping)},
            {key::results, filesOf(report.written)}};
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

using Sums = StoredRunRecord::Sums;

Sums readResults(const Json& plugin) {
    Sums sums;
    for (const Json& result : plugin.at(key::results)) {
        sums["file \"" + result.at(key::file).get<std::string>() + "\""] = result.at(key::sha256).get<std::string>();
    }
    for (const Json& output : plugin.at(key::outputs)) {
        const Json& sum = output.contains(key::value) ? output.at(key::value) : output.at(key::sha256);
        const std::string name = "output \"" + output.at(key::name).get<std::string>() + "\"";
        sums[name] = sum.get<std::string>();
        if (output.contains(key::error)) {
            sums["error of " + name] = output.at(key::error).get<std::string>();
        }
    }
    return sums;
}

std::vector<FormerFile> readFiles(const Json& record) {
    std::vector<FormerFile> files;
    for (const Json& plugin : record.at(key::plugins)) {
        for (const Json& result : plugin.at(key::results)) {
            files.push_back({plugin.at(key::name).get<std::string>(), result.at(key::file).get<std::string>()});
        }
    }
    if (record.contains(key::former)) {  // Records of older versions have no such field.
        for (const Json& file : record.at(key::former)) {
            files.push_back({file.at(key::plugin).get<std::string>(), file.at(key::file).get<std::string>()});
        }
    }
    return files;
}

StoredRunRecord readRecord(const Json& record) {
    const Json& document = record.at(key::document);
    StoredRunRecord stored{document.at(key::text).get<std::string>(),
                           document.at(key::file).get<std::string>(),
                           record.at(key::aida).get<std::string>(),
                           record.at(key::settings).get<std::vector<std::string>>(),
                           readFiles(record),
                           {},
                           {}};
    if (const auto date = record.find(key::date); date != record.end()) {
        stored.date = date->get<double>();
    }
    for (const Json& input : record.at(key::inputs)) {
        stored.inputs[input.at(key::file).get<std::string>()] = input.at(key::sha256).get<std::string>();
    }
    for (const Json& plugin : record.at(key::plugins)) {
        const auto outcome = plugin.at(key::outcome).get<std::string>();
        const bool isDone = outcome == nameOf(NodeStatus::Done) || outcome == nameOf(NodeStatus::Reused);
        stored.plugins[plugin.at(key::name).get<std::string>()] = {isDone, readResults(plugin)};
    }
    return stored;
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

std::string runRecordText(const Pipeline& pipeline, const RunReport& report, bool isOver,
                          const std::atomic<bool>& stopping) {
    Json record{{key::run, formatVersion}, {key::velmorak, version()}};
    record[key::complete] = isOver && !report.wasStopped;
    record[key::began] = timeText(report.began);
    if (pipeline.kinds.fixedDate) {
        record[key::date] = *pipeline.kinds.fixedDate;
    }
    record[key::seconds] = report.seconds;
    record[key::threads] = report.threads;
    record[key::document] = documentOf(pipeline);
    record[key::settings] = pipeline.settings;
    record[key::aida] = pipeline.commandLineAida.string();
    record[key::seed] = seedsOf(pipeline);
    record[key::inputs] = filesOf(report.files);
    record[key::skipped] = skippedOf(report.skipped);
    record[key::former] = formerOf(report.former);
    if (!pipeline.partial.empty()) {
        record[key::partial] = pipeline.partial;
    }
    record[key::plugins] = Json::array();
    for (std::size_t i = 0; i < pipeline.nodes.size(); ++i) {
        NodeReport none;
        none.status = NodeStatus::Unfinished;
        record[key::plugins].push_back(
            pluginOf(pipeline, i, i < report.nodes.size() ? report.nodes[i] : none, stopping));
    }
    return record.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::string writeRunRecord(const fs::path& resultsFolder, const std::string& text) {
    const fs::path path = resultsFolder / runRecordFileName;
    try {
        fs::create_directories(resultsFolder);
        replaceFile(path, text);
        return "";
    } catch (const std::system_error& error) {
        return "The record of the run cannot be written: " + path.string() + ": " + error.code().message();
    }
}

StoredRunRecord readRunRecord(const fs::path& file) {
    const auto reject = [&](const std::string& reason) {
        throw Failure("\"" + file.string() + "\" is not a record of a run: " + reason);
    };
    try {
        const Json record = Json::parse(contentOf(file, "the record \"" + file.string() + "\""));
        if (record.at(key::run) != formatVersion) {
            reject("its format has an unknown version");
        }
        return readRecord(record);
    } catch (const Json::parse_error& error) {
        reject("it is not JSON or is cut off, at byte " + std::to_string(error.byte));
    } catch (const Json::exception&) {
        reject("a field that every record has is missing or has the wrong type");
    }
    return {};
}

}  // namespace velmorak
