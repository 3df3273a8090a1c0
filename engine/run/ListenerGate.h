#pragma once

#include "run/RunListener.h"

#include <mutex>

namespace velmorak {

/// Passes on what a run tells until it is closed, after which the listener is not called any more.
class ListenerGate : public RunListener {
public:
    /// @param listener outlives the time until close.
    explicit ListenerGate(RunListener* listener) : listener(listener) {}

    void began(const Pipeline& pipeline, int threads) override;
    bool isProgressDue() override;
    void progressed(const ProgressNow& progress) override;
    void nodeFinished(const PipelineNode& node, const NodeReport& report) override;
    void ended(const RunReport& report) override;

    /// Returns when no call is under way.
    void close();

private:
    std::mutex mutex;
    RunListener* listener;  ///< Null for none.
};

}  // namespace velmorak
