#include "InputFile.h"
#include "QuietContext.h"
#include "Target.h"

#include "arrow/ArrowFile.h"

// A file or stream of Arrow.

namespace velmorak::fuzz {
namespace {

void checkColumn(const Column& column, const ColumnInfo& info, std::size_t rows) {
    require(column.type() == info.type && column.isList() == info.isList, "a column has the type of its schema");
    if (!column.isList()) {
        require(column.valueCount() == rows, "a column has a value for each row");
        return;
    }
    require(column.offsets.size() == rows + 1 && column.offsets.front() == 0, "a list column has a list for each row");
    require(column.offsets.back() == column.valueCount(), "the lists have all values");
}

void readAll(const std::filesystem::path& file) {
    QuietContext context(2000);
    const std::unique_ptr<TableReader> reader = openArrow(file, {}, nullptr, context);
    Chunk chunk;
    for (std::uint64_t row = 0; reader->next(chunk); row += chunk.rows) {
        chunk.firstRow = row;
        reader->complete(chunk);
        require(chunk.columns.size() == reader->schema().size(), "a chunk has the columns of its schema");
        for (std::size_t i = 0; i < chunk.columns.size(); ++i) {
            checkColumn(*chunk.columns[i], reader->schema()[i], chunk.rows);
        }
        chunk.columns.clear();
    }
}

}  // namespace
}  // namespace velmorak::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace velmorak;
    const fuzz::InputFile file(fuzz::textOf(data, size));
    try {
        fuzz::readAll(file.path());
    } catch (const Failure&) {
    } catch (const Stopped&) {
    }
    return 0;
}
