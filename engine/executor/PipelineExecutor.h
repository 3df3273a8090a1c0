#pragma once

#include "executor/StagePipeline.h"

namespace velmorak {

/// Works on a line with several threads: the one that calls, and others of the run, which come when there is work for
/// them and go when there is none, so that they are free for whatever else the run has to do.
class ThreadPool : public Executor {
public:
    /// @param threads how many may work at once.
    explicit ThreadPool(std::size_t threads);
    std::size_t maxInFlight() const override { return 2 * threads; }
    void work(const StagePipeline& line) override;

private:
    class Job;

    std::size_t threads;
};

}  // namespace velmorak
