#include "TableFile.h"

#include "sqlite/SqliteFile.h"

#include <velmorak/TemporaryFolder.h>

#include <fstream>

// An SQLite database: its list and each of its tables. The library follows links to a file's own name, so it needs one.

namespace velmorak::fuzz {
namespace {

void readAll(const std::filesystem::path& file) {
    // A few pages can describe billions of rows.
    constexpr long maxPolls = 200;
    QuietContext look(maxPolls);
    for (const FileObject& object : listSqlite(file, look)) {
        refusing([&] {
            QuietContext context(maxPolls);
            readTable(*openSqliteTable(file, object.path, {}, context));
        });
    }
}

}  // namespace
}  // namespace velmorak::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace velmorak;
    const TemporaryFolder folder("fuzz");
    const std::filesystem::path file = folder.path() / "input.db";
    std::ofstream(file, std::ios::binary) << fuzz::textOf(data, size);
    fuzz::refusing([&] { fuzz::readAll(file); });
    return 0;
}
