#pragma once

#include "run/RunListener.h"

#include <velmorak/Mutex.h>

namespace velmorak {

/// Forwards the events of a run until it is closed. An abandoned run keeps its gate, so the listener can go away.
/// Threads: every operation may be called on any thread.
class ListenerGate : public RunListener {
public:
    /// @param listener must live until close returns; null for none.
    explicit ListenerGate(RunListener* listener) : listener(listener) {}

    void began(const Pipeline& pipeline, int threads) override;
    bool isProgressDue() override;
    void progressed(const ProgressNow& progress) override;
    void nodeFinished(const PipelineNode& node, const NodeReport& report) override;
    void ended(const RunReport& report) override;

    /// Waits for calls in progress; none follows.
    void close();

private:
    Mutex mutex;
    RunListener* listener VELMORAK_GUARDED_BY(mutex);  ///< Null for none.
};

}  // namespace velmorak
