#pragma once

#include "csv/CsvPieces.h"

#include <optional>
#include <string>
#include <string_view>

namespace velmorak {

/// Where the reading of a file goes on.
struct CsvBookmark {
    CsvPlace place{};
    bool isInOrder = false;  ///< Records are read one by one from there on.
};

std::string textOf(const CsvBookmark& bookmark);

/// @return nothing if the text is not that of a bookmark.
std::optional<CsvBookmark> csvBookmarkIn(std::string_view text);

}  // namespace velmorak
