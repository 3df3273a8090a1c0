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

void ListenerGate::passBegan() {
    const MutexLock lock(mutex);
    for (RunListener* const listener : listeners) {
        listener->passBegan();
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

bool ListenerGate::isLookDue() {
    const MutexLock lock(mutex);
    return std::any_of(listeners.begin(), listeners.end(), [](RunListener* listener) { return listener->isLookDue(); });
}

void ListenerGate::looked(const std::vector<ResultsSoFar>& results, std::chrono::nanoseconds spent) {
    const MutexLock lock(mutex);
    for (RunListener* const listener : listeners) {
        if (listener->isLookDue()) {
            listener->looked(results, spent);
        }
    }
}

bool ListenerGate::wantsTables() {
    const MutexLock lock(mutex);
    return std::any_of(listeners.begin(), listeners.end(),
                       [](RunListener* listener) { return listener->wantsTables(); });
}

void ListenerGate::sawTable(const TableHead& head) {
    const MutexLock lock(mutex);
    for (RunListener* const listener : listeners) {
        if (listener->wantsTables()) {
            listener->sawTable(head);
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
