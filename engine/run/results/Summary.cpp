#include "run/results/Summary.h"

#include "run/NodeContext.h"
#include "run/messages/Visible.h"
#include "run/plan/Plan.h"
#include "run/results/FormerResults.h"

#include <fmt/format.h>

#include <algorithm>

namespace velmorak {
namespace {

/// Fraction of the work after which the time left is estimated.
constexpr double minToEstimate = 0.01;

std::string rowsText(std::uint64_t rows) {
    return fmt::format("{} {}", rows, rows == 1 ? "row" : "rows");
}

std::string workText(const PipelineNode& node, const NodeReport& report) {
    std::string time = fmt::format("{:.2f} s", report.seconds);
    switch (categoryOf(node.kind)) {
        case KindCategory::Source:
            return rowsText(report.rowsOut) + ", " + time;
        case KindCategory::RowWise:
        case KindCategory::Concatenation:
            return rowsText(report.rowsIn) + " in, " + rowsText(report.rowsOut) + " out, " + time;
        case KindCategory::Accumulator:
            return report.takesTable ? rowsText(report.rowsIn) + ", " + time : time;
        default:
            return time;
    }
}

}  // namespace

std::string summaryLine(const PipelineNode& node, const NodeReport& report) {
    switch (report.status) {
        case NodeStatus::Done:
            return titleOf(node) + ": " + workText(node, report);
        case NodeStatus::Reused:
            return titleOf(node) + ": kept from a former run";
        case NodeStatus::Failed:
            return titleOf(node) + " failed: " + report.sentence;
        case NodeStatus::Skipped:
        case NodeStatus::Unfinished:
            return titleOf(node) + ": " + report.sentence;
        case NodeStatus::NotRequested:
            break;
    }
    return "";
}

std::string formerText(const Pipeline& pipeline, const std::vector<FormerFile>& missing) {
    constexpr std::size_t maxShown = 10;
    std::string names;
    for (std::size_t i = 0; i < std::min(missing.size(), maxShown); ++i) {
        names += (i == 0 ? "" : ", ") + missing[i].file + " of \"" + shortened(missing[i].plugin) + "\"";
    }
    if (missing.size() > maxShown) {
        names += fmt::format(" and {} more", missing.size() - maxShown);
    }
    return "Not made again, and moved to " + (pipeline.resultsFolder / formerFolderName).string() + ": " + names;
}

std::string progressText(const ProgressNow& progress) {
    std::string text = "Reading \"" + shortened(progress.plugin) + "\"";
    if (progress.pass > 1) {
        text += fmt::format(", pass {}", progress.pass);
    }
    text += ": ";
    if (progress.files > 1) {
        text += fmt::format("file {} of {}, ", progress.file + 1, progress.files);
    }
    if (progress.fraction) {
        text += fmt::format("{} %, ", static_cast<int>(100.0 * *progress.fraction));
    }
    text += rowsText(progress.rows);
    if (progress.seconds > 0.0) {
        text += fmt::format(", {:.0f} rows/s", static_cast<double>(progress.rows) / progress.seconds);
    }
    if (const std::optional<double> left = secondsLeft(progress)) {
        text += fmt::format(", {:.0f} s left", *left);
    }
    return text;
}

std::optional<double> secondsLeft(const ProgressNow& progress) {
    if (!progress.fraction || *progress.fraction < minToEstimate) {
        return std::nullopt;
    }
    return progress.seconds * (1.0 - *progress.fraction) / *progress.fraction;
}

}  // namespace velmorak
