#include "State.h"

#include "Journal.h"
#include "Recording.h"

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <utility>

namespace recording {

State& State::instance() {
    static State state;
    return state;
}

State::State() {
    if (const char* file = std::getenv("QZ_RECORDING_SCRIPT")) {
        std::ifstream stream(file);
        script = Script::parse({std::istreambuf_iterator<char>(stream), {}});
    }
}

void State::run() {
    std::unique_lock lock(mutex);
    running = true;
    mayEnd = !script.runBlocks || askedToEnd.contains(std::to_string(gettid()));
    askedToEnd.clear();
    changed.wait(lock, [this] { return mayEnd; });
    running = false;
}

void State::stop() {
    const std::lock_guard lock(mutex);
    if (running) {
        mayEnd = mayEnd || !script.runIsDeaf;
        changed.notify_all();
        return;
    }
    askedToEnd.clear();
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
        askedToEnd.insert(task.path().filename());
    }
    askedToEnd.erase(std::to_string(gettid()));
}

void State::letRunEnd() {
    const std::lock_guard lock(mutex);
    mayEnd = true;
    changed.notify_all();
}

bool State::isRunning() {
    const std::lock_guard lock(mutex);
    return running;
}

void setScript(const std::string& script) {
    State::instance().script = Script::parse(script);
}

std::vector<std::string> calls() {
    return Journal::instance().texts(false, "");
}

std::vector<std::string> edits() {
    return Journal::instance().texts(true, "");
}

std::vector<std::string> callsOf(const std::string& operation) {
    return Journal::instance().texts(false, operation);
}

void forgetCalls() {
    Journal::instance().forget();
}

bool isRunning() {
    return State::instance().isRunning();
}

void whenValueIsSet(std::function<void(QzBase&, int)> action) {
    State::instance().valueIsSet = std::move(action);
}

void letRunEnd() {
    State::instance().letRunEnd();
}

}  // namespace recording
