#include "parquet/ParquetColumns.h"

#include "columnar/Columns.h"
#include "parquet/ValueRange.h"

#include <velmorak/Failure.h>

#include <fmt/format.h>

#include <algorithm>

namespace velmorak::parquet {
namespace {

constexpr std::size_t maxPageBytes = std::size_t{512} << 20U;
constexpr std::size_t maxChunkBytes = std::size_t{256} << 20U;
constexpr std::string_view unitKey = "velmorak.unit.";

/// Appends rows that begin in a page, after elements with which the page continues the row before.
void appendPage(const Column& page, bool continues, std::uint64_t first, std::uint64_t last, Column& target) {
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
    std::size_t leaf = 0;
    ColumnType type = ColumnType::Real;
    std::size_t group = 0;
    std::uint64_t first = 0;
    std::uint64_t last = 0;
};

ParquetColumns::ParquetColumns(const std::filesystem::path& path)
    : file(path), firstRows{0}, chunks(maxChunkBytes), pages(maxPageBytes) {
    try {
        description = readMetadata(file);
        all = leavesOf(description.schema);
        checkGroups();
    } catch (const Failure& failure) {
        throw Failure(path.string() + ": " + failure.what());
    }
}

void ParquetColumns::checkGroups() {
    constexpr std::int64_t maxRows = std::int64_t{1} << 50U;
    for (const RowGroup& group : description.groups) {
        if (group.columns.size() != all.size()) {
            throw Failure(
                fmt::format("a row group has {} columns, but the schema {}", group.columns.size(), all.size()));
        }
        if (group.rows < 0 || group.rows > maxRows - static_cast<std::int64_t>(firstRows.back())) {
            throw Failure("a row group has an impossible number of rows");
        }
        firstRows.push_back(firstRows.back() + static_cast<std::uint64_t>(group.rows));
    }
}

/// Without statistics, values may be missing.
bool ParquetColumns::hasMissing(std::size_t leaf) const {
    return all[leaf].mayBeMissing() &&
           std::any_of(description.groups.begin(), description.groups.end(), [leaf](const RowGroup& group) {
               return group.rows > 0 && group.columns[leaf].statistics.nulls != 0;
           });
}

ColumnInfo ParquetColumns::info(std::size_t position) const {
    const Leaf& leaf = all[position];
    ColumnInfo info{leaf.name, leaf.type, leaf.isList()};
    if (info.type != ColumnType::Text && hasMissing(position)) {
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

ColumnPtr ParquetColumns::read(std::size_t leaf, ColumnType type, std::uint64_t first, std::uint64_t rows) const {
    auto target = std::make_shared<Column>(columnar::emptyColumn(type, all[leaf].isList()));
    const auto after = std::upper_bound(firstRows.begin(), firstRows.end(), first);
    auto group = static_cast<std::size_t>(after - firstRows.begin()) - 1;
    for (; group + 1 < firstRows.size() && firstRows[group] < first + rows; ++group) {
        const std::uint64_t begin = std::max(first, firstRows[group]);
        const std::uint64_t end = std::min(first + rows, firstRows[group + 1]);
        const Range range{leaf, type, group, begin - firstRows[group], end - firstRows[group]};
        if (begin == end) {
            continue;
        }
        try {
            if (ColumnPtr whole = readGroup(range, rows, *target)) {
                return whole;
            }
        } catch (const Failure& failure) {
            throw Failure(fmt::format("{}: the column {} is damaged in row group {}: {}", file.path().string(),
                                      all[leaf].name, group, failure.what()));
        }
    }
    return target;
}

bool ParquetColumns::isBeyond(std::size_t position, const ColumnBound& bound, std::uint64_t first,
                              std::uint64_t rows) const {
    const auto after = std::upper_bound(firstRows.begin(), firstRows.end(), first);
    auto group = static_cast<std::size_t>(after - firstRows.begin()) - 1;
    for (; group + 1 < firstRows.size() && firstRows[group] < first + rows; ++group) {
        const std::optional<ValueRange> range =
            valueRange(all[position], description.groups[group].columns[position].statistics);
        if (firstRows[group] < firstRows[group + 1] && (!range || !bound.excludes(range->low, range->high))) {
            return false;
        }
    }
    return rows > 0;
}

std::shared_ptr<const DecodedPage> ParquetColumns::decoded(const Range& range, const ChunkPages& found,
                                                           std::size_t page, std::uint64_t used) const {
    const PageSpot& spot = found.pages[page];
    const auto load = [&] {
        const PageReader reader(file, all[range.leaf], description.groups[range.group].columns[range.leaf].codec);
        return reader.page(spot, found.dictionary.get(), range.type);
    };
    // A page that only continues a row is read with it.
    return pages.get({range.group, range.leaf, page}, spot.rows, used, load);
}

/// Appends the rows.
/// @param rows that are wanted in all.
/// @return the page's column instead, if it has exactly the wanted rows.
ColumnPtr ParquetColumns::readGroup(const Range& range, std::uint64_t rows, Column& target) const {
    const RowGroup& group = description.groups[range.group];
    const auto groupRows = static_cast<std::uint64_t>(group.rows);
    const auto found = chunks.get({range.group, range.leaf, 0}, groupRows, range.last - range.first, [&] {
        return findPages(file, all[range.leaf], group.columns[range.leaf], groupRows, range.type);
    });
    for (std::size_t i = 0; i < found->pages.size(); ++i) {
        const PageSpot& spot = found->pages[i];
        const std::uint64_t first = std::max(range.first, spot.firstRow);
        const std::uint64_t last = std::max(first, std::min(range.last, spot.firstRow + spot.rows));
        const bool continues = spot.continues && range.first < spot.firstRow && spot.firstRow <= range.last;
        if (first == last && !continues) {
            continue;
        }
        const auto page = decoded(range, *found, i, last - first);
        if (last - first == rows && spot.rows == rows && !page->column.isList()) {
            return ColumnPtr(page, &page->column);
        }
        appendPage(page->column, continues, first - spot.firstRow, last - spot.firstRow, target);
    }
    return nullptr;
}

}  // namespace velmorak::parquet
