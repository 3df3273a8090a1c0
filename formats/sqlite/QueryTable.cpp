#include "sqlite/QueryTable.h"

#include <velmorak/ChunkSize.h>
#include <velmorak/Kind.h>
#include <velmorak/Utf8.h>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <limits>
#include <set>
#include <utility>

namespace velmorak::sqlite {
namespace {

/// What values a column has.
struct Seen {
    bool hasMissing = false;
    bool hasInteger = false;
    bool hasReal = false;
    bool hasText = false;
    bool hasBytes = false;
    bool isBoolean = true;  ///< All integers are 0 or 1.

    void add(sqlite3_stmt* statement, int column);
    FileColumn described(std::string name, bool isDeclaredBoolean) const;
};

void Seen::add(sqlite3_stmt* statement, int column) {
    switch (sqlite3_column_type(statement, column)) {
        case SQLITE_INTEGER: {
            const sqlite3_int64 value = sqlite3_column_int64(statement, column);
            hasInteger = true;
            isBoolean = isBoolean && (value == 0 || value == 1);
            break;
        }
        case SQLITE_FLOAT:
            hasReal = true;
            break;
        case SQLITE_TEXT:
            hasText = true;
            break;
        case SQLITE_BLOB:
            hasBytes = true;
            break;
        default:
            hasMissing = true;
    }
}

FileColumn Seen::described(std::string name, bool isDeclaredBoolean) const {
    FileColumn column{.info = {.name = std::move(name)}};
    if (hasBytes) {
        column.problem = "it holds bytes (BLOB), which are not read";
    } else if (hasText) {
        column.info.type = ColumnType::Text;
    } else if (hasInteger && !hasReal && !hasMissing) {
        column.info.type = isDeclaredBoolean && isBoolean ? ColumnType::Boolean : ColumnType::Integer;
    }
    return column;
}

bool isDeclaredBoolean(sqlite3_stmt* statement, int column) {
    const char* declared = sqlite3_column_decltype(statement, column);
    std::string type = declared ? declared : "";
    std::ranges::transform(type, type.begin(), [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return type.starts_with("BOOL");
}

/// Names that are unique: the second of a name gets a number.
std::vector<std::string> namesOf(sqlite3_stmt* statement) {
    std::vector<std::string> names;
    std::set<std::string> taken;
    for (int i = 0; i < sqlite3_column_count(statement); ++i) {
        const char* given = sqlite3_column_name(statement, i);
        const std::string name = toUtf8(given ? given : "");
        std::string unique = name;
        for (int number = 2; !taken.insert(unique).second; ++number) {
            unique = name + "_" + std::to_string(number);
        }
        names.push_back(std::move(unique));
    }
    return names;
}

Column emptyColumn(ColumnType type) {
    switch (type) {
        case ColumnType::Integer:
            return {.values = Column::Integers(), .offsets = {}};
        case ColumnType::Boolean:
            return {.values = Column::Booleans(), .offsets = {}};
        case ColumnType::Text:
            return {.values = Column::Texts(), .offsets = {}};
        default:
            return {.values = Column::Reals(), .offsets = {}};
    }
}

class QueryReader : public TableReader {
public:
    QueryReader(std::unique_ptr<Database> source, const std::string& text, const std::vector<FileColumn>& columns,
                RunContext& context);

    const Schema& schema() const override { return offered; }
    void selectColumns(const std::vector<bool>& wanted) override { needed = wanted; }
    bool next(Chunk& chunk) override;

private:
    std::size_t append(std::size_t position, Column& column);
    [[noreturn]] void failAt(std::size_t position) const;

    std::unique_ptr<Database> database;
    Query query;
    RunContext& context;
    Schema offered;
    std::vector<bool> needed;
    std::uint64_t rows = 0;
    bool isAtEnd = false;
};

QueryReader::QueryReader(std::unique_ptr<Database> source, const std::string& text,
                         const std::vector<FileColumn>& columns, RunContext& context)
    : database(std::move(source)), query(*database, text), context(context), needed(columns.size(), true) {
    for (const FileColumn& column : columns) {
        offered.add(column.info);
    }
}

void QueryReader::failAt(std::size_t position) const {
    throw Failure("row " + std::to_string(rows + 1) + ", column " + offered[position].name +
                  ": the value has another type than the column; the database was changed meanwhile");
}

/// @return the number of characters of a text.
std::size_t QueryReader::append(std::size_t position, Column& column) {
    sqlite3_stmt* const statement = query.statement();
    const int number = static_cast<int>(position);
    const int type = sqlite3_column_type(statement, number);
    if (auto* texts = std::get_if<Column::Texts>(&column.values)) {
        const auto* bytes = reinterpret_cast<const char*>(sqlite3_column_text(statement, number));
        const auto count = static_cast<std::size_t>(sqlite3_column_bytes(statement, number));
        texts->push_back(bytes ? toUtf8({bytes, count}) : std::string());
        return count;
    }
    if (auto* reals = std::get_if<Column::Reals>(&column.values)) {
        if (type == SQLITE_TEXT || type == SQLITE_BLOB) {
            failAt(position);
        }
        reals->push_back(type == SQLITE_NULL ? std::numeric_limits<double>::quiet_NaN()
                                             : sqlite3_column_double(statement, number));
        return 0;
    }
    if (type != SQLITE_INTEGER) {
        failAt(position);
    }
    const std::int64_t value = sqlite3_column_int64(statement, number);
    if (auto* integers = std::get_if<Column::Integers>(&column.values)) {
        integers->push_back(value);
    } else {
        std::get<Column::Booleans>(column.values).push_back(value != 0 ? 1 : 0);
    }
    return 0;
}

bool QueryReader::next(Chunk& chunk) {
    if (context.isStopping()) {
        throw Stopped();
    }
    std::vector<Column> columns;
    for (const ColumnInfo& info : offered.columns()) {
        columns.push_back(emptyColumn(info.type));
    }
    const std::size_t maxRows = rowsInChunk(offered);
    std::size_t characters = 0;
    chunk.rows = 0;
    while (!isAtEnd && chunk.rows < maxRows && characters < maxChunkBytes) {
        isAtEnd = !query.next();
        for (std::size_t i = 0; i < columns.size() && !isAtEnd; ++i) {
            // Texts are counted in any case, so that the chunks do not depend on the columns in use.
            if (needed[i] || offered[i].type == ColumnType::Text) {
                characters += append(i, columns[i]);
            }
        }
        chunk.rows += isAtEnd ? 0 : 1;
        rows += isAtEnd ? 0 : 1;
    }
    for (std::size_t i = 0; i < columns.size(); ++i) {
        chunk.columns.push_back(needed[i] ? std::make_shared<const Column>(std::move(columns[i])) : nullptr);
    }
    return chunk.rows > 0;
}

}  // namespace

std::vector<FileColumn> columnsOf(const Database& database, const std::string& text, std::size_t maxRows) {
    Query query(database, text);
    const int count = sqlite3_column_count(query.statement());
    std::vector<Seen> seen(static_cast<std::size_t>(count));
    for (std::size_t row = 0; (maxRows == 0 || row < maxRows) && query.next(); ++row) {
        for (int i = 0; i < count; ++i) {
            seen[static_cast<std::size_t>(i)].add(query.statement(), i);
        }
    }
    std::vector<FileColumn> columns;
    const std::vector<std::string> names = namesOf(query.statement());
    for (int i = 0; i < count; ++i) {
        const auto position = static_cast<std::size_t>(i);
        columns.push_back(seen[position].described(names[position], isDeclaredBoolean(query.statement(), i)));
    }
    return columns;
}

std::unique_ptr<TableReader> openQuery(std::unique_ptr<Database> database, const std::string& query,
                                       const std::vector<FileColumn>& columns, RunContext& context) {
    return std::make_unique<QueryReader>(std::move(database), query, columns, context);
}

}  // namespace velmorak::sqlite
