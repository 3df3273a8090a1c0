#pragma once

#include <velmorak/RunRecord.h>
#include <velmorak/Value.h>

#include <string>
#include <vector>

namespace velmorak {

/// Something that is wired to a report.
struct ReportItem {
    std::string input;
    std::string plugin;  ///< That gives it.
    std::string output;
    Value value;  ///< Monostate where the plug-in failed.
};

/// A picture that has been drawn.
struct ReportPicture {
    std::string heading;
    std::string svg;       ///< A whole file; empty where it could not be drawn.
    std::string sentence;  ///< Why not.
};

struct ReportContents {
    std::string title;
    std::string comment;
    std::vector<ReportItem> items;
    std::vector<ReportPicture> pictures;
    RunRecord record;
};

/// The page, in one piece that refers to nothing outside itself. The same contents give the same bytes.
std::string reportPage(const ReportContents& contents);

}  // namespace velmorak
