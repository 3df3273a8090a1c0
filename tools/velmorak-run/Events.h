#pragma once

#include "run/RunListener.h"

#include <velmorak/Mutex.h>

#include <chrono>
#include <fstream>
#include <ostream>
#include <string>

/// Writes the events of runs as lines of JSON, each as soon as it happens. docs/run-events.md describes them.
class Events : public velmorak::RunListener {
public:
    /// @param name of the file; "-" for the output. @throws UsageError when it cannot be written.
    Events(const std::string& name, std::ostream& output);

    /// All events so far have been written.
    bool isComplete() const { return reason.empty(); }
    /// Why an event could not be written; none is written after it.
    const std::string& error() const { return reason; }

    void began(const velmorak::Pipeline& pipeline, int threads) override;
    void passBegan() override;
    bool isProgressDue() override;
    void progressed(const velmorak::ProgressNow& now) override;
    void nodeFinished(const velmorak::PipelineNode& node, const velmorak::NodeReport& report) override;
    void ended(const velmorak::RunReport& report) override;

private:
    using Clock = std::chrono::steady_clock;

    void write(const std::string& line);

    std::ofstream file;
    std::ostream& stream;
    std::string reason;
    velmorak::Mutex mutex;
    Clock::time_point lastProgress VELMORAK_GUARDED_BY(mutex){};
};
