#pragma once

#include <iosfwd>
#include <map>
#include <optional>
#include <string>

/// The descriptions in a collection's plugin_summary.txt.
struct Summary {
    std::optional<std::string> collection;     ///< Description of the collection; empty if the file has none.
    std::map<std::string, std::string> kinds;  ///< Name of a kind -> its description.
};

/// Reads the text of a plugin_summary.txt up to its end.
///
/// Lines:   at most 511 characters; reading ends after the first 511 characters of a longer line. Without a line end,
///          the last line does not close its block. Carriage returns are not removed.
/// Content: only the first line of a description is kept; every further line adds an empty line.
///          A heading of '-' and ' ' only has no name and is ignored.
Summary readSummary(std::istream& text);
