#pragma once

#include "run/Runner.h"

#include <velmorak/Table.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

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

/// The results of a plug-in for the rows that it has got before the end of a pass.
struct ResultsSoFar {
    std::size_t node = 0;  ///< Position in the pipeline.
    std::uint64_t rows = 0;
    std::vector<Value> outputs;  ///< Parallel to the node's outputs.
};

/// The first rows of a table.
struct TableHead {
    std::size_t node = 0;             ///< Position of the plug-in in the pipeline.
    std::vector<ColumnInfo> columns;  ///< The first of them.
    std::size_t columnsInAll = 0;
    std::vector<Chunk> pieces;  ///< With these columns; those that nobody uses are null.
};

/// Observes runs.
/// Threads: called on the threads of the run, several at once.
class RunListener {
public:
    virtual ~RunListener() = default;
    virtual void began(const Pipeline& pipeline, int threads) = 0;
    /// Called before the first chunk of each pass.
    virtual void passBegan() {}
    /// Asked for each chunk whether to call progressed.
    virtual bool isProgressDue() = 0;
    virtual void progressed(const ProgressNow& progress) = 0;
    /// Asked for each chunk whether to call looked, which costs time that the rows wait.
    virtual bool isLookDue() { return false; }
    /// Histograms and profiles as far as they are filled. @param spent time to make the results.
    virtual void looked(const std::vector<ResultsSoFar>& /*results*/, std::chrono::nanoseconds /*spent*/) {}
    /// Asked at the beginning of each pass whether to call sawTable.
    virtual bool wantsTables() { return false; }
    /// Called once in a pass for each table that has rows.
    virtual void sawTable(const TableHead& /*head*/) {}
    /// Called once for each plug-in that the run needed, when its status is final.
    virtual void nodeFinished(const PipelineNode& node, const NodeReport& report) = 0;
    virtual void ended(const RunReport& report) = 0;
};

}  // namespace velmorak
