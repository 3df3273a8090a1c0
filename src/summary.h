#pragma once

#include <iosfwd>
#include <map>
#include <optional>
#include <string>

/// What a collection's plugin_summary.txt says.
struct Summary {
    std::optional<std::string> collection;     ///< Description of the collection; empty when the file has none.
    std::map<std::string, std::string> kinds;  ///< Name of a kind to its description.
};

/// Reads the text of a plugin_summary.txt up to its end.
///
/// Lines:   at most 511 characters; a longer one is taken with its first 511 and ends the reading. The last line needs
///          its line end: without one, the block that it belongs to is not closed. Carriage returns are not removed.
/// Content: of a description the first line is kept; every further line adds a bare line break.
///          A heading made of '-' and ' ' only has no name to take, and is passed over.
Summary readSummary(std::istream& text);
