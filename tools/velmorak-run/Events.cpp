#include "Events.h"

#include "Settings.h"

#include "run/announce/RunEvents.h"

#include <nlohmann/json.hpp>

#include <cerrno>
#include <system_error>

Events::Events(const std::string& name, std::ostream& output) : stream(name == "-" ? output : file) {
    if (name != "-") {
        file.open(name, std::ios::binary | std::ios::trunc);
        if (!file) {
            throw UsageError("the events cannot be written to \"" + name + "\"");
        }
    }
}

void Events::began(const velmorak::Pipeline& pipeline, int threads) {
    write(velmorak::eventLine(velmorak::beganEvent(pipeline, threads)));
}

/// Each pass has an event of its own, however short it is.
void Events::passBegan() {
    const velmorak::MutexLock lock(mutex);
    lastProgress = {};
}

bool Events::isProgressDue() {
    constexpr std::chrono::milliseconds pause{100};
    const velmorak::MutexLock lock(mutex);
    return Clock::now() - lastProgress >= pause;
}

void Events::progressed(const velmorak::ProgressNow& now) {
    write(velmorak::eventLine(velmorak::progressEvent(now)));
    const velmorak::MutexLock lock(mutex);
    lastProgress = Clock::now();
}

void Events::nodeFinished(const velmorak::PipelineNode& node, const velmorak::NodeReport& report) {
    write(velmorak::eventLine(velmorak::pluginEvent(node, report)));
}

void Events::ended(const velmorak::RunReport& report) {
    write(velmorak::eventLine(velmorak::endedEvent(report)));
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
