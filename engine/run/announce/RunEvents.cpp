#include "run/announce/RunEvents.h"

#include "run/record/RunRecordFile.h"
#include "run/results/Summary.h"

#include <nlohmann/json.hpp>

namespace velmorak {

using Json = nlohmann::ordered_json;

namespace {

Json orNull(const std::optional<double>& number) {
    return number ? Json(*number) : Json();
}

}  // namespace

Json beganEvent(const Pipeline& pipeline, int threads) {
    return {{"event", "began"},
            {"version", 1},
            {"document", pipeline.document.string()},
            {"settings", pipeline.settings},
            {"results", pipeline.resultsFolder.string()},
            {"plugins", pipeline.nodes.size()},
            {"threads", threads}};
}

Json progressEvent(const ProgressNow& now) {
    const double rate = now.seconds > 0.0 ? static_cast<double>(now.rows) / now.seconds : 0.0;
    return {{"event", "progress"},
            {"plugin", now.plugin},
            {"pass", now.pass},
            {"file", now.file + 1},
            {"files", now.files},
            {"rows", now.rows},
            {"fraction", orNull(now.fraction)},
            {"seconds", now.seconds},
            {"rowsPerSecond", rate},
            {"secondsLeft", orNull(secondsLeft(now))}};
}

Json pluginEvent(const PipelineNode& node, const NodeReport& report) {
    return {{"event", "plugin"},           {"name", node.name},
            {"kind", node.kindName},       {"outcome", nameOf(report.status)},
            {"sentence", report.sentence}, {"reason", report.reason},
            {"rowsIn", report.rowsIn},     {"rowsOut", report.rowsOut},
            {"seconds", report.seconds}};
}

Json endedEvent(const RunReport& report) {
    const char* status = report.wasStopped ? "stopped" : report.hasFailure() ? "failed" : "done";
    return {{"event", "ended"}, {"outcome", status}, {"seconds", report.seconds}};
}

std::string eventLine(const Json& event) {
    return event.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace velmorak
