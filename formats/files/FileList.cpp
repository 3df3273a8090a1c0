#include "files/FileList.h"

#include "files/FileFacts.h"
#include "files/FileProperties.h"
#include "files/Glob.h"

#include <velmorak/Failure.h>
#include <velmorak/Parts.h>
#include <velmorak/RegularFile.h>
#include <velmorak/Run.h>
#include <velmorak/Text.h>

#include <cerrno>
#include <fstream>
#include <optional>
#include <set>
#include <string_view>
#include <system_error>
#include <utility>

namespace velmorak {

namespace fs = std::filesystem;

namespace {

struct Entry {
    std::string text;
    bool isQuoted = false;
};

/// Takes a name in double quotes from the beginning of a text.
/// @param where beginning of a message.
std::string takeQuoted(const std::string& input, const std::string& where, std::string_view& text) {
    const std::size_t end = text.find('"', 1);
    if (end == std::string_view::npos) {
        throw Failure(input, where + "the quote before " + velmorak::quoted(text.substr(1)) + " is not closed");
    }
    std::string name(text.substr(1, end - 1));
    text.remove_prefix(end + 1);
    return name;
}

std::vector<Entry> entriesOf(const std::string& input, std::string_view text) {
    constexpr std::string_view separators = ",\r\n";
    std::vector<Entry> entries;
    for (text = trimmed(text); !text.empty(); text = trimmed(text)) {
        if (separators.find(text.front()) != std::string_view::npos) {
            text.remove_prefix(1);
        } else if (text.front() == '"') {
            entries.push_back({takeQuoted(input, "", text), true});
            const std::size_t next = text.find_first_not_of(" \t");
            if (next != std::string_view::npos && separators.find(text[next]) == std::string_view::npos) {
                throw Failure(input, "a comma or a line end is missing after " + velmorak::quoted(entries.back().text));
            }
        } else {
            const std::string_view entry = text.substr(0, text.find_first_of(separators));
            entries.push_back({std::string(trimmed(entry)), false});
            text.remove_prefix(entry.size());
        }
    }
    return entries;
}

bool isPresent(const fs::path& path) {
    std::error_code ignored;
    return fs::exists(path, ignored);
}

/// Where relative names begin: at the document, or at the folder of a list.
struct Base {
    fs::path name;   ///< Of the folder, as the document gives it; empty for the document's.
    fs::path place;  ///< Of a list's folder; empty for the document's.
};

/// Collects the files of one text.
class Finder {
public:
    Finder(const std::string& input, RunContext& context) : input(input), context(context) {}

    FileList find(const std::string& text);

private:
    void addList(const std::string& name, bool isOnly);

    void addLines(const std::string& name);

    void addLine(std::string_view line, const std::string& where, bool isFirst, const Base& base);

    void addQuotedLine(std::string_view line, const std::string& where, const Base& base);

    void addProperties(const std::string& name);

    static Base baseOf(const fs::path& listName, const fs::path& list);

    /// @return a name for a file or folder that the context resolves to this place and no other.
    std::string nameIn(const Base& base, const fs::path& text) const;

    /// Adds a file, the matches of a pattern, or the files of a folder.
    void addNames(const std::string& text, const Base& base, std::size_t row);

    /// A pattern that matches nothing beside the document is searched in the current folder, like a file.
    void addMatches(const std::string& text, const Base& base, std::size_t row);

    void addFound(const std::vector<std::string>& names, const fs::path& folder, std::size_t row,
                  const std::string& messageIfNone);

    void addFile(const std::string& name, std::size_t row);

