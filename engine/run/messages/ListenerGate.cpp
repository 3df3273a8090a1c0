#include "run/messages/ListenerGate.h"

namespace velmorak {

void ListenerGate::began(const Pipeline& pipeline, int threads) {
    const MutexLock lock(mutex);
    if (listener) {
        listener->began(pipeline, threads);
    }
}

bool ListenerGate::isProgressDue() {
    const MutexLock lock(mutex);
    return listener != nullptr && listener->isProgressDue();
}

void ListenerGate::progressed(const ProgressNow& progress) {
    const MutexLock lock(mutex);
    if (listener) {
        listener->progressed(progress);
    }
}

void ListenerGate::nodeFinished(const PipelineNode& node, const NodeReport& report) {
    const MutexLock lock(mutex);
    if (listener) {
        listener->nodeFinished(node, report);
    }
}

void ListenerGate::ended(const RunReport& report) {
    const MutexLock lock(mutex);
    if (listener) {
        listener->ended(report);
    }
}

void ListenerGate::close() {
    const MutexLock lock(mutex);
    listener = nullptr;
}

}  // namespace velmorak
