#pragma once

#include <velmorak/RunRecord.h>
#include <velmorak/Value.h>

#include <string>
#include <vector>

namespace velmorak {

/// An item wired to a report.
struct ReportItem {
    std::string input;
    std::string plugin;  ///< Name of the plug-in that produced it.
    std::string output;
    Value value;  ///< Monostate if the plug-in failed.
};

/// A picture, or why it could not be drawn.
struct ReportPicture {
    std::string heading;
    std::string svg;       ///< A whole file; empty if it could not be drawn.
    std::string sentence;  ///< Why it could not be drawn.
};

struct ReportContents {
    std::string title;
    std::string comment;
    std::string date;  ///< Of the run.
    std::vector<ReportItem> items;
    std::vector<ReportPicture> pictures;
    RunRecord record;
};

/// @return the page, which is self-contained. The same contents give the same bytes.
std::string reportPage(const ReportContents& contents);

}  // namespace velmorak
