#pragma once

#include "executor/StagePipeline.h"

namespace velmorak {

/// Works on a line with several threads: the one that calls, and others of the run, which come when there is work for
/// them and go when there is none, so that they are free for whatever else the run has to do.
class Crew : public Workers {
public:
    /// @param threads how many may work at once.
    explicit Crew(std::size_t threads);
    std::size_t places() const override { return 2 * threads; }
    void work(const Line& line) override;

private:
    class Shift;

    std::size_t threads;
};

}  // namespace velmorak