    const std::string& input;
    RunContext& context;
    FileList list;
    std::set<fs::path> seen;
};

FileList Finder::find(const std::string& text) {
    if (!trimmed(text).empty() && isPresent(context.locate(text)) && !isFolder(context.locate(text))) {
        addFile(text, 0);
        return std::move(list);
    }
    const std::vector<Entry> entries = entriesOf(input, text);
    if (entries.empty()) {
        throw Failure(input, "no file is given");
    }
    for (const Entry& entry : entries) {
        if (entry.text.starts_with('@') && !entry.isQuoted) {
            addList(entry.text.substr(1), entries.size() == 1);
        } else {
            addNames(entry.text, {}, 0);
        }
    }
    return std::move(list);
}

void Finder::addList(const std::string& name, bool isOnly) {
    if (name.empty()) {
        throw Failure(input, "the name of a list is missing after @");
    }
    const std::size_t before = list.files.size();
    if (!isPropertyTable(name)) {
        addLines(name);
    } else if (isOnly) {
        addProperties(name);
    } else {
        throw Failure(input, "the table of file properties " + velmorak::quoted(name) +
                                 " must be the only entry; list the other files in it");
    }
    if (list.files.size() == before) {
        throw Failure(input, velmorak::quoted(name) + " lists no file");
    }
}

void Finder::addLines(const std::string& name) {
    const fs::path path = context.inputFile(name);
    list.lists.push_back(name);
    requireRegular(path);
    std::ifstream stream(path, std::ios::binary);
    if (!stream) {
        throw Failure(input, "cannot read the list " + velmorak::quoted(path.string()) + ": " +
                                 std::generic_category().message(errno));
    }
    const Base base = baseOf(name, path);
    std::size_t number = 0;
    for (std::string line; std::getline(stream, line);) {
        const std::string where = velmorak::quoted(name) + ", line " + std::to_string(++number) + ": ";
        addLine(line, where, number == 1, base);
    }
    if (stream.bad()) {
        throw Failure(input, "cannot read the list " + velmorak::quoted(path.string()) + " to its end");
    }
}

void Finder::addLine(std::string_view line, const std::string& where, bool isFirst, const Base& base) {
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    if (context.isStopping()) {
        throw Stopped();
    }
    if (isFirst && line.starts_with(byteOrderMark)) {
        line.remove_prefix(byteOrderMark.size());
    }
    line = trimmed(line);
    if (line.find('\0') != std::string_view::npos) {
        throw Failure(input, where + "it is not a line of text");
    }
    if (line.starts_with('"')) {
        addQuotedLine(line, where, base);
        return;
    }
    line = trimmed(line.substr(0, line.find('#')));
    if (line.starts_with('@')) {
        throw Failure(input, where + "a list cannot contain another list; give both, separated by a comma");
    }
    if (!line.empty()) {
        addNames(std::string(line), base, 0);
    }
}

void Finder::addQuotedLine(std::string_view line, const std::string& where, const Base& base) {
    const std::string name = takeQuoted(input, where, line);
    line = trimmed(line);
    if (!line.empty() && line.front() != '#') {
        throw Failure(input, where + "only a comment may follow the quoted name");
    }
    addNames(name, base, 0);
}

void Finder::addProperties(const std::string& name) {
    FileProperties table = readFileProperties(input, name, context);
    list.lists.push_back(name);
    list.properties = std::move(table.properties);
    list.values = std::move(table.values);
    const Base base = baseOf(name, context.locate(name));
    for (std::size_t row = 0; row < table.files.size(); ++row) {
        addNames(table.files[row], base, row);
    }
}

Base Finder::baseOf(const fs::path& listName, const fs::path& list) {
    return {listName.parent_path(), list.parent_path()};
}

std::string Finder::nameIn(const Base& base, const fs::path& text) const {
    const fs::path name = (base.name / text).empty() ? "." : base.name / text;
    const fs::path place = base.place / text;
    const bool isFree = base.name.empty() && base.place.empty();
    if (isFree || context.locate(name.string()).lexically_normal() == place.lexically_normal()) {
        return name.string();
    }
    return fs::absolute(place).lexically_normal().string();
}

void Finder::addNames(const std::string& text, const Base& base, std::size_t row) {
    if (text.empty()) {
        throw Failure(input, "a file has an empty name");
    }
    const std::string name = nameIn(base, text);
    const fs::path path = context.locate(name);
    if (isFolder(path)) {
        addFound(glob(name, "*", context), name, row,
                 "the folder " + velmorak::quoted(path.string()) + " contains no files");
    } else if (isPresent(path) || !isPattern(text)) {
        addFile(name, row);
    } else {
        addMatches(text, base, row);
    }
}

void Finder::addMatches(const std::string& text, const Base& base, std::size_t row) {
    const std::string name = nameIn(base, {});
    const std::string folder = name == "." ? "" : name;
    std::vector<std::string> names = glob(folder, text, context);
    const fs::path place = context.locate(name);
    std::string searched = velmorak::quoted(fs::absolute(place).lexically_normal().string());
    const bool isDocuments = base.place.empty() && fs::path(text).is_relative();
    std::error_code ignored;
    if (names.empty() && isDocuments && !fs::equivalent(place, fs::current_path(), ignored)) {
        names = glob(fs::current_path().string(), text, context);
        searched += " or in " + velmorak::quoted(fs::current_path().string());
    }
    addFound(names, folder, row, "no file matches " + velmorak::quoted(text) + " in the folder " + searched);
}

void Finder::addFound(const std::vector<std::string>& names, const fs::path& folder, std::size_t row,
                      const std::string& messageIfNone) {
    if (names.empty()) {
        throw Failure(input, messageIfNone);
    }
    for (const std::string& name : names) {
        addFile((folder / name).string(), row);
    }
}

void Finder::addFile(const std::string& name, std::size_t row) {
    fs::path path = context.inputFile(name);
    if (!seen.insert(path.lexically_normal()).second) {
        throw Failure(input, "the file " + velmorak::quoted(name) + " is listed twice");
    }
    list.files.push_back({name, std::move(path), row});
}

}  // namespace

FileList findFiles(const std::string& input, const std::string& text, RunContext& context) {
    std::optional<FileList> found;
    const std::string bytes = factOf(context, "files of " + input + ": " + text, [&] {
        found = Finder(input, context).find(text);
        return bytesOf(*found);
    });
    return found ? *std::move(found) : fileListFrom(bytes, context);
}

}  // namespace velmorak
