#include "run/ListenerGate.h"

namespace velmorak {

void ListenerGate::began(const Pipeline& pipeline, int threads) {
    const std::scoped_lock lock(mutex);
    if (listener) {
        listener->began(pipeline, threads);
    }
}

bool ListenerGate::isProgressDue() {
    const std::scoped_lock lock(mutex);
    return listener && listener->isProgressDue();
}

void ListenerGate::progressed(const ProgressNow& progress) {
    const std::scoped_lock lock(mutex);
    if (listener) {
        listener->progressed(progress);
    }
}

void ListenerGate::nodeFinished(const PipelineNode& node, const NodeReport& report) {
    const std::scoped_lock lock(mutex);
    if (listener) {
        listener->nodeFinished(node, report);
    }
}

void ListenerGate::ended(const RunReport& report) {
    const std::scoped_lock lock(mutex);
    if (listener) {
        listener->ended(report);
    }
}

void ListenerGate::close() {
    const std::scoped_lock lock(mutex);
    listener = nullptr;
}

}  // namespace velmorak
