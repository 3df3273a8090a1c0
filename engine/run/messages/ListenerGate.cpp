#include "run/messages/ListenerGate.h"

#include <algorithm>

namespace velmorak {
namespace {

std::vector<RunListener*> withoutNull(std::vector<RunListener*> listeners) {
    std::erase(listeners, nullptr);
    return listeners;
}

}  // namespace

ListenerGate::ListenerGate(const std::vector<RunListener*>& listeners)
    : listeners(withoutNull(listeners)), isWithoutListeners(withoutNull(listeners).empty()) {}

void ListenerGate::began(const Pipeline& pipeline, int threads) {
    const MutexLock lock(mutex);
    for (RunListener* const listener : listeners) {
        listener->began(pipeline, threads);
    }
}

bool ListenerGate::isProgressDue() {
    const MutexLock lock(mutex);
    return std::any_of(listeners.begin(), listeners.end(),
                       [](RunListener* listener) { return listener->isProgressDue(); });
}

void ListenerGate::progressed(const ProgressNow& progress) {
    const MutexLock lock(mutex);
    for (RunListener* const listener : listeners) {
        if (listener->isProgressDue()) {
            listener->progressed(progress);
        }
    }
}

void ListenerGate::nodeFinished(const PipelineNode& node, const NodeReport& report) {
    const MutexLock lock(mutex);
    for (RunListener* const listener : listeners) {
        listener->nodeFinished(node, report);
    }
}

void ListenerGate::ended(const RunReport& report) {
    const MutexLock lock(mutex);
    for (RunListener* const listener : listeners) {
        listener->ended(report);
    }
}

void ListenerGate::close() {
    const MutexLock lock(mutex);
    listeners.clear();
}

}  // namespace velmorak
