#include "kinds.h"

#include "FormatTable.h"

#include <sqlite/SqliteFile.h>

namespace velmorak {
namespace {

constexpr const char* sqliteNotes =
    R"(The database is only read; see [SQLite databases](../sqlite.md). A query may join tables, use
views, and sort; it is one `SELECT`, and nothing else: no other file is attached, no extension loaded.

SQLite does not give columns a type, so the values decide, all of them: a column is text if any value is a text, else real if
any is real or missing, else integer. One that is declared as `BOOLEAN` and holds only 0 and 1 is boolean. A missing
value (`NULL`) is NaN, or an empty text. Bytes (`BLOB`) are not read.)";

}  // namespace

std::unique_ptr<Kind> makeSqliteTable() {
    return makeFormatTable(
        {.name = "SqliteTable",
         .summary = "Reads a table, a view or the result of a query from SQLite databases.",
         .notes = sqliteNotes,
         .files = "SQLite database",
         .object = "Name of a table or view, or a query such as SELECT run, E FROM hits WHERE E > 5. "
                   "Empty: the only table in the file."},
        makeSqliteFormat());
}

std::unique_ptr<FileFormat> makeSqliteFormat() {
    return makeTableFormat({.name = "SQLite",
                            .description = "an SQLite database",
                            .kind = "SqliteTable",
                            .hasSignature = isSqlite,
                            .list = listSqlite,
                            .open = openSqliteTable});
}

}  // namespace velmorak
