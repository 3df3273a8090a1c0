#pragma once

#include "run/Runner.h"

#include <cstdint>
#include <optional>
#include <string>

namespace velmorak {

/// How far the rows of a table have passed.
struct ProgressNow {
    std::string plugin;  ///< The source that is read.
    unsigned pass = 0;   ///< Which passage of rows of the run, from 1.
    std::uint64_t rows = 0;
    std::optional<double> fraction;  ///< Of the pass, 0 to 1, never less than before; nothing when unknown.
    double seconds = 0.0;            ///< Since the pass began.
};

/// Is told what a run does.
/// Threads: called on the run's threads, by several at once.
class RunListener {
public:
    virtual ~RunListener() = default;
    virtual void began(const Pipeline& pipeline, int threads) = 0;
    /// Asked for each chunk: whether progressed is to be called.
    virtual bool isProgressDue() = 0;
    virtual void progressed(const ProgressNow& progress) = 0;
    /// Each plug-in that the run needed, once, when its outcome stands.
    virtual void nodeFinished(const PipelineNode& node, const NodeReport& report) = 0;
    virtual void ended(const RunReport& report) = 0;
};

}  // namespace velmorak
