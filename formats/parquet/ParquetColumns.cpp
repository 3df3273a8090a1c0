#include "parquet/ParquetColumns.h"

#include "columnar/Columns.h"
#include "parquet/ValueRange.h"

#include <velmorak/Failure.h>

#include <fmt/format.h>

#include <algorithm>
#include <cstring>

namespace velmorak::parquet {
namespace {

using Part = columnar::NestedColumn::Part;

constexpr std::size_t maxPageBytes = std::size_t{512} << 20U;
constexpr std::size_t maxChunkBytes = std::size_t{256} << 20U;
constexpr std::string_view unitKey = "velmorak.unit.";

/// Appends values that are stored as they are in memory.
void appendStored(Bytes stored, std::uint64_t first, std::uint64_t last, Column& target) {
    const auto append = [&](auto& values) {
        const std::size_t before = values.size();
        values.resize(before + (last - first));
        std::memcpy(values.data() + before, stored.data() + first * sizeof(values[0]),
                    (last - first) * sizeof(values[0]));
    };
    if (target.type() == ColumnType::Real) {
        append(std::get<Column::Reals>(target.values));
    } else {
        append(std::get<Column::Integers>(target.values));
    }
}

/// Appends rows that begin in a page, after elements with which the page continues the row before.
void appendPage(const DecodedPage& decoded, bool continues, std::uint64_t first, std::uint64_t last, Column& target) {
    const Column& page = decoded.column;
    if (decoded.isStored()) {
        appendStored(decoded.stored, first, last, target);
        return;
    }
    if (!page.isList()) {
        columnar::appendValues(page, first, last, target);
        return;
    }
    if (continues) {
        columnar::appendValues(page, 0, page.offsets.front(), target);
        target.offsets.back() += page.offsets.front();
    }
    if (first < last) {
        columnar::appendLists(page, first, last, target);
    }
}

}  // namespace

/// Rows [first, last) of a row group, counted from its beginning.
struct ParquetColumns::Range {
    std::size_t position = 0;  ///< Of the column.
    ColumnType type = ColumnType::Real;
    std::size_t group = 0;
    std::uint64_t first = 0;
    std::uint64_t last = 0;

    /// Of a page, counted from the first that begins in it.
    struct PageRows {
        std::uint64_t first = 0;
        std::uint64_t last = 0;
        bool continues = false;  ///< The page begins with more of a row in the range.

