#include "run/announce/Announcement.h"

#include "run/announce/RunEvents.h"
#include "run/announce/RuntimeFolder.h"
#include "run/announce/TableJson.h"
#include "store/AtomicFile.h"

#include <nlohmann/json.hpp>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

namespace velmorak {

using Json = nlohmann::ordered_json;

namespace {

namespace fs = std::filesystem;

/// The runtime folder is in memory.
constexpr std::size_t maxBytes = 16U << 20U;
constexpr std::size_t maxCells = 40000;
constexpr std::chrono::milliseconds pause{250};
constexpr std::chrono::milliseconds firstLook{100};
constexpr std::chrono::milliseconds lookPause{500};
constexpr int lookShare = 50;  ///< Of the time, one part in so many is for looking.

Json inputsJson(const Pipeline& pipeline, const PipelineNode& node) {
    Json all = Json::array();
    for (const PipelineInput& input : node.inputs) {
        if (input.wire && input.wire->node < pipeline.nodes.size()) {
            all.push_back(
                {{"name", input.spec.name}, {"from", {pipeline.nodes[input.wire->node].name, input.wire->output}}});
        } else if (!input.value.empty()) {
            all.push_back({{"name", input.spec.name}, {"value", input.value}});
        }
    }
    return all;
}

Json pipelineJson(const Pipeline& pipeline) {
    Json all = Json::array();
    for (const PipelineNode& node : pipeline.nodes) {
        Json outputs = Json::array();
        for (const OutputSpec& output : node.outputs) {
            outputs.push_back({{"name", output.name}, {"type", nameOf(output.type)}});
        }
        all.push_back({{"name", node.name},
                       {"kind", node.kindName},
                       {"x", node.x},
                       {"y", node.y},
                       {"inputs", inputsJson(pipeline, node)},
                       {"outputs", std::move(outputs)}});
    }
    return all;
}

Json liveJson(const PipelineNode& node, const ResultsSoFar& results) {
    Json outputs = Json::array();
    for (std::size_t i = 0; i < std::min(node.outputs.size(), results.outputs.size()); ++i) {
        Json result = resultJson(results.outputs[i], std::nullopt, maxCells);
        if (!result.is_null()) {
            result["name"] = node.outputs[i].name;
            outputs.push_back(std::move(result));
        }
    }
    return {{"name", node.name}, {"kind", node.kindName}, {"rows", results.rows}, {"outputs", std::move(outputs)}};
}

}  // namespace

std::unique_ptr<Announcement> Announcement::begin() {
    const fs::path folder = runtimeFolder();
    if (folder.empty()) {
        return nullptr;
    }
    removeOldAnnouncements(folder);
    constexpr int maxAttempts = 1000;
    for (int attempt = 0; attempt < maxAttempts; ++attempt) {
        const fs::path path = folder / (std::string(runFilePrefix) + std::to_string(getpid()) + "-" +
                                        std::to_string(attempt) + std::string(announcementEnding));
        FileDescriptor file(path, O_WRONLY | O_CREAT | O_EXCL | O_APPEND | O_NOFOLLOW, S_IRUSR | S_IWUSR);
        if (file.isOpen() && flock(file.get(), LOCK_EX | LOCK_NB) == 0) {
            return std::unique_ptr<Announcement>(new Announcement(path, std::move(file)));
        }
        if (errno != EEXIST) {
            return nullptr;
        }
    }
    return nullptr;
}

Announcement::Announcement(fs::path path, FileDescriptor file) : path(std::move(path)), file(std::move(file)) {}

Announcement::~Announcement() {
    std::error_code ignored;
    if (bytes == 0) {
        fs::remove(path, ignored);  // The run did not begin.
    }
    fs::remove(path.string() + std::string(progressEnding), ignored);
    fs::remove(path.string() + std::string(liveEnding), ignored);
}

void Announcement::began(const Pipeline& run, int threads) {
    Json event = beganEvent(run, threads);
    event["process"] = getpid();
    event["time"] = millisecondsNow();
    event["pipeline"] = pipelineJson(run);
    const MutexLock lock(mutex);
    pipeline = &run;
    nextLook = Clock::now() + firstLook;
    append(eventLine(event));
}

bool Announcement::isProgressDue() {
    const MutexLock lock(mutex);
    return !isBroken && Clock::now() - lastProgress >= pause;
}

void Announcement::progressed(const ProgressNow& progress) {
    {
        const MutexLock lock(mutex);
        lastProgress = Clock::now();
    }
    replace(progressEnding, progressEvent(progress));
}

void Announcement::replace(std::string_view ending, const Json& content) {
    try {
        AtomicFile replaced(path.string() + std::string(ending), ".", S_IRUSR | S_IWUSR);
        replaced.write(eventLine(content));
        replaced.commitUnsynced();
    } catch (const std::system_error&) {
        const MutexLock lock(mutex);
        isBroken = true;
    }
}

bool Announcement::isLookDue() {
    const MutexLock lock(mutex);
    const Clock::time_point now = Clock::now();
    if (isBroken || now < nextLook) {
        return false;
    }
    if (!isLookedAt(path.parent_path())) {
        nextLook = now + firstLook;
        return false;
    }
    return true;
}

void Announcement::looked(const std::vector<ResultsSoFar>& results, std::chrono::nanoseconds spent) {
    const Clock::time_point begin = Clock::now();
    Json plugins = Json::array();
    {
        const MutexLock lock(mutex);
        for (const ResultsSoFar& it : results) {
            plugins.push_back(liveJson(pipeline->nodes.at(it.node), it));
        }
    }
    if (!plugins.empty()) {
        replace(liveEnding, {{"event", "live"}, {"plugins", std::move(plugins)}});
    }
    const MutexLock lock(mutex);
    const Clock::time_point now = Clock::now();
    const auto longest = std::max<Clock::duration>(lookPause, lookShare * (spent + (now - begin)));
    nextLook = now + longest;
}

void Announcement::sawTable(const TableHead& head) {
    const MutexLock lock(mutex);
    if (pipeline != nullptr && tables.insert(head.node).second) {
        append(eventLine(tableEvent(pipeline->nodes.at(head.node), head)));
    }
}

void Announcement::nodeFinished(const PipelineNode& node, const NodeReport& report) {
    Json event = pluginEvent(node, report);
    const MutexLock lock(mutex);
    event["outputs"] = outputsOf(node, report);
    event["files"] = Json::array();
    for (const RecordedFile& written : report.written) {
        event["files"].push_back(written.name);
    }
    append(eventLine(event));
}

Json Announcement::outputsOf(const PipelineNode& node, const NodeReport& report) {
    Json all = Json::array();
    const std::optional<DataSpan> span = spanFor(node);
    for (std::size_t i = 0; i < std::min(node.outputs.size(), report.outputs.size()); ++i) {
        if (const std::optional<DataSpan> own = spanOf(report.outputs[i])) {
            spans.emplace(node.name, *own);
        }
        Json result = resultJson(report.outputs[i], span, bytes < maxBytes ? maxCells : 0);
        if (!result.is_null()) {
            result["name"] = node.outputs[i].name;
            all.push_back(std::move(result));
        }
    }
    return all;
}

/// The axis of the data that the plug-in takes: a curve is drawn over them.
std::optional<DataSpan> Announcement::spanFor(const PipelineNode& node) const {
    for (const PipelineInput& input : node.inputs) {
        if (!pipeline || !input.wire || input.wire->node >= pipeline->nodes.size()) {
            continue;
        }
        const auto found = spans.find(pipeline->nodes[input.wire->node].name);
        if (found != spans.end()) {
            return found->second;
        }
    }
    return std::nullopt;
}

void Announcement::ended(const RunReport& report) {
    Json event = endedEvent(report);
    event["former"] = Json::array();
    for (const FormerFile& former : report.missing) {
        event["former"].push_back({{"plugin", former.plugin}, {"file", former.file}});
    }
    write(event);
}

void Announcement::addMessage(const std::string& line) {
    write({{"event", "message"}, {"time", millisecondsNow()}, {"text", line}});
}

void Announcement::write(const Json& event) {
    const MutexLock lock(mutex);
    append(eventLine(event));
}

void Announcement::append(const std::string& line) {
    if (isBroken || bytes + line.size() > 2 * maxBytes) {
        return;
    }
    try {
        file.writeAll(line);
        bytes += line.size();
    } catch (const std::system_error&) {
        isBroken = true;
    }
}

}  // namespace velmorak
