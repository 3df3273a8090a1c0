#include "Summary.h"

#include "NodeContext.h"
#include "Plan.h"

#include <fmt/format.h>

namespace velmorak {
namespace {

std::string rowsText(std::uint64_t rows) {
    return fmt::format("{} {}", rows, rows == 1 ? "row" : "rows");
}

std::string workText(const PipelineNode& node, const NodeReport& report, bool takesRows) {
    std::string time = fmt::format("{:.2f} s", report.seconds);
    switch (shapeOf(node.kind)) {
        case Shape::Source:
            return rowsText(report.rowsOut) + ", " + time;
        case Shape::RowWise:
            return rowsText(report.rowsIn) + " in, " + rowsText(report.rowsOut) + " out, " + time;
        case Shape::Accumulator:
            return takesRows ? rowsText(report.rowsIn) + ", " + time : time;
        default:
            return time;
    }
}

}  // namespace

std::string summaryLine(const PipelineNode& node, const NodeReport& report, bool takesRows) {
    switch (report.outcome) {
        case Outcome::Done:
            return titleOf(node) + ": " + workText(node, report, takesRows);
        case Outcome::Reused:
            return titleOf(node) + ": kept from a former run";
        case Outcome::Failed:
            return titleOf(node) + " failed: " + report.sentence;
        case Outcome::Skipped:
        case Outcome::Unfinished:
            return titleOf(node) + ": " + report.sentence;
        case Outcome::NotAsked:
            break;
    }
    return "";
}

}  // namespace velmorak
