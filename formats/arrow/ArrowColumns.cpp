#include "arrow/ArrowColumns.h"

#include "columnar/Columns.h"

#include <velmorak/ChunkSize.h>

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <type_traits>

namespace velmorak::arrow {
namespace {

using Part = columnar::NestedColumn::Part;

constexpr std::size_t maxBufferBytes = std::size_t{1} << 30U;
constexpr std::size_t maxDictionaryBytes = std::size_t{256} << 20U;
/// A dictionary is kept for all rows.
constexpr std::uint64_t always = std::numeric_limits<std::uint64_t>::max();

}  // namespace

std::size_t ArrowColumns::Values::bytes() const {
    return bytesIn(column);
}

ArrowColumns::ArrowColumns(const std::filesystem::path& path)
    : file(path), firstRows{0}, buffers(maxBufferBytes), dictionaries(maxDictionaryBytes) {
    try {
        messages = readMessages(file);
        leaves = leavesOf(messages.fields, messages.hasUnionValidity);
        columns = columnsOf(leaves);
        for (const Batch& batch : messages.batches) {
            firstRows.push_back(firstRows.back() + batch.rows);
            if (firstRows.back() > std::uint64_t{1} << 50U) {
                throw Failure("it has an impossible number of rows");
            }
        }
    } catch (const Failure& failure) {
        throw Failure(path.string() + ": " + failure.what());
    }
}

/// Missing structures have missing values, but missing lists only have none.
bool ArrowColumns::hasMissing(const Leaf& leaf) const {
    std::size_t first = leaf.levels.size();
    while (first > 0 && !isList(leaf.levels[first - 1].type.type)) {
        --first;
    }
    return std::any_of(messages.batches.begin(), messages.batches.end(), [&](const Batch& batch) {
        return std::any_of(leaf.levels.begin() + static_cast<std::ptrdiff_t>(first), leaf.levels.end(),
                           [&](const Level& level) { return mayHaveNulls(level, batch); });
    });
}

ColumnInfo ArrowColumns::info(std::size_t position) const {
    const columnar::NestedColumn& column = columns[position];
    if (column.part != Part::Values) {
        return {column.name, ColumnType::Integer, true};
    }
    const Leaf& leaf = leaves[column.leaf];
    ColumnInfo info{leaf.name, leaf.type, leaf.isList(), leaf.unit};
    const bool isNumber = info.type != ColumnType::Text && leaf.complaint.empty();
    if (isNumber && (leaf.dictionary || hasMissing(leaf))) {
        info.type = ColumnType::Real;  // A dictionary may have missing values itself.
    }
    return info;
}

ColumnPtr ArrowColumns::read(std::size_t position, ColumnType type, std::uint64_t first, std::uint64_t rows) const {
    auto target = std::make_shared<Column>(columnar::emptyColumn(type, leaves[columns[position].leaf].isList()));
    const auto after = std::upper_bound(firstRows.begin(), firstRows.end(), first);
    auto batch = static_cast<std::size_t>(after - firstRows.begin()) - 1;
    for (; batch + 1 < firstRows.size() && firstRows[batch] < first + rows; ++batch) {
        const std::uint64_t begin = std::max(first, firstRows[batch]);
        const std::uint64_t end = std::min(first + rows, firstRows[batch + 1]);
        if (begin == end) {
            continue;
        }
        try {
            Column part = readBatch(position, type, batch, begin - firstRows[batch], end - firstRows[batch]);
            if (end - begin == rows) {
                return std::make_shared<Column>(std::move(part));
            }
            if (part.isList()) {
                columnar::appendLists(part, 0, end - begin, *target);
            } else {
                columnar::appendValues(part, 0, end - begin, *target);
            }
        } catch (const Failure& failure) {
            throw Failure(fmt::format("{}: the column {} is damaged in batch {}: {}", file.path().string(),
                                      columns[position].name, batch, failure.what()));
        }
    }
    return target;
}

Column ArrowColumns::readBatch(std::size_t position, ColumnType type, std::size_t batch, std::uint64_t first,
                               std::uint64_t last) const {
    const columnar::NestedColumn& wanted = columns[position];
    const Leaf& leaf = leaves[wanted.leaf];
    const BatchBuffers parts(file, messages.batches[batch], batch, last - first, buffers);
    if (wanted.part == Part::Values) {
        return valuesIn(leaf, type, batch, parts, elementsOf(leaf, parts, first, last));
    }
    Column lists = listsOf(wanted, leaf, parts, first, last);
    if (type == ColumnType::Real) {
        lists.values = Column::Reals(lists.integers().begin(), lists.integers().end());
    }
    return lists;
}

Column ArrowColumns::valuesIn(const Leaf& leaf, ColumnType type, std::size_t batch, const BatchBuffers& parts,
                              Elements&& elements) const {
    Column column = leaf.dictionary ? lookUp(leaf, positionsOf(leaf, parts, elements), batch, type, elements)
                                    : valuesOf(leaf, parts, elements, type);
    columnar::clearMissing(elements.isPresent, column);
    if (leaf.isList()) {
        column.offsets = std::move(elements.offsets);
    }
    return column;
}

/// @return which parts make up the dictionary for a batch.
std::vector<std::size_t> ArrowColumns::dictionaryParts(std::int64_t id, std::size_t batch) const {
    std::vector<std::size_t> parts;
    for (std::size_t i = 0; i < messages.dictionaries.size(); ++i) {
        const DictionaryBatch& each = messages.dictionaries[i];
        if (each.id == id && each.validFrom <= batch) {
            if (!each.isDelta) {
                parts.clear();
            }
            parts.push_back(i);
        }
    }
    if (parts.empty()) {
        throw Failure("it needs a dictionary that does not exist");
    }
    return parts;
}

std::shared_ptr<const ArrowColumns::Values> ArrowColumns::dictionary(const Leaf& leaf, std::size_t batch,
                                                                     ColumnType type) const {
    const std::vector<std::size_t> parts = dictionaryParts(leaf.dictionary->id, batch);
    return dictionaries.get({parts.front(), parts.size(), 0}, always, 0, [&] {
        const Leaf values = dictionaryLeaf(leaf);
        Values all{columnar::emptyColumn(type, false)};
        BufferCache unpacked(maxBufferBytes);
        for (const std::size_t part : parts) {
            const Batch& contents = messages.dictionaries[part].batch;
            const BatchBuffers from(file, contents, part, contents.rows, unpacked);
            const Elements elements = elementsOf(values, from, 0, contents.rows);
            Column column = valuesOf(values, from, elements, type);
            columnar::clearMissing(elements.isPresent, column);
            columnar::appendValues(column, 0, contents.rows, all.column);
        }
        return all;
    });
}

Column ArrowColumns::lookUp(const Leaf& leaf, const std::vector<std::int64_t>& positions, std::size_t batch,
                            ColumnType type, Elements& elements) const {
    const auto values = dictionary(leaf, batch, type);
    Column column = columnar::emptyColumn(type, false);
    std::visit(
        [&](auto& target) {
            const auto& from = std::get<std::remove_reference_t<decltype(target)>>(values->column.values);
            target.resize(positions.size());
            for (std::size_t i = 0; i < positions.size(); ++i) {
                const bool isThere = elements.isPresent.empty() || elements.isPresent[i] != 0;
                const auto position = static_cast<std::uint64_t>(positions[i]);
                if (isThere && position >= from.size()) {
                    throw Failure(fmt::format("a value is beyond the end of its dictionary of {} values", from.size()));
                }
                if (isThere) {
                    target[i] = from[position];
                }
            }
        },
        column.values);
    return column;
}

}  // namespace velmorak::arrow
