#include "InputFile.h"
#include "QuietContext.h"
#include "Target.h"

#include <velmorak/Aida.h>

// Everything that an AIDA file holds: its list, its objects, and the rows of its first tables.

namespace velmorak::fuzz {
namespace {

constexpr std::size_t maxTables = 4;
constexpr std::size_t maxChunks = 4;

void readTable(const std::filesystem::path& file, const std::string& object) {
    QuietContext context;
    const std::unique_ptr<TableReader> reader = openAidaTable(file, object, context);
    Chunk chunk;
    for (std::size_t i = 0; i < maxChunks && reader->next(chunk); ++i) {
        reader->complete(chunk);
        require(chunk.columns.size() == reader->schema().size(), "a chunk has the columns of its schema");
        for (std::size_t column = 0; column < chunk.columns.size(); ++column) {
            const Column& values = *chunk.columns[column];
            require(values.type() == reader->schema()[column].type, "a column has the type that was announced");
            require((values.isList() ? values.offsets.size() - 1 : values.valueCount()) == chunk.rows,
                    "a column has a value for each row");
        }
        chunk = {};
    }
}

template <typename Action>
void refusing(const Action& action) {
    try {
        action();
    } catch (const Failure&) {
    } catch (const Stopped&) {
    }
}

void readFile(const std::filesystem::path& file) {
    std::vector<AidaEntry> entries;
    refusing([&] {
        QuietContext context;
        entries = listAida(file, context);
    });
    refusing([&] {
        QuietContext context;
        readAidaObjects(file, context);
    });
    std::size_t tables = 0;
    for (const AidaEntry& entry : entries) {
        if (entry.schema.size() > 0 && tables++ < maxTables) {
            refusing([&] { readTable(file, entry.path); });
        }
    }
}

}  // namespace
}  // namespace velmorak::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const velmorak::fuzz::InputFile file(velmorak::fuzz::textOf(data, size));
    velmorak::fuzz::readFile(file.path());
    return 0;
}
