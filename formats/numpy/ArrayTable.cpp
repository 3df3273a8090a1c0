#include "numpy/ArrayTable.h"

#include "numpy/ListOffsets.h"

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
    const StoredArray* offsets;        ///< Of lists.
};

/// Offsets of the lists in a chunk, for each plane; empty for a plane without lists.
using OffsetsOfPlanes = std::vector<std::vector<std::uint64_t>>;

/// @param block of rows of the plane.
void append(Column& target, const ArrayColumn& column, const Plane& plane, const char* block, std::size_t rows) {
    const char* first = block + (column.offset - plane.begin);
    if (!column.info.isList || column.offsets) {
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
    ArrayReader(std::shared_ptr<const PlainFile> source, std::vector<StoredArray> arrays,
                std::vector<ArrayColumn> described, std::uint64_t rows, RunContext& context);

    const Schema& schema() const override { return offered; }
    void selectColumns(const std::vector<bool>& wanted) override { needed = wanted; }
    bool next(Chunk& chunk) override;
    void complete(Chunk& chunk) const override;
    std::optional<double> fraction() const override;

private:
    using Read = std::function<void(std::uint64_t position, std::size_t count, char* target)>;

    /// Consecutive rows of a plane; of lists, consecutive values.
    struct Rows {
        std::uint64_t first = 0;
        std::size_t count = 0;
    };

    void addToPlanes(std::size_t position);
    void findOffsets(Chunk& chunk);
    Rows rowsIn(std::size_t plane, const Chunk& chunk, std::uint64_t first) const;
    bool isNeeded(const Plane& plane) const;
    /// The least that a value of a plane's lists takes.
    std::size_t bytesInValue(const Plane& plane) const;
    void checkStop() const;
    void fill(std::size_t number, const Rows& range, Chunk& chunk, const Read& read) const;
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
    std::map<std::size_t, ListOffsets> offsets;                    ///< Of planes of lists.
    std::uint64_t row = 0;
};

std::optional<double> ArrayReader::fraction() const {
    return rows == 0 ? 1.0 : static_cast<double>(row) / static_cast<double>(rows);
}

bool ArrayReader::isNeeded(const Plane& plane) const {
    return std::ranges::any_of(plane.columns, [&](std::size_t position) { return needed[position]; });
}

std::size_t ArrayReader::bytesInValue(const Plane& plane) const {
    const bool isBoolean = columns[plane.columns.front()].info.type == ColumnType::Boolean;
    return plane.columns.size() * (isBoolean ? sizeof(std::uint8_t) : sizeof(double));
}

void ArrayReader::checkStop() const {
    if (context.isStopping()) {
        throw Stopped();
    }
}

ArrayReader::ArrayReader(std::shared_ptr<const PlainFile> source, std::vector<StoredArray> arrays,
                         std::vector<ArrayColumn> described, std::uint64_t rows, RunContext& context)
    : file(std::move(source)),
      arrays(std::move(arrays)),
      columns(std::move(described)),
      rows(rows),
      context(context),
      needed(columns.size(), true) {
    for (std::size_t i = 0; i < columns.size(); ++i) {
        offered.add(columns[i].info);
        addToPlanes(i);
    }
    for (std::size_t i = 0; i < planes.size(); ++i) {
        if (planes[i].offsets) {
            offsets.emplace(std::piecewise_construct, std::forward_as_tuple(i),
                            std::forward_as_tuple(file, *planes[i].offsets, planes[i].array->header.rows()));
        }
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
    planes.push_back(
        {column.array, isAlone ? column.offset - column.inItem : 0, column.rowStride, {position}, column.offsets});
}

bool ArrayReader::next(Chunk& chunk) {
    checkStop();
    const std::uint64_t first = row;
    chunk.rows = static_cast<std::size_t>(std::min<std::uint64_t>(rowsInChunk(offered), rows - row));
    chunk.columns.assign(columns.size(), nullptr);
    findOffsets(chunk);
    row += chunk.rows;
    for (std::size_t i = 0; i < planes.size() && chunk.rows > 0; ++i) {
        if (planes[i].array->packed && isNeeded(planes[i])) {
            MemberStream& stream = streamOf(i);
            fill(i, rowsIn(i, chunk, first), chunk,
                 [&](std::uint64_t, std::size_t count, char* target) { stream.read(count, target); });
        }
    }
    return chunk.rows > 0;
}

/// Ends the chunk early where its lists are long.
void ArrayReader::findOffsets(Chunk& chunk) {
    if (offsets.empty() || chunk.rows == 0) {
        return;
    }
    for (auto& [plane, ofPlane] : offsets) {
        ofPlane.readAhead(chunk.rows);
    }
    std::size_t bytes = 0;
    std::size_t count = 0;
    while (count < chunk.rows && bytes < maxChunkBytes) {
        for (const auto& [plane, ofPlane] : offsets) {
            bytes += ofPlane.length(count) * bytesInValue(planes[plane]);
        }
        ++count;
    }
    chunk.rows = count;
    auto ofPlanes = std::make_shared<OffsetsOfPlanes>(planes.size());
    for (auto& [plane, ofPlane] : offsets) {
        (*ofPlanes)[plane] = ofPlane.take(count);
    }
    chunk.owner = std::move(ofPlanes);
}

ArrayReader::Rows ArrayReader::rowsIn(std::size_t plane, const Chunk& chunk, std::uint64_t first) const {
    if (!planes[plane].offsets) {
        return {first, chunk.rows};
    }
    const std::vector<std::uint64_t>& lists = (*std::static_pointer_cast<const OffsetsOfPlanes>(chunk.owner))[plane];
    return {lists.front(), static_cast<std::size_t>(lists.back() - lists.front())};
}

void ArrayReader::complete(Chunk& chunk) const {
    for (std::size_t i = 0; i < planes.size(); ++i) {
        const StoredArray& array = *planes[i].array;
        if (!array.packed && isNeeded(planes[i])) {
            fill(i, rowsIn(i, chunk, chunk.firstRow), chunk,
                 [&](std::uint64_t position, std::size_t count, char* target) {
                     file->read(array.position + position, count, target);
                 });
        }
    }
    chunk.owner.reset();
}

void ArrayReader::fill(std::size_t number, const Rows& range, Chunk& chunk, const Read& read) const {
    const Plane& plane = planes[number];
    std::vector<std::pair<std::size_t, Column>> made;
    for (const std::size_t position : plane.columns) {
        if (needed[position]) {
            made.emplace_back(position, emptyColumn(columns[position]));
        }
    }
    const auto stride = static_cast<std::size_t>(plane.rowStride);
    const std::size_t rowsInBlock = std::max<std::size_t>(1, blockBytes / std::max<std::size_t>(1, stride));
    const auto block = std::make_unique_for_overwrite<char[]>(std::min(rowsInBlock, range.count) * stride + 1);
    for (std::size_t done = 0; done < range.count; done += rowsInBlock) {
        checkStop();
        const std::size_t count = std::min(rowsInBlock, range.count - done);
        read(plane.begin + (range.first + done) * plane.rowStride, count * stride, block.get());
        for (auto& [position, column] : made) {
            append(column, columns[position], plane, block.get(), count);
        }
    }
    for (auto& [position, column] : made) {
        if (plane.offsets) {
            column.offsets = (*std::static_pointer_cast<const OffsetsOfPlanes>(chunk.owner))[number];
            std::ranges::for_each(column.offsets, [&](std::uint64_t& offset) { offset -= range.first; });
        }
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
