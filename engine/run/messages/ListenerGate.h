#pragma once

#include "run/RunListener.h"

#include <velmorak/Mutex.h>

#include <vector>

namespace velmorak {

/// Forwards the events of a run until it is closed. An abandoned run keeps its gate, so the listeners can go away.
/// Threads: every operation may be called on any thread.
class ListenerGate : public RunListener {
public:
    /// @param listeners must live until close returns; null ones are left out.
    explicit ListenerGate(const std::vector<RunListener*>& listeners);

    bool isEmpty() const { return isWithoutListeners; }

    void began(const Pipeline& pipeline, int threads) override;
    void passBegan() override;
    bool isProgressDue() override;
    void progressed(const ProgressNow& progress) override;
    bool isLookDue() override;
    void looked(const std::vector<ResultsSoFar>& results, std::chrono::nanoseconds spent) override;
    bool wantsTables() override;
    void sawTable(const TableHead& head) override;
    void nodeFinished(const PipelineNode& node, const NodeReport& report) override;
    void ended(const RunReport& report) override;

    /// Waits for calls in progress; none follows.
    void close();

private:
    Mutex mutex;
    std::vector<RunListener*> listeners VELMORAK_GUARDED_BY(mutex);
    const bool isWithoutListeners;
};

}  // namespace velmorak
