#pragma once

#include "Settings.h"

#include "run/Runner.h"
#include "run/parts/JobPlan.h"

#include <cstddef>
#include <map>
#include <string>
#include <utility>
#include <vector>

/// A number output in one run of a scan.
struct ScanNumber {
    double value = 0.0;
    double error = 0.0;  ///< Meaningful if hasError.
    bool hasError = false;
};

/// A number output of the pipeline.
struct ScanQuantity {
    std::string plugin;
    std::string output;
    bool hasErrors = false;    ///< In some run, and no other output of the plug-in gives them.
    bool isErrorOnly = false;  ///< It gives the error of another output.

    std::string name() const { return plugin + "." + output; }
};

/// One run of a scan.
struct ScanRun {
    std::vector<std::string> values;  ///< Parallel to ScanTable::varied.
    std::string folder;               ///< In the results folder.
    std::string status = "not run";   ///< Or done, failed, stopped, files skipped.
    std::string reason{};             ///< Of the first plug-in that failed.
    /// By plug-in and output, both as positions in the pipeline.
    std::map<std::pair<std::size_t, std::size_t>, ScanNumber> numbers{};
    std::vector<std::string> files{};  ///< Result files, in the folder.
};

/// What the runs of a scan give: for each, the values that were set, every number output with its error, and how it
/// ended.
class ScanTable {
public:
    /// @param points the settings of each run: the same inputs in the same order.
    explicit ScanTable(const std::vector<std::vector<Setting>>& points);

    /// Takes what a run has given. @param position of the run among the points.
    void add(std::size_t position, const velmorak::Pipeline& pipeline, const velmorak::RunReport& report);

    const std::vector<std::string>& varied() const { return names; }  ///< PLUGIN.INPUT
    const std::vector<ScanRun>& runs() const { return all; }
    using Quantities = std::map<std::pair<std::size_t, std::size_t>, ScanQuantity>;
    const Quantities& quantities() const { return columns; }
    /// Quantities that differ between runs, without those that are only errors.
    Quantities changing() const;

    /// A row for each run, as RFC 4180 has it; numbers read back as the same numbers.
    std::string csv() const;

private:
    void addNumbers(ScanRun& run, const velmorak::Pipeline& pipeline, const velmorak::RunReport& report);
    std::string csvRow(const ScanRun& run) const;

    std::vector<std::string> names;
    std::vector<ScanRun> all;
    Quantities columns;
};

/// The settings of the runs of a scan that was planned: the last ones of each, which its folder is named after.
std::vector<std::vector<Setting>> scanPointsOf(const velmorak::JobPlan& plan);
