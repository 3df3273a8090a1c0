#include "kinds.h"

#include "FormatTable.h"

#include <sqlite/SqliteFile.h>

namespace velmorak {
namespace {

class SqliteFormat : public FileFormat {
public:
    std::string name() const override { return "SQLite"; }
    std::string description() const override { return "an SQLite database"; }
    std::string tableKind() const override { return "SqliteTable"; }
    Recognition recognise(const FileStart& start) const override;
    std::vector<FileObject> objects(const std::filesystem::path& file, RunContext& context) const override;
    std::shared_ptr<const FileOpener> tableOpener(const std::string& object,
                                                  const std::vector<std::string>& columns) const override;
};

Recognition SqliteFormat::recognise(const FileStart& start) const {
    return isSqlite(start) ? Recognition::Certain : Recognition::No;
}

std::vector<FileObject> SqliteFormat::objects(const std::filesystem::path& file, RunContext& context) const {
    return listSqlite(file, context);
}

std::shared_ptr<const FileOpener> SqliteFormat::tableOpener(const std::string& object,
                                                            const std::vector<std::string>& columns) const {
    return openerFor(openSqliteTable, object, columns);
}

constexpr const char* notes =
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
         .notes = notes,
         .files = "SQLite database",
         .object = "Name of a table or view, or a query such as SELECT run, E FROM hits WHERE E > 5. "
                   "Empty: the only table in the file."},
        makeSqliteFormat());
}

std::unique_ptr<FileFormat> makeSqliteFormat() {
    return std::make_unique<SqliteFormat>();
}

}  // namespace velmorak
