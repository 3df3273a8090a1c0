#include "sqlite/SqliteFile.h"

#include "sqlite/QueryTable.h"

#include <velmorak/Failure.h>
#include <velmorak/NameList.h>
#include <velmorak/Text.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <string_view>
#include <utility>

namespace velmorak {
namespace {

using sqlite::Database;
using sqlite::quotedName;

/// Rows that a preview looks at.
constexpr std::size_t rowsOfPreview = 1000;

std::string queryOf(const std::string& table) {
    return "SELECT * FROM " + quotedName(table);
}

/// A query begins with one of its words, which no table has as its name by accident.
bool isQuery(std::string_view object) {
    constexpr std::array<std::string_view, 3> words = {"select", "with", "values"};
    return std::ranges::any_of(words, [&](std::string_view word) {
        const bool isFollowed = object.size() > word.size() &&
                                std::string_view(" \t\r\n(").find(object[word.size()]) != std::string_view::npos;
        return isFollowed && std::ranges::equal(object.substr(0, word.size()), word, {},
                                                [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    });
}

std::string chosenQuery(const Database& database, const std::string& object, const std::string& file) {
    std::vector<std::string> names;
    for (const Database::Named& table : database.tables()) {
        names.push_back(table.name);
    }
    const std::string_view trimmedObject = trimmed(object);
    if (std::ranges::count(names, object) == 0 && isQuery(trimmedObject)) {
        return std::string(trimmedObject.substr(0, trimmedObject.find_last_not_of("; \t\r\n") + 1));
    }
    if (names.empty()) {
        throw Failure(file + " contains no table");
    }
    if (object.empty() && names.size() > 1) {
        throw Failure("object",
                      file + " contains several tables; enter the name of one, or a SELECT: " + listOfNames(names));
    }
    if (!object.empty() && std::ranges::count(names, object) == 0) {
        throw Failure("object",
                      file + " contains no table " + velmorak::quoted(object) + "; it contains " + listOfNames(names));
    }
    return queryOf(object.empty() ? names.front() : object);
}

/// The same query with some of its columns only.
std::string restricted(const std::string& query, const std::vector<std::string>& columns) {
    std::string list;
    for (const std::string& name : columns) {
        list += (list.empty() ? "" : ", ") + quotedName(name);
    }
    return "SELECT " + list + " FROM (" + query + "\n)";
}

std::vector<std::string> readableOf(const std::vector<FileColumn>& columns, const std::string& file,
                                    RunContext& context) {
    std::vector<std::string> names;
    for (const FileColumn& column : columns) {
        if (column.problem.empty()) {
            names.push_back(column.info.name);
        } else {
            context.warn(file + ": the column " + velmorak::quoted(column.info.name) +
                         " is left out: " + column.problem);
        }
    }
    if (names.empty()) {
        throw Failure(file + " contains no column that can be read");
    }
    return names;
}

/// @throws Failure if a name is unknown.
void checkNames(const Database& database, const std::string& query, const std::vector<std::string>& wanted) {
    std::vector<std::string> known;
    for (const FileColumn& column : sqlite::columnsOf(database, query, 1)) {
        known.push_back(column.info.name);
    }
    for (const std::string& name : wanted) {
        if (std::ranges::count(known, name) == 0) {
            throw Failure("columns",
                          "there is no column " + velmorak::quoted(name) + "; the columns are " + listOfNames(known));
        }
    }
}

}  // namespace

bool isSqlite(const FileStart& start) {
    return start.bytes.starts_with(std::string_view("SQLite format 3\0", 16));
}

std::vector<FileObject> listSqlite(const std::filesystem::path& file, RunContext& context) {
    const Database database(file, context);
    std::vector<FileObject> objects;
    for (const Database::Named& table : database.tables()) {
        FileObject object{.path = table.name, .type = table.type};
        try {
            object.columns = sqlite::columnsOf(database, queryOf(table.name), 0);
            sqlite::Query count(database, "SELECT count(*) FROM " + quotedName(table.name));
            count.next();
            object.rows = static_cast<std::uint64_t>(sqlite3_column_int64(count.statement(), 0));
            object.isTable = true;
        } catch (const Failure& failure) {
            object.description = std::string("cannot be read: ") + failure.what();
        }
        objects.push_back(std::move(object));
    }
    return objects;
}

std::unique_ptr<TableReader> openSqliteTable(const std::filesystem::path& file, const std::string& object,
                                             const std::vector<std::string>& columns, RunContext& context) {
    auto database = std::make_unique<Database>(file, context);
    std::string query = chosenQuery(*database, object, file.string());
    if (!columns.empty()) {
        checkNames(*database, query, columns);
        query = restricted(query, columns);
    }
    const std::size_t maxRows = context.isPreview() ? rowsOfPreview : 0;
    std::vector<FileColumn> found = sqlite::columnsOf(*database, query, maxRows);
    for (const FileColumn& column : found) {
        if (!columns.empty() && !column.problem.empty()) {
            throw Failure("columns",
                          "the column " + velmorak::quoted(column.info.name) + " cannot be read: " + column.problem);
        }
    }
    const std::vector<std::string> readable = readableOf(found, file.string(), context);
    if (readable.size() < found.size()) {
        query = restricted(query, readable);
        std::erase_if(found, [](const FileColumn& column) { return !column.problem.empty(); });
    }
    return sqlite::openQuery(std::move(database), query, found, context);
}

}  // namespace velmorak
