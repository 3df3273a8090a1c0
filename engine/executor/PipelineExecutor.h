#pragma once

#include "executor/StagePipeline.h"

namespace velmorak {

/// Runs a stage pipeline on several threads: the calling one, and others of its thread pool. A pool thread leaves when
/// no task is runnable and is requested again when one is, so that it is free for other tasks of the run.
class PipelineExecutor : public Executor {
public:
    /// @param threads that may work at once; there are never more than the calling thread's pool has.
    explicit PipelineExecutor(std::size_t threads);
    std::size_t maxInFlight() const override { return 2 * threads; }
    void run(const StagePipeline& pipeline) override;

private:
    class Job;

    std::size_t threads;
};

}  // namespace velmorak
