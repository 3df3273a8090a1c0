#include <velmorak/Failure.h>
#include <velmorak/FolderNames.h>
#include <velmorak/Text.h>
#include <velmorak/Utf8.h>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <system_error>

namespace velmorak {

namespace fs = std::filesystem;

namespace {

/// Reads a text character by character: a code point of UTF-8, or a byte that is not part of one.
class Characters {
public:
    explicit Characters(std::string_view text) : text(text) {}

    bool isAtEnd() const { return position == text.size(); }

    std::uint32_t next();

private:
    std::string_view text;
    std::size_t position = 0;
};

std::uint32_t Characters::next() {
    const std::string_view rest = text.substr(position);
    const std::size_t length = characterBytes(rest);
    position += std::max<std::size_t>(length, 1);
    return length == 0 ? static_cast<unsigned char>(rest.front()) : codePointOf(rest.substr(0, length));
}

/// @return the last character of a range whose first one has been read, and moves the set behind it; nothing if there
///         is not a range.
std::optional<std::uint32_t> endOfRange(Characters& set) {
    Characters range = set;
    if (range.isAtEnd() || range.next() != '-' || range.isAtEnd()) {
        return std::nullopt;
    }
    const std::uint32_t end = range.next();
    if (end == ']') {
        return std::nullopt;
    }
    set = range;
    return end;
}

/// Whether a character is in the set that begins after "[" in the pattern. Moves the pattern behind the set.
/// @return nothing if the set is not closed, so that "[" stands for itself.
std::optional<bool> isInSet(Characters& pattern, std::uint32_t character) {
    Characters set = pattern;
    Characters ahead = set;
    const std::uint32_t first = ahead.isAtEnd() ? 0 : ahead.next();
    const bool isNegated = first == '!' || first == '^';
    if (isNegated) {
        set = ahead;
    }
    bool isFound = false;
    for (bool isFirst = true; !set.isAtEnd(); isFirst = false) {
        const std::uint32_t low = set.next();
        if (low == ']' && !isFirst) {
            pattern = set;
            return isFound != isNegated;
        }
        const std::uint32_t high = endOfRange(set).value_or(low);
        isFound = isFound || (low <= character && character <= high);
    }
    return std::nullopt;
}

/// Matches one character with the beginning of the pattern, which is not a star. Moves both on.
bool matchOne(Characters& pattern, Characters& name) {
    const std::uint32_t wanted = pattern.next();
    const std::uint32_t character = name.next();
    if (wanted == '?') {
        return true;
    }
    if (wanted == '[') {
        return isInSet(pattern, character).value_or(character == '[');
    }
    return wanted == character;
}

bool isStar(Characters pattern) {
    return !pattern.isAtEnd() && pattern.next() == '*';
}

}  // namespace

bool matchesPattern(std::string_view nameText, std::string_view patternText) {
    if (nameText.starts_with('.') && !patternText.starts_with('.')) {
        return false;
    }
    Characters name(nameText);
    Characters pattern(patternText);
    std::optional<Characters> afterStar;  // In the pattern; the star takes the name's characters up to taken.
    Characters taken = name;
    while (!name.isAtEnd()) {
        if (isStar(pattern)) {
            pattern.next();
            afterStar = pattern;
            taken = name;
        } else if (pattern.isAtEnd() || !matchOne(pattern, name)) {
            if (!afterStar) {
                return false;
            }
            taken.next();
            name = taken;
            pattern = *afterStar;
        }
    }
    while (isStar(pattern)) {
        pattern.next();
    }
    return pattern.isAtEnd();
}

std::vector<std::string> namesInFolder(const fs::path& folder, const std::string& pattern) {
    std::vector<std::string> names;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error); !error && entry != fs::directory_iterator();
         entry.increment(error)) {
        std::string name = entry->path().filename().string();
        if (matchesPattern(name, pattern)) {
            names.push_back(std::move(name));
        }
    }
    if (error && error != std::errc::not_a_directory && error != std::errc::no_such_file_or_directory) {
        throw Failure("cannot read the folder " + velmorak::quoted(folder.string()) + ": " + error.message());
    }
    std::sort(names.begin(), names.end());
    return names;
}

}  // namespace velmorak
