#include "parquet/ChunkPages.h"

#include "parquet/Thrift.h"

#include <velmorak/ChunkSize.h>

#include <fmt/format.h>

#include <algorithm>

namespace velmorak::parquet {
namespace {

/// Largest number of values in a page: a few bytes can encode any number of equal ones.
constexpr std::uint32_t maxPageValues = 1U << 24U;

/// Reads headers, of which several may follow each other closely.
class HeaderWindow {
public:
    explicit HeaderWindow(const columnar::FileBytes& file) : file(file) {}

    PageHeader at(std::uint64_t position);

private:
    Bytes bytesAt(std::uint64_t position, std::size_t count);

    const columnar::FileBytes& file;
    columnar::Block block;
    std::uint64_t begin = 0;
};

PageHeader HeaderWindow::at(std::uint64_t position) {
    constexpr std::size_t usualBytes = 4096;
    constexpr std::size_t maxBytes = std::size_t{1} << 24U;
    for (std::size_t size = usualBytes;; size *= 16) {
        try {
            return readPageHeader(bytesAt(position, size));
        } catch (const EndsEarly&) {
            if (size > maxBytes || position + size >= file.size()) {
                throw;
            }
        }
    }
}

Bytes HeaderWindow::bytesAt(std::uint64_t position, std::size_t count) {
    if (position > file.size()) {
        throw Failure("a page is beyond the end of the file");
    }
    const std::uint64_t last = std::min<std::uint64_t>(position + count, file.size());
    if (position < begin || last > begin + block.size()) {
        constexpr std::uint64_t refill = 16384;
        block = file.read(position, std::max(last - position, std::min(refill, file.size() - position)));
        begin = position;
    }
    return block.bytes().subspan(position - begin, last - position);
}

std::uint64_t firstPosition(const ColumnChunk& chunk) {
    const bool hasDictionary = chunk.dictionaryOffset > 0 && chunk.dictionaryOffset < chunk.dataOffset;
    const std::int64_t first = hasDictionary ? chunk.dictionaryOffset : chunk.dataOffset;
    if (first < 0 || chunk.values < 0) {
        throw Failure("its description has negative numbers");
    }
    return static_cast<std::uint64_t>(first);
}

void checkChunk(const Leaf& leaf, const ColumnChunk& chunk, std::uint64_t rows) {
    if (chunk.isElsewhere) {
        throw Failure("its values are in another file, or encrypted");
    }
    if (chunk.type != leaf.element.type) {
        throw Failure("its values have another type than the schema says");
    }
    if (!leaf.isList() && static_cast<std::uint64_t>(chunk.values) != rows) {
        throw Failure(fmt::format("it has {} values for {} rows", chunk.values, rows));
    }
}

}  // namespace

std::size_t ChunkPages::bytes() const {
    return pages.size() * sizeof(PageSpot) + (dictionary ? bytesIn(*dictionary) : 0);
}

ChunkPages findPages(const columnar::FileBytes& file, const Leaf& leaf, const ColumnChunk& chunk, std::uint64_t rows,
                     std::optional<ColumnType> type) {
    checkChunk(leaf, chunk, rows);
    const PageReader reader(file, leaf, chunk.codec);
    HeaderWindow headers(file);
    ChunkPages found;
    std::uint64_t position = firstPosition(chunk);
    std::uint64_t row = 0;
    for (std::uint64_t values = 0; values < static_cast<std::uint64_t>(chunk.values);) {
        PageSpot spot;
        spot.header = headers.at(position);
        spot.position = position + spot.header.headerBytes;
        position = spot.position + spot.header.packedBytes;
        if (spot.header.values > maxPageValues || position > file.size()) {
            throw Failure("a page is larger than it can be");
        }
        if (spot.header.type == PageHeader::Type::Dictionary && type && !found.dictionary) {
            found.dictionary = std::make_shared<const Column>(reader.dictionary(spot, *type));
        } else if (spot.header.isData()) {
            values += spot.header.values;
            reader.countRows(spot);
            spot.firstRow = row;
            row += spot.rows;
            found.pages.push_back(spot);
        }
    }
    if (row != rows) {
        throw Failure(fmt::format("its pages have {} rows, but the row group has {}", row, rows));
    }
    return found;
}

}  // namespace velmorak::parquet
