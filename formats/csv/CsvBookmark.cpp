#include "csv/CsvBookmark.h"

#include <charconv>
#include <string_view>
#include <system_error>

namespace velmorak {

namespace {

/// After the numbers, where records are read one by one from there on.
constexpr std::string_view inOrderMark = " in order";

/// @return whether the text begins with a number, which is removed.
bool takeNumber(std::string_view& text, std::uint64_t& number) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return error == std::errc();
}

}  // namespace

std::string textOf(const CsvBookmark& bookmark) {
    return std::to_string(bookmark.place.byte) + ":" + std::to_string(bookmark.place.line) +
           std::string(bookmark.isInOrder ? inOrderMark : "");
}

std::optional<CsvBookmark> csvBookmarkIn(std::string_view text) {
    CsvBookmark bookmark;
    const bool hasByte = takeNumber(text, bookmark.place.byte) && text.starts_with(':');
    text.remove_prefix(hasByte ? 1 : 0);
    if (!hasByte || !takeNumber(text, bookmark.place.line) || (!text.empty() && text != inOrderMark)) {
        return std::nullopt;
    }
    bookmark.isInOrder = !text.empty();
    return bookmark;
}

}  // namespace velmorak
