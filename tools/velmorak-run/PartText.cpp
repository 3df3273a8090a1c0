#include "PartText.h"

namespace velmorak {

namespace {

std::string numbered(std::uint64_t number) {
    return std::to_string(number);
}

/// Chunks are counted from 1 here, as files are.
std::string chunksText(const PassRange& range) {
    const bool isOneFile = range.begin.file + 1 == range.endFile();
    std::string text;
    if (range.begin.chunk > 0) {
        text += ", from chunk " + numbered(range.begin.chunk + 1) + (isOneFile ? "" : " of the first");
    }
    if (range.end.chunk > 0) {
        text += ", to chunk " + numbered(range.end.chunk) + (isOneFile ? "" : " of the last");
    }
    return text;
}

std::string beginningText(const PassRange& range) {
    if (range.begin.chunk == 0) {
        return "";
    }
    return range.start ? "; begins at row " + numbered(range.start->row + 1) + " of the file"
                       : "; reads the rows of the file before, and drops them";
}

}  // namespace

std::string whatPartCovers(const JobPlan& plan, std::size_t part) {
    const PassRange& range = plan.parts[part].range;
    const bool isOneFile = range.begin.file + 1 == range.endFile();
    const std::string files = isOneFile
                                  ? "file " + numbered(range.endFile())
                                  : "files " + numbered(range.begin.file + 1) + " to " + numbered(range.endFile());
    return "Part " + numbered(part + 1) + " of " + numbered(plan.parts.size()) + ", round " +
           numbered(plan.roundOf(part)) + ": " + files + " of " + numbered(plan.passOf(plan.parts[part]).files.size()) +
           chunksText(range) + beginningText(range);
}

std::string partNames(const std::vector<std::size_t>& parts) {
    std::string names;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const std::size_t first = i;
        while (i + 1 < parts.size() && parts[i + 1] == parts[i] + 1) {
            ++i;
        }
        names += (names.empty() ? "" : ", ") + std::to_string(parts[first] + 1) +
                 (i > first ? "-" + std::to_string(parts[i] + 1) : "");
    }
    return (parts.size() == 1 ? "part " : "parts ") + names;
}

}  // namespace velmorak
