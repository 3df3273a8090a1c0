#pragma once

#include <velmorak/Run.h>

#include <sqlite3.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace velmorak::sqlite {

class Database;

/// A query whose rows are taken one after the other.
class Query {
public:
    /// @throws Failure with the library's reason if the text is not one SELECT, or reads what it may not.
    Query(const Database& database, const std::string& text);

    /// Goes to the next row. @return false after the last one.
    /// @throws Failure if the rows cannot be computed or the file is damaged; Stopped.
    bool next();
    sqlite3_stmt* statement() const { return held.get(); }

private:
    struct Finish {
        void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
    };

    const Database& database;
    std::unique_ptr<sqlite3_stmt, Finish> held;
};

/// A database that is only read. Nothing else can be done with it: an authorizer refuses every statement but SELECT,
/// other files are not attached, extensions are not loaded, and values longer than 64 MiB are refused.
/// Threads: one at a time.
class Database {
public:
    /// @param context is asked while rows are computed whether to stop; outlives this.
    /// @throws Failure if the file cannot be opened or is not a database.
    Database(const std::filesystem::path& file, RunContext& context);

    /// Names of the tables and views, in the order of the file.
    struct Named {
        std::string name;
        std::string type;  ///< "table" or "view".
    };
    std::vector<Named> tables() const;

    /// @throws Failure with the file and the library's last error; Stopped if the run has interrupted it.
    [[noreturn]] void fail(int code) const;

private:
    friend class Query;
    struct Close {
        void operator()(sqlite3* database) const { sqlite3_close_v2(database); }
    };

    /// @return the error of the first look at the file; SQLITE_OK for none.
    int openAs(const std::string& mode);
    void restrict() const;

    std::filesystem::path path;
    RunContext& context;
    std::unique_ptr<sqlite3, Close> held;
};

/// @return the name as it is written in a query. In double quotes, an unknown name would be a text.
std::string quotedName(const std::string& name);

}  // namespace velmorak::sqlite
