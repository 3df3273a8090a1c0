#include "numpy/ArrayTable.h"

#include <algorithm>
#include <map>
#include <utility>

namespace velmorak::numpy {
namespace {

constexpr std::size_t blockBytes = std::size_t{1} << 20U;
constexpr std::uint64_t maxRowBytes = std::uint64_t{1} << 26U;

Column emptyColumn(const ArrayColumn& column) {
    Column made;
    switch (column.info.type) {
        case ColumnType::Real:
            made.values = Column::Reals();
            break;
        case ColumnType::Integer:
            made.values = Column::Integers();
            break;
        case ColumnType::Boolean:
            made.values = Column::Booleans();
            break;
        case ColumnType::Text:
            made.values = Column::Texts();
            break;
    }
    if (column.info.isList) {
        made.offsets.push_back(0);
    }
    return made;
}

/// Columns whose elements of a row lie together: all of an array whose last index runs fastest, or one of another.
struct Plane {
    const StoredArray* array;
    std::uint64_t begin;  ///< In the data of the array.
    std::uint64_t rowStride;
    std::vector<std::size_t> columns;  ///< Positions in the table.
};

/// @param block of rows of the plane.
void append(Column& target, const ArrayColumn& column, const Plane& plane, const char* block, std::size_t rows) {
    const char* first = block + (column.offset - plane.begin);
    if (!column.info.isList) {
        appendElements(target, column.element, first, plane.rowStride, rows);
        return;
    }
    for (std::size_t i = 0; i < rows; ++i) {
        appendElements(target, column.element, first + i * plane.rowStride, column.element.bytes, column.count);
        target.offsets.push_back(target.offsets.back() + column.count);
    }
}

class ArrayReader : public TableReader {
public:
    ArrayReader(std::shared_ptr<const PlainFile> source, std::vector<StoredArray> stored,
                std::vector<ArrayColumn> described, std::uint64_t count, RunContext& runContext);

    const Schema& schema() const override { return offered; }
    void selectColumns(const std::vector<bool>& wanted) override { needed = wanted; }
    bool next(Chunk& chunk) override;
    void complete(Chunk& chunk) const override;
    std::optional<double> fraction() const override {
        return rows == 0 ? 1.0 : static_cast<double>(row) / static_cast<double>(rows);
    }

private:
    using Read = std::function<void(std::uint64_t position, std::size_t count, char* target)>;

    void addToPlanes(std::size_t position);
    bool isNeeded(const Plane& plane) const {
        return std::ranges::any_of(plane.columns, [&](std::size_t position) { return needed[position]; });
    }
    void checkStop() const {
        if (context.isStopping()) {
            throw Stopped();
        }
    }
    void fill(const Plane& plane, std::uint64_t first, Chunk& chunk, const Read& read) const;
    MemberStream& streamOf(std::size_t plane);

    const std::shared_ptr<const PlainFile> file;
    const std::vector<StoredArray> arrays;
    const std::vector<ArrayColumn> columns;
    const std::uint64_t rows;
    RunContext& context;
    Schema offered;
    std::vector<bool> needed;
    std::vector<Plane> planes;
    std::map<std::size_t, std::unique_ptr<MemberStream>> streams;  ///< Of packed planes.
    std::uint64_t row = 0;
};

ArrayReader::ArrayReader(std::shared_ptr<const PlainFile> source, std::vector<StoredArray> stored,
                         std::vector<ArrayColumn> described, std::uint64_t count, RunContext& runContext)
    : file(std::move(source)),
      arrays(std::move(stored)),
      columns(std::move(described)),
      rows(count),
      context(runContext),
      needed(columns.size(), true) {
    for (std::size_t i = 0; i < columns.size(); ++i) {
        offered.add(columns[i].info);
        addToPlanes(i);
    }
}

void ArrayReader::addToPlanes(std::size_t position) {
    const ArrayColumn& column = columns[position];
    const bool isAlone = column.array->header.isFortran && column.array->header.shape.size() > 1;
    const auto same =
        std::ranges::find_if(planes, [&](const Plane& plane) { return plane.array == column.array && !isAlone; });
    if (same != planes.end()) {
        same->columns.push_back(position);
        return;
    }
    if (column.rowStride > maxRowBytes) {
        throw Failure(file->path().string() + ": its rows of " + std::to_string(column.rowStride) +
                      " bytes are too large");
    }
    planes.push_back({column.array, isAlone ? column.offset - column.inItem : 0, column.rowStride, {position}});
}

bool ArrayReader::next(Chunk& chunk) {
    checkStop();
    const std::uint64_t first = row;
    chunk.rows = static_cast<std::size_t>(std::min<std::uint64_t>(rowsInChunk(offered), rows - row));
    chunk.columns.assign(columns.size(), nullptr);
    row += chunk.rows;
    for (std::size_t i = 0; i < planes.size() && chunk.rows > 0; ++i) {
        if (planes[i].array->packed && isNeeded(planes[i])) {
            MemberStream& stream = streamOf(i);
            fill(planes[i], first, chunk,
                 [&](std::uint64_t, std::size_t count, char* target) { stream.read(count, target); });
        }
    }
    return chunk.rows > 0;
}

void ArrayReader::complete(Chunk& chunk) const {
    for (const Plane& plane : planes) {
        if (!plane.array->packed && isNeeded(plane)) {
            fill(plane, chunk.firstRow, chunk, [&](std::uint64_t position, std::size_t count, char* target) {
                file->read(plane.array->position + position, count, target);
            });
        }
    }
}

void ArrayReader::fill(const Plane& plane, std::uint64_t first, Chunk& chunk, const Read& read) const {
    std::vector<std::pair<std::size_t, Column>> made;
    for (const std::size_t position : plane.columns) {
        if (needed[position]) {
            made.emplace_back(position, emptyColumn(columns[position]));
        }
    }
    const std::size_t stride = static_cast<std::size_t>(plane.rowStride);
    const std::size_t rowsInBlock = std::max<std::size_t>(1, blockBytes / std::max<std::size_t>(1, stride));
    const auto block = std::make_unique_for_overwrite<char[]>(std::min(rowsInBlock, chunk.rows) * stride + 1);
    for (std::size_t done = 0; done < chunk.rows; done += rowsInBlock) {
        checkStop();
        const std::size_t count = std::min(rowsInBlock, chunk.rows - done);
        read(plane.begin + (first + done) * plane.rowStride, count * stride, block.get());
        for (auto& [position, column] : made) {
            append(column, columns[position], plane, block.get(), count);
        }
    }
    for (auto& [position, column] : made) {
        chunk.columns[position] = std::make_shared<const Column>(std::move(column));
    }
}

/// A stream at the first row of the plane; later it follows the rows by itself.
MemberStream& ArrayReader::streamOf(std::size_t plane) {
    std::unique_ptr<MemberStream>& stream = streams[plane];
    if (!stream) {
        stream = std::make_unique<MemberStream>(*file, *planes[plane].array->packed);
        stream->skip(planes[plane].array->header.begin + planes[plane].begin);
    }
    return *stream;
}

}  // namespace

std::unique_ptr<TableReader> openArrays(std::shared_ptr<const PlainFile> file, std::vector<StoredArray> arrays,
                                        std::vector<ArrayColumn> columns, std::uint64_t rows, RunContext& context) {
    return std::make_unique<ArrayReader>(std::move(file), std::move(arrays), std::move(columns), rows, context);
}

}  // namespace velmorak::numpy
