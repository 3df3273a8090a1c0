#include "sqlite/Database.h"

#include <velmorak/Failure.h>
#include <velmorak/RegularFile.h>
#include <velmorak/SystemReason.h>
#include <velmorak/Utf8.h>

#include <array>
#include <fstream>
#include <string_view>
#include <utility>

namespace velmorak::sqlite {
namespace {

constexpr int instructionsPerPoll = 10000;
constexpr sqlite3_int64 maxHeapBytes = sqlite3_int64{1} << 30U;

/// The library does not say what the system said.
void requireReadable(const std::filesystem::path& file) {
    errno = 0;
    if (!std::ifstream(file, std::ios::binary)) {
        throw Failure(file.string() + " cannot be opened" + systemReason(errno));
    }
}

/// A path as part of a URI.
std::string escaped(const std::string& path) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string uri;
    for (const char each : path) {
        const auto byte = static_cast<unsigned char>(each);
        if (each == '%' || each == '?' || each == '#' || byte < 0x21 || byte > 0x7E) {
            uri += '%';
            uri += digits[byte >> 4U];
            uri += digits[byte & 15U];
        } else {
            uri += each;
        }
    }
    return uri;
}

int authorize(void* /*context*/, int action, const char* /*first*/, const char* second, const char* /*database*/,
              const char* /*trigger*/) {
    switch (action) {
        case SQLITE_SELECT:
        case SQLITE_READ:
        case SQLITE_RECURSIVE:
            return SQLITE_OK;
        case SQLITE_FUNCTION:
            return second && std::string_view(second) == "load_extension" ? SQLITE_DENY : SQLITE_OK;
        default:
            return SQLITE_DENY;
    }
}

int poll(void* context) {
    return static_cast<const RunContext*>(context)->isStopping() ? 1 : 0;
}

}  // namespace

Query::Query(const Database& database, const std::string& text) : database(database) {
    sqlite3_stmt* statement = nullptr;
    const char* rest = nullptr;
    const int code =
        sqlite3_prepare_v2(database.held.get(), text.data(), static_cast<int>(text.size()), &statement, &rest);
    held.reset(statement);
    if (code != SQLITE_OK) {
        database.fail(code);
    }
    const std::string_view tail(rest, static_cast<std::size_t>(text.data() + text.size() - rest));
    if (!statement || sqlite3_column_count(statement) == 0 || tail.find_first_not_of("; \t\r\n") != std::string::npos) {
        throw Failure("object", "expected the name of a table or view, or one SELECT");
    }
}

bool Query::next() {
    const int code = sqlite3_step(held.get());
    if (code != SQLITE_ROW && code != SQLITE_DONE) {
        database.fail(code);
    }
    return code == SQLITE_ROW;
}

Database::Database(const std::filesystem::path& file, RunContext& context) : path(file), context(context) {
    requireRegular(file);
    requireReadable(file);
    sqlite3_hard_heap_limit64(maxHeapBytes);
    int code = openAs("mode=ro");
    // A database in write-ahead mode needs files beside it, which may not be created in a folder that is read-only.
    // Nobody can be writing to it there, unless its log exists.
    std::error_code missing;
    const bool hasLog = std::filesystem::exists(file.string() + "-wal", missing);
    if ((code == SQLITE_CANTOPEN || code == SQLITE_READONLY) && !hasLog) {
        code = openAs("immutable=1");
    }
    if (code != SQLITE_OK) {
        fail(code);
    }
    restrict();
}

int Database::openAs(const std::string& mode) {
    const std::string uri = "file:" + escaped(std::filesystem::absolute(path).string()) + "?" + mode;
    constexpr int flags = SQLITE_OPEN_READONLY | SQLITE_OPEN_URI | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_PRIVATECACHE;
    sqlite3* opened = nullptr;
    const int code = sqlite3_open_v2(uri.c_str(), &opened, flags, nullptr);
    held.reset(opened);
    if (code != SQLITE_OK) {
        return code & 0xFF;
    }
    return sqlite3_exec(opened, "SELECT count(*) FROM sqlite_schema", nullptr, nullptr, nullptr) & 0xFF;
}

void Database::restrict() const {
    sqlite3* const database = held.get();
    constexpr std::array<std::pair<int, int>, 5> settings = {{{SQLITE_DBCONFIG_DEFENSIVE, 1},
                                                              {SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0},
                                                              {SQLITE_DBCONFIG_ENABLE_LOAD_EXTENSION, 0},
                                                              {SQLITE_DBCONFIG_ENABLE_TRIGGER, 0},
                                                              {SQLITE_DBCONFIG_ENABLE_FTS3_TOKENIZER, 0}}};
    for (const auto& [setting, value] : settings) {
        sqlite3_db_config(database, setting, value, nullptr);
    }
    sqlite3_limit(database, SQLITE_LIMIT_LENGTH, 1 << 26);
    sqlite3_limit(database, SQLITE_LIMIT_SQL_LENGTH, 1 << 20);
    sqlite3_limit(database, SQLITE_LIMIT_ATTACHED, 0);
    sqlite3_exec(database, "PRAGMA cell_size_check=1", nullptr, nullptr, nullptr);
    sqlite3_set_authorizer(database, authorize, nullptr);
    sqlite3_progress_handler(database, instructionsPerPoll, poll, &context);
}

void Database::fail(int code) const {
    if ((code & 0xFF) == SQLITE_INTERRUPT && context.isStopping()) {
        throw Stopped();
    }
    const std::string reason = held ? toUtf8(sqlite3_errmsg(held.get())) : "out of memory";
    switch (code & 0xFF) {
        case SQLITE_ERROR:
        case SQLITE_AUTH:
            throw Failure("object", reason + "; only tables and views can be read, and nothing can be changed");
        case SQLITE_NOTADB:
            throw Failure(path.string() + " is not an SQLite database, or is encrypted");
        default:
            throw Failure(path.string() + " cannot be read: " + reason);
    }
}

std::vector<Database::Named> Database::tables() const {
    Query query(*this,
                "SELECT name, type FROM sqlite_schema WHERE type IN ('table', 'view') AND name NOT LIKE 'sqlite\\_%' "
                "ESCAPE '\\' ORDER BY rowid");
    const auto text = [&](int column) {
        const auto* bytes = sqlite3_column_text(query.statement(), column);
        return bytes ? std::string(reinterpret_cast<const char*>(bytes)) : std::string();
    };
    std::vector<Named> found;
    while (query.next()) {
        found.push_back({text(0), text(1)});
    }
    return found;
}

std::string quotedName(const std::string& name) {
    std::string result = "`";
    for (const char each : name) {
        result += each == '`' ? "``" : std::string(1, each);
    }
    return result + "`";
}

}  // namespace velmorak::sqlite
