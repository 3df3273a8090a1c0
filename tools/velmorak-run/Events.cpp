#include "Events.h"

#include "Settings.h"

#include "run/record/RunRecordFile.h"
#include "run/results/Summary.h"

#include <nlohmann/json.hpp>

#include <cerrno>
#include <system_error>

namespace {

using Json = nlohmann::ordered_json;

std::string textOf(const Json& event) {
    return event.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

Json orNull(const std::optional<double>& number) {
    return number ? Json(*number) : Json();
}

}  // namespace

Events::Events(const std::string& name, std::ostream& output) : stream(name == "-" ? output : file) {
    if (name != "-") {
        file.open(name, std::ios::binary | std::ios::trunc);
        if (!file) {
            throw UsageError("the events cannot be written to \"" + name + "\"");
        }
    }
}

void Events::began(const velmorak::Pipeline& pipeline, int threads) {
    write(textOf({{"event", "began"},
                  {"version", 1},
                  {"document", pipeline.document.string()},
                  {"settings", pipeline.settings},
                  {"results", pipeline.resultsFolder.string()},
                  {"plugins", pipeline.nodes.size()},
                  {"threads", threads}}));
}

bool Events::isProgressDue() {
    constexpr std::chrono::milliseconds pause{100};
    const velmorak::MutexLock lock(mutex);
    return Clock::now() - lastProgress >= pause;
}

void Events::progressed(const velmorak::ProgressNow& now) {
    const double rate = now.seconds > 0.0 ? static_cast<double>(now.rows) / now.seconds : 0.0;
    write(textOf({{"event", "progress"},
                  {"plugin", now.plugin},
                  {"pass", now.pass},
                  {"file", now.file + 1},
                  {"files", now.files},
                  {"rows", now.rows},
                  {"fraction", orNull(now.fraction)},
                  {"seconds", now.seconds},
                  {"rowsPerSecond", rate},
                  {"secondsLeft", orNull(velmorak::secondsLeft(now))}}));
    const velmorak::MutexLock lock(mutex);
    lastProgress = Clock::now();
}

void Events::nodeFinished(const velmorak::PipelineNode& node, const velmorak::NodeReport& report) {
    write(textOf({{"event", "plugin"},
                  {"name", node.name},
                  {"kind", node.kindName},
                  {"outcome", velmorak::nameOf(report.status)},
                  {"sentence", report.sentence},
                  {"reason", report.reason},
                  {"rowsIn", report.rowsIn},
                  {"rowsOut", report.rowsOut},
                  {"seconds", report.seconds}}));
}

void Events::ended(const velmorak::RunReport& report) {
    const char* status = report.wasStopped ? "stopped" : report.hasFailure() ? "failed" : "done";
    write(textOf({{"event", "ended"}, {"outcome", status}, {"seconds", report.seconds}}));
}

void Events::write(const std::string& line) {
    const velmorak::MutexLock lock(mutex);
    if (!isComplete()) {
        return;
    }
    errno = 0;
    stream << line << std::flush;
    if (!stream) {
        reason = std::generic_category().message(errno != 0 ? errno : EIO);
    }
}
