#pragma once

#include "run/Runner.h"

#include <cstdint>
#include <optional>
#include <string>

namespace velmorak {

/// The progress of a pass.
struct ProgressNow {
    std::string plugin;  ///< The source being read.
    unsigned pass = 0;   ///< Number of the pass in the run, from 1.
    std::uint64_t rows = 0;
    std::optional<double> fraction;  ///< Of the pass, 0 to 1, never decreasing; no value if unknown.
    double seconds = 0.0;            ///< Since the pass began.
    std::uint64_t file = 0;          ///< File of the source, from 0.
    std::uint64_t files = 1;         ///< Of the source.
};

/// Observes runs.
/// Threads: called on the threads of the run, several at once.
class RunListener {
public:
    virtual ~RunListener() = default;
    virtual void began(const Pipeline& pipeline, int threads) = 0;
    /// Asked for each chunk whether to call progressed.
    virtual bool isProgressDue() = 0;
    virtual void progressed(const ProgressNow& progress) = 0;
    /// Called once for each plug-in that the run needed, when its status is final.
    virtual void nodeFinished(const PipelineNode& node, const NodeReport& report) = 0;
    virtual void ended(const RunReport& report) = 0;
};

}  // namespace velmorak
