#include "csv/CsvReader.h"

#include <charconv>
#include <string_view>
#include <system_error>

/// Reading a file from the middle on.
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

std::optional<std::string> CsvReader::bookmark() const {
    const std::optional<CsvPlace> place = failure ? std::nullopt : stream.place();
    if (!place) {
        return std::nullopt;
    }
    return std::to_string(place->byte) + ":" + std::to_string(place->line) + std::string(isInOrder ? inOrderMark : "");
}

void CsvReader::seek(std::uint64_t /*file*/, const ChunkStart& start) {
    std::string_view text = start.bookmark;
    CsvPlace place;
    const bool hasByte = takeNumber(text, place.byte) && text.starts_with(':');
    text.remove_prefix(hasByte ? 1 : 0);
    if (!hasByte || !takeNumber(text, place.line) || (!text.empty() && text != inOrderMark)) {
        throw Failure("file", "\"" + options.file.string() + "\" has no place " + start.bookmark);
    }
    stream.seek(place);
    isInOrder = isInOrder || !text.empty();
}

}  // namespace velmorak