        bool areNone() const { return first == last && !continues; }
    };
    PageRows within(const PageSpot& page) const;
    void checkLists(const ChunkPages& found, std::uint64_t valuesBefore) const;
};

ParquetColumns::Range::PageRows ParquetColumns::Range::within(const PageSpot& page) const {
    const std::uint64_t begin = std::max(first, page.firstRow);
    const std::uint64_t end = std::max(begin, std::min(last, page.firstRow + page.rows));
    const bool continues = page.continues && first < page.firstRow && page.firstRow <= last;
    return {begin - page.firstRow, end - page.firstRow, continues};
}

/// @throws Failure if the lists of the pages would take too much memory.
void ParquetColumns::Range::checkLists(const ChunkPages& found, std::uint64_t valuesBefore) const {
    std::uint64_t values = valuesBefore;
    std::uint64_t bytes = 0;
    for (const PageSpot& page : found.pages) {
        if (!within(page).areNone()) {
            values += page.header.values;
            bytes += page.header.packedBytes;
        }
    }
    columnar::checkListValues(values, bytes);
}

ParquetColumns::ParquetColumns(const std::filesystem::path& path)
    : file(path), firstRows{0}, chunks(maxChunkBytes), pages(maxPageBytes), levels(maxPageBytes) {
    try {
        description = readMetadata(file);
        leaves = leavesOf(description.schema);
        columns = columnsOf(leaves);
        checkGroups();
    } catch (const Failure& failure) {
        throw Failure(path.string() + ": " + failure.what());
    }
}

void ParquetColumns::checkGroups() {
    constexpr std::int64_t maxRows = std::int64_t{1} << 50U;
    for (const RowGroup& group : description.groups) {
        if (group.columns.size() != leaves.size()) {
            throw Failure(
                fmt::format("a row group has {} columns, but the schema {}", group.columns.size(), leaves.size()));
        }
        if (group.rows < 0 || group.rows > maxRows - static_cast<std::int64_t>(firstRows.back())) {
            throw Failure("a row group has an impossible number of rows");
        }
        firstRows.push_back(firstRows.back() + static_cast<std::uint64_t>(group.rows));
    }
}

/// Without statistics, values may be missing.
bool ParquetColumns::hasMissing(std::size_t leaf) const {
    return leaves[leaf].mayBeMissing() &&
           std::any_of(description.groups.begin(), description.groups.end(), [leaf](const RowGroup& group) {
               return group.rows > 0 && group.columns[leaf].statistics.nulls != 0;
           });
}

ColumnInfo ParquetColumns::info(std::size_t position) const {
    const columnar::NestedColumn& column = columns[position];
    if (column.part != Part::Values) {
        return {column.name, ColumnType::Integer, true};
    }
    const Leaf& leaf = leaves[column.leaf];
    ColumnInfo info{leaf.name, leaf.type, leaf.isList()};
    if (info.type != ColumnType::Text && hasMissing(column.leaf)) {
        info.type = ColumnType::Real;
    }
    const Meaning meaning = leaf.element.meaning;
    const bool isTime = meaning == Meaning::Date || meaning == Meaning::Time || meaning == Meaning::Timestamp;
    info.unit = isTime || leaf.element.type == Physical::Int96 ? "s" : "";
    for (const auto& [key, value] : description.keyValues) {
        if (key.starts_with(unitKey) && key.substr(unitKey.size()) == leaf.name) {
            info.unit = value;
        }
    }
    return info;
}

/// Calls a function for the rows in each row group.
/// @return the first column that it returns, or null.
ColumnPtr ParquetColumns::readGroups(std::size_t position, ColumnType type, std::uint64_t first, std::uint64_t rows,
                                     const std::function<ColumnPtr(const Range&)>& read) const {
    const auto after = std::upper_bound(firstRows.begin(), firstRows.end(), first);
    auto group = static_cast<std::size_t>(after - firstRows.begin()) - 1;
    for (; group + 1 < firstRows.size() && firstRows[group] < first + rows; ++group) {
        const std::uint64_t begin = std::max(first, firstRows[group]);
        const std::uint64_t end = std::min(first + rows, firstRows[group + 1]);
        if (begin == end) {
            continue;
        }
        try {
            const Range range{position, type, group, begin - firstRows[group], end - firstRows[group]};
            if (ColumnPtr whole = read(range)) {
                return whole;
            }
        } catch (const Failure& failure) {
            throw Failure(fmt::format("{}: the column {} is damaged in row group {}: {}", file.path().string(),
                                      columns[position].name, group, failure.what()));
        }
    }
    return nullptr;
}

ColumnPtr ParquetColumns::read(std::size_t position, ColumnType type, std::uint64_t first, std::uint64_t rows) const {
    if (columns[position].part != Part::Values) {
        return readLists(position, type, first, rows);
    }
    auto target = std::make_shared<Column>(columnar::emptyColumn(type, leafOf(position).isList()));
    std::visit([rows](auto& values) { values.reserve(rows); }, target->values);
    const ColumnPtr whole =
        readGroups(position, type, first, rows, [&](const Range& range) { return readValues(range, rows, *target); });
    return whole ? whole : target;
}

bool ParquetColumns::isBeyond(std::size_t position, const ColumnBound& bound, std::uint64_t first,
                              std::uint64_t rows) const {
    const std::size_t leaf = columns[position].leaf;
    const auto after = std::upper_bound(firstRows.begin(), firstRows.end(), first);
    auto group = static_cast<std::size_t>(after - firstRows.begin()) - 1;
    for (; group + 1 < firstRows.size() && firstRows[group] < first + rows; ++group) {
        const std::optional<ValueRange> range =
            valueRange(leaves[leaf], description.groups[group].columns[leaf].statistics);
        if (firstRows[group] < firstRows[group + 1] && (!range || !bound.excludes(range->low, range->high))) {
            return false;
        }
    }
    return rows > 0;
}

const ColumnChunk& ParquetColumns::chunkOf(const Range& range) const {
    return description.groups[range.group].columns[columns[range.position].leaf];
}

/// @param type of the values; nothing if only lists are needed.
std::shared_ptr<const ChunkPages> ParquetColumns::pagesOf(const Range& range, std::optional<ColumnType> type) const {
    const auto rows = static_cast<std::uint64_t>(description.groups[range.group].rows);
    return chunks.get({range.group, range.position, 0}, rows, range.last - range.first,
                      [&] { return findPages(file, leafOf(range.position), chunkOf(range), rows, type); });
}

std::shared_ptr<const DecodedPage> ParquetColumns::decoded(const Range& range, const ChunkPages& found,
                                                           std::size_t page, std::uint64_t used) const {
    const PageSpot& spot = found.pages[page];
    const auto load = [&] {
        return PageReader(file, leafOf(range.position), chunkOf(range).codec)
            .page(spot, found.dictionary.get(), range.type);
    };
    // A page that only continues a row is read with it.
    return pages.get({range.group, range.position, page}, spot.rows, used, load);
}

/// Appends the rows.
/// @param rows that are wanted in all.
/// @return the page's column instead, if it has exactly the wanted rows.
ColumnPtr ParquetColumns::readValues(const Range& range, std::uint64_t rows, Column& target) const {
    const auto found = pagesOf(range, range.type);
    if (target.isList()) {
        range.checkLists(*found, target.valueCount());
    }
    for (std::size_t i = 0; i < found->pages.size(); ++i) {
        const Range::PageRows part = range.within(found->pages[i]);
        if (part.areNone()) {
            continue;
        }
        const std::uint64_t used = part.last - part.first;
        const auto page = decoded(range, *found, i, used);
        if (used == rows && found->pages[i].rows == rows && !page->column.isList() && !page->isStored()) {
            return {page, &page->column};
        }
        appendPage(*page, part.continues, part.first, part.last, target);
    }
    return nullptr;
}

ColumnPtr ParquetColumns::readLists(std::size_t position, ColumnType type, std::uint64_t first,
                                    std::uint64_t rows) const {
    ListWalk walk(columns[position], leafOf(position));
    readGroups(position, type, first, rows, [&](const Range& range) {
        walkLists(range, walk);
        return nullptr;
    });
    const auto integers = std::make_shared<const Column>(walk.take());
    return type == ColumnType::Real ? asReals(integers) : integers;
}

void ParquetColumns::walkLists(const Range& range, ListWalk& walk) const {
    const auto found = pagesOf(range, std::nullopt);
    range.checkLists(*found, walk.size());
    for (std::size_t i = 0; i < found->pages.size(); ++i) {
        const PageSpot& spot = found->pages[i];
        const Range::PageRows part = range.within(spot);
        if (part.areNone()) {
            continue;
        }
        const auto page = levels.get({range.group, range.position, i}, spot.rows, part.last - part.first, [&] {
            return PageReader(file, leafOf(range.position), chunkOf(range).codec).levels(spot);
        });
        const std::uint64_t first = part.continues ? 0 : page->rowStarts[part.first];
        for (std::uint64_t at = first; at < page->rowStarts[part.last]; ++at) {
            walk.step(page->repetitions[at], page->definitions[at]);
        }
    }
}

}  // namespace velmorak::parquet
