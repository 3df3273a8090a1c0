#include "files/FileList.h"

#include "csv/CsvReader.h"
#include "files/Glob.h"

#include <velmorak/Failure.h>
#include <velmorak/RegularFile.h>
#include <velmorak/Run.h>
#include <velmorak/Text.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <fstream>
#include <map>
#include <set>
#include <system_error>
#include <utility>

namespace velmorak {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view fileColumn = "file";

struct Entry {
    std::string text;
    bool isQuoted = false;
};

std::vector<Entry> entriesOf(const std::string& input, std::string_view text) {
    std::vector<Entry> entries;
    while (!text.empty()) {
        text = text.substr(std::min(text.find_first_not_of(" \t\r\n,"), text.size()));
        if (text.empty()) {
            break;
        }
        const bool isQuoted = text.front() == '"';
        const std::size_t end = isQuoted ? text.find('"', 1) : std::min(text.find_first_of(",\r\n"), text.size());
        if (end == std::string_view::npos) {
            throw Failure(input, "the quote before " + velmorak::quoted(text.substr(1)) + " is not closed");
        }
        entries.push_back({std::string(isQuoted ? text.substr(1, end - 1) : trimmed(text.substr(0, end))), isQuoted});
        text = text.substr(std::min(end + 1, text.size()));
    }
    return entries;
}

bool isPropertyTable(std::string name) {
    std::transform(name.begin(), name.end(), name.begin(), [](unsigned char c) { return std::tolower(c); });
    return name.ends_with(".csv") || name.ends_with(".csv.gz") || name.ends_with(".tsv");
}

bool isPresent(const fs::path& path) {
    std::error_code ignored;
    return fs::exists(path, ignored);
}

bool isFolder(const fs::path& path) {
    std::error_code ignored;
    return fs::is_directory(path, ignored);
}

/// Collects the files of one text.
class Finder {
public:
    Finder(const std::string& input, RunContext& context) : input(input), context(context) {}

    FileList find(const std::string& text) {
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
                addNames(entry.text, "", 0);
            }
        }
        return std::move(list);
    }

private:
    void addList(const std::string& name, bool isOnly) {
        if (name.empty()) {
            throw Failure(input, "the name of a list is missing after @");
        }
        if (!isPropertyTable(name)) {
            addLines(name);
        } else if (isOnly) {
            addProperties(name);
        } else {
            throw Failure(input, "the table of file properties " + velmorak::quoted(name) +
                                     " must be the only entry; list the other files in it");
        }
        if (list.files.empty()) {
            throw Failure(input, velmorak::quoted(name) + " lists no file");
        }
    }

    void addLines(const std::string& name) {
        const fs::path path = context.inputFile(name);
        requireRegular(path);
        std::ifstream stream(path, std::ios::binary);
        if (!stream) {
            throw Failure(input, "cannot read the list " + velmorak::quoted(path.string()) + ": " +
                                     std::generic_category().message(errno));
        }
        std::size_t number = 0;
        for (std::string line; std::getline(stream, line);) {
            ++number;
            const std::string_view text = trimmed(std::string_view(line).substr(0, line.find('#')));
            if (text.starts_with('@')) {
                throw Failure(input, velmorak::quoted(name) + ", line " + std::to_string(number) +
                                         ": a list cannot contain another list; give both, separated by a comma");
            }
            if (!text.empty()) {
                addNames(std::string(text), fs::path(name).parent_path(), 0);
            }
        }
    }

    void addProperties(const std::string& name) {
        const CsvOptions plain{.file = context.inputFile(name),
                               .form = {.delimiter = name.ends_with(".tsv") ? '\t' : ',', .comment = "#"},
                               .missing = "NA",
                               .types = {}};
        const Schema schema = CsvReader(plain, context).schema();
        if (!schema.find(fileColumn)) {
            throw Failure(input, velmorak::quoted(name) + " has no column \"file\" with the names of the files");
        }
        CsvOptions options = plain;
        options.types = {{std::string(fileColumn), ColumnType::Text}};
        CsvReader reader(options, context);
        const std::size_t position = *schema.find(fileColumn);
        std::vector<Column> columns(schema.size());
        std::size_t rows = 0;
        for (Chunk chunk; reader.next(chunk); chunk = {}) {
            for (std::size_t i = 0; i < columns.size(); ++i) {
                append(*chunk.columns[i], columns[i], rows == 0);
            }
            rows += chunk.rows;
        }
        for (std::size_t i = 0; i < columns.size(); ++i) {
            if (i != position) {
                list.properties.push_back(reader.schema()[i]);
                list.values.push_back(std::make_shared<const Column>(std::move(columns[i])));
            }
        }
        for (std::size_t row = 0; row < rows; ++row) {
            const std::string file = columns[position].texts()[row];
            if (file.empty()) {
                throw Failure(input,
                              velmorak::quoted(name) + ", row " + std::to_string(row + 1) + ": the file is missing");
            }
            addNames(file, fs::path(name).parent_path(), row);
        }
    }

    static void append(const Column& from, Column& to, bool isFirst) {
        if (isFirst) {
            to = from;
            return;
        }
        std::visit(
            [&](const auto& values) {
                auto& all = std::get<std::decay_t<decltype(values)>>(to.values);
                all.insert(all.end(), values.begin(), values.end());
            },
            from.values);
    }

    /// Adds a file, the matches of a pattern, or the files of a folder.
    /// @param beside folder that a relative name is relative to, itself relative to the document.
    void addNames(const std::string& text, const fs::path& beside, std::size_t row) {
        const fs::path name = beside / text;
        const fs::path path = context.locate(name.string());
        if (isFolder(path)) {
            addFound(filesInFolder(path, context), name, row,
                     "the folder " + velmorak::quoted(path.string()) + " contains no files");
        } else if (isPresent(path) || !isPattern(text)) {
            addFile(name.string(), row);
        } else {
            const fs::path folder = context.locate(beside.empty() ? "." : beside.string());
            addFound(
                glob(folder, text, context), beside, row,
                "no file matches " + velmorak::quoted(text) + " in the folder " + velmorak::quoted(folder.string()));
        }
    }

    void addFound(const std::vector<std::string>& names, const fs::path& beside, std::size_t row,
                  const std::string& messageIfNone) {
        if (names.empty()) {
            throw Failure(input, messageIfNone);
        }
        for (const std::string& name : names) {
            addFile((beside / name).string(), row);
        }
    }

    void addFile(const std::string& name, std::size_t row) {
        fs::path path = context.inputFile(name);
        if (!seen.insert(path.lexically_normal()).second) {
            throw Failure(input, "the file " + velmorak::quoted(name) + " is listed twice");
        }
        list.files.push_back({name, std::move(path), row});
    }

    const std::string& input;
    RunContext& context;
    FileList list;
    std::set<fs::path> seen;
};

}  // namespace

FileList findFiles(const std::string& input, const std::string& text, RunContext& context) {
    return Finder(input, context).find(text);
}

}  // namespace velmorak
