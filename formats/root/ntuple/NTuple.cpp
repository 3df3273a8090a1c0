#include "root/ntuple/NTuple.h"

#include <fmt/format.h>

#include <algorithm>

namespace velmorak::root {
namespace {

using Role = NTupleField::Role;

bool isText(const NTupleField& field) {
    return field.typeName == "std::string";
}

/// Where the elements of a collection's items end, for each of the elements [first, last) of its indices.
std::uint64_t endBefore(const std::vector<std::int64_t>& ends, std::uint64_t position, std::uint64_t offset) {
    return position == 0 ? 0 : static_cast<std::uint64_t>(ends[position - 1 - offset]);
}

/// Of a column in one chunk, whose lists are about maxChunkBytes on average.
constexpr std::uint64_t maxTotal = std::uint64_t{1} << 48U;  ///< In a cluster.
constexpr std::uint64_t maxElements = std::uint64_t{1} << 26U;

}  // namespace

NTuple::NTuple(const File& file, const Entry& entry) : file(file), path(entry.path) {
    try {
        schema = NTupleSchema::read(file, entry.key);
    } catch (const Failure& failure) {
        throw Failure(fmt::format("{}: {} cannot be read: {}", file.path().string(), entry.path, failure.what()));
    }
    for (std::size_t i = 0; i < schema.fields.size(); ++i) {
        if (schema.fields[i].parent == i) {
            addField(i, schema.fields[i].name, {});
        }
    }
}

std::vector<std::size_t> NTuple::childrenOf(std::size_t field) const {
    std::vector<std::size_t> children;
    for (std::size_t i = 0; i < schema.fields.size(); ++i) {
        if (schema.fields[i].parent == field && i != field) {
            children.push_back(i);
        }
    }
    return children;
}

std::size_t NTuple::sourceOf(std::size_t field) const {
    const std::optional<std::size_t>& source = schema.fields[field].source;
    return source && *source < schema.fields.size() ? *source : field;
}

/// A record gives a column for each member; items of collections and arrays have no name.
void NTuple::addField(std::size_t field, const std::string& name, std::vector<std::size_t> above) {
    constexpr std::size_t maxDepth = 32;
    const NTupleField& description = schema.fields[field];
    above.push_back(field);
    const std::vector<std::size_t> children = childrenOf(field);
    const bool isInner = description.role == Role::Collection || description.arraySize > 0;
    if (children.empty() || isText(description) || description.role == Role::Variant || above.size() > maxDepth) {
        addLeaf(field, name, above);
        return;
    }
    for (const std::size_t child : children) {
        addField(child, isInner ? name : name + "." + schema.fields[child].name, above);
    }
    if (description.role == Role::Collection && description.arraySize == 0) {
        addLevel(field, name, above);
    }
}

bool NTuple::isListAt(const std::vector<std::size_t>& fields) const {
    return std::any_of(fields.begin(), fields.end(), [this](std::size_t each) {
        return schema.fields[each].role == Role::Collection || schema.fields[each].arraySize > 0;
    });
}

/// A collection within a list is concatenated with the others; two columns say how. Of collections of the same name in
/// each other, the innermost has the shortest names.
void NTuple::addLevel(std::size_t field, const std::string& name, const std::vector<std::size_t>& above) {
    std::vector<std::size_t> around = above;
    around.pop_back();
    if (!isListAt(around)) {
        return;
    }
    std::string base = name;
    for (std::vector<std::size_t> inner = childrenOf(field);
         inner.size() == 1 && schema.fields[inner.front()].role == Role::Collection;
         inner = childrenOf(inner.front())) {
        base += ".count";
    }
    using enum NTupleTableColumn::Content;
    for (const auto& [content, suffix] : {std::pair(Counts, ".count"), std::pair(Rows, ".row")}) {
        NTupleTableColumn column;
        column.content = content;
        column.name = base + suffix;
        column.typeName = schema.fields[field].typeName;
        column.path = above;
        column.info = {.name = column.name, .type = ColumnType::Integer, .isList = true};
        all.push_back(std::move(column));
    }
}

ColumnType NTuple::typeOf(const NTupleField& field, std::size_t position) const {
    if (isText(field)) {
        return ColumnType::Text;
    }
    const std::vector<std::size_t> columns = columnsOf(sourceOf(position), nullptr);
    const int type = columns.empty() ? NTupleColumn::Int32 : schema.columns[columns.front()].type;
    if (isRealColumn(type)) {
        return ColumnType::Real;
    }
    return type == NTupleColumn::Bit ? ColumnType::Boolean : ColumnType::Integer;
}

void NTuple::addLeaf(std::size_t field, const std::string& name, std::vector<std::size_t> above) {
    const NTupleField& description = schema.fields[field];
    NTupleTableColumn column;
    column.name = name;
    column.typeName = description.typeName;
    column.path = std::move(above);
    column.info.name = name;
    column.info.type = typeOf(description, field);
    column.info.isList = isListAt(column.path);
    const std::size_t count = columnsOf(sourceOf(field), nullptr).size();
    if (description.role == Role::Variant || description.role == Role::Streamed) {
        column.complaint = "fields of the type " + description.typeName + " cannot be read";
    } else if (count != (isText(description) ? 2U : 1U)) {
        column.complaint = "it has no values";
    }
    all.push_back(std::move(column));
}

std::vector<std::size_t> NTuple::columnsOf(std::size_t field, const NTupleCluster* cluster) const {
    std::vector<std::size_t> found;
    std::optional<unsigned> representation;
    for (std::size_t i = 0; i < schema.columns.size(); ++i) {
        // A column that was added later has no pages in earlier clusters: its values there are zero.
        const bool isThere = cluster == nullptr || i >= cluster->columns.size() || !cluster->columns[i].isSuppressed;
        if (schema.columns[i].field == field && isThere) {
            representation = representation.value_or(schema.columns[i].representation);
            if (schema.columns[i].representation == *representation) {
                found.push_back(i);
            }
        }
    }
    return found;
}

ColumnPtr NTuple::read(const NTupleTableColumn& column, std::uint64_t first, std::size_t rows) const {
    if (!column.complaint.empty()) {
        throw Failure("the column " + column.name + " cannot be read: " + column.complaint);
    }
    auto values = std::make_shared<Column>();
    switch (column.info.type) {
        case ColumnType::Real:
            values->values = Column::Reals();
            break;
        case ColumnType::Integer:
            values->values = Column::Integers();
            break;
        case ColumnType::Boolean:
            values->values = Column::Booleans();
            break;
        case ColumnType::Text:
            values->values = Column::Texts();
            break;
    }
    if (column.info.isList) {
        values->offsets.push_back(0);
    }
    const std::uint64_t end = first + rows;
    for (const NTupleCluster& cluster : schema.clusters) {
        const std::uint64_t from = std::max(first, cluster.firstEntry);
        const std::uint64_t to = std::min(end, cluster.firstEntry + cluster.entries);
        if (from < to) {
            try {
                appendRows(column, cluster, from - cluster.firstEntry, to - cluster.firstEntry, *values);
            } catch (const Failure& failure) {
                throw Failure(fmt::format("{}: the field {} of {} is damaged from entry {} on: {}",
                                          file.path().string(), column.name, path, from, failure.what()));
            }
        }
    }
    return values;
}

/// Descends from the rows to the leaf: each collection or array on the way maps ranges of rows to ranges of its
/// items.
void NTuple::appendRows(const NTupleTableColumn& column, const NTupleCluster& cluster, std::uint64_t first,
                        std::uint64_t last, Column& target) const {
    const bool isLevel = column.content != NTupleTableColumn::Content::Values;
    Items items{.bounds = {}, .total = cluster.entries};
    for (std::uint64_t i = first; i <= last; ++i) {
        items.bounds.push_back(i);
    }
    for (std::size_t i = 0; i < column.path.size() - (isLevel ? 1 : 0); ++i) {
        enter(column.path[i], cluster, items);
    }
    if (isLevel) {
        appendLevel(column, cluster, items, target);
        return;
    }
    const std::size_t before = target.valueCount();
    appendLeaf(column.path.back(), cluster, items.total, items.bounds.front(), items.bounds.back(), target);
    for (std::size_t i = 1; target.isList() && i < items.bounds.size(); ++i) {
        target.offsets.push_back(before + items.bounds[i] - items.bounds.front());
    }
}

void NTuple::enter(std::size_t field, const NTupleCluster& cluster, Items& items) const {
    const NTupleField& description = schema.fields[field];
    std::vector<std::uint64_t>& bounds = items.bounds;
    if (description.arraySize > 0) {
        if (description.arraySize > maxTotal || items.total > maxTotal / description.arraySize) {
            throw Failure("its arrays are too long");
        }
        for (std::uint64_t& bound : bounds) {
            bound *= description.arraySize;
        }
        items.total *= description.arraySize;
    } else if (description.role == Role::Collection) {
        const std::size_t indices = indicesOf(field, cluster);
        const std::uint64_t from = bounds.front() == 0 ? 0 : bounds.front() - 1;
        const std::uint64_t to = std::max(from, bounds.back());
        const Elements some = elements(indices, cluster, items.total, from, to);
        for (std::uint64_t& bound : bounds) {
            bound = endBefore(std::get<1>(some), bound, from);
        }
        items.total = endOfAll(indices, cluster, items.total);
    }
    if (!std::is_sorted(bounds.begin(), bounds.end()) || bounds.back() > items.total) {
        throw Failure("its counts do not ascend");
    }
}

std::size_t NTuple::indicesOf(std::size_t field, const NTupleCluster& cluster) const {
    const std::vector<std::size_t> indices = columnsOf(sourceOf(field), &cluster);
    if (indices.empty()) {
        throw Failure("it has no counts");
    }
    return indices.front();
}

/// @param items around the collections of the column.
void NTuple::appendLevel(const NTupleTableColumn& column, const NTupleCluster& cluster, const Items& items,
                         Column& target) const {
    const std::vector<std::uint64_t>& bounds = items.bounds;
    const std::uint64_t from = bounds.front() == 0 ? 0 : bounds.front() - 1;
    const Elements some = elements(indicesOf(column.path.back(), cluster), cluster, items.total, from, bounds.back());
    const auto& ends = std::get<1>(some);
    auto& values = std::get<Column::Integers>(target.values);
    for (std::size_t row = 0; row + 1 < bounds.size(); ++row) {
        for (std::uint64_t i = bounds[row]; i < bounds[row + 1]; ++i) {
            const std::uint64_t begin = endBefore(ends, i, from);
            const std::uint64_t end = endBefore(ends, i + 1, from);
            if (end < begin || end - begin > maxElements || values.size() > maxElements) {
                throw Failure("its counts do not ascend");
            }
            if (column.content == NTupleTableColumn::Content::Counts) {
                values.push_back(static_cast<std::int64_t>(end - begin));
            } else {
                values.insert(values.end(), end - begin, static_cast<std::int64_t>(i - bounds[row]));
            }
        }
        target.offsets.push_back(values.size());
    }
}

/// @return the number of items in all collections of a cluster.
std::uint64_t NTuple::endOfAll(std::size_t column, const NTupleCluster& cluster, std::uint64_t total) const {
    if (total == 0) {
        return 0;
    }
    const Elements last = elements(column, cluster, total, total - 1, total);
    return endBefore(std::get<1>(last), total, total - 1);
}

double NTuple::variableBytes(const NTupleTableColumn& column) const {
    if (schema.entries == 0 || !column.complaint.empty() ||
        (!column.info.isList && column.info.type != ColumnType::Text)) {
        return 0.0;
    }
    const bool isText = column.info.type == ColumnType::Text;
    double values = 0.0;
    for (const NTupleCluster& cluster : schema.clusters) {
        const std::vector<std::size_t> columns = columnsOf(sourceOf(column.path.back()), &cluster);
        if (!columns.empty() && columns.back() < cluster.columns.size()) {
            values += static_cast<double>(cluster.columns[columns.back()].elements());
        }
    }
    return values * (isText ? 1.0 : sizeof(double)) / static_cast<double>(schema.entries);
}

void NTuple::appendLeaf(std::size_t field, const NTupleCluster& cluster, std::uint64_t total, std::uint64_t first,
                        std::uint64_t last, Column& target) const {
    if (isText(schema.fields[field])) {
        appendTexts(field, cluster, total, first, last, target);
        return;
    }
    const std::vector<std::size_t> columns = columnsOf(sourceOf(field), &cluster);
    if (columns.empty()) {
        throw Failure("it has no values in a cluster");
    }
    const Elements values = elements(columns.front(), cluster, total, first, last);
    if (target.type() == ColumnType::Real) {
        const auto& reals = std::get<0>(values);
        auto& to = std::get<Column::Reals>(target.values);
        to.insert(to.end(), reals.begin(), reals.end());
    } else if (target.type() == ColumnType::Integer) {
        const auto& integers = std::get<1>(values);
        auto& to = std::get<Column::Integers>(target.values);
        to.insert(to.end(), integers.begin(), integers.end());
    } else {
        auto& to = std::get<Column::Booleans>(target.values);
        for (const std::int64_t value : std::get<1>(values)) {
            to.push_back(value != 0 ? 1 : 0);
        }
    }
}

void NTuple::appendTexts(std::size_t field, const NTupleCluster& cluster, std::uint64_t total, std::uint64_t first,
                         std::uint64_t last, Column& target) const {
    const std::vector<std::size_t> columns = columnsOf(sourceOf(field), &cluster);
    if (columns.size() != 2) {
        throw Failure("it has no values in a cluster");
    }
    const std::uint64_t from = first == 0 ? 0 : first - 1;
    const Elements indices = elements(columns[0], cluster, total, from, last);
    const auto& ends = std::get<1>(indices);
    const std::uint64_t begin = endBefore(ends, first, from);
    const std::uint64_t end = endBefore(ends, last, from);
    const std::uint64_t characters = columns[1] < cluster.columns.size() ? cluster.columns[columns[1]].elements() : 0;
    const Elements letters = elements(columns[1], cluster, characters, begin, end);
    std::string text;
    for (const std::int64_t letter : std::get<1>(letters)) {
        text += static_cast<char>(letter);
    }
    auto& to = std::get<Column::Texts>(target.values);
    std::uint64_t at = begin;
    for (std::uint64_t i = first; i < last; ++i) {
        const std::uint64_t next = endBefore(ends, i + 1, from);
        if (next < at || next > end) {
            throw Failure("its texts are not contiguous");
        }
        to.push_back(text.substr(at - begin, next - at));
        at = next;
    }
}

Elements NTuple::elements(std::size_t column, const NTupleCluster& cluster, std::uint64_t total, std::uint64_t first,
                          std::uint64_t last) const {
    const NTupleColumn& description = schema.columns[column];
    const NTuplePages none;
    const NTuplePages& pages = column < cluster.columns.size() ? cluster.columns[column] : none;
    const std::uint64_t stored = pages.elements();
    if (last < first || last > total || stored > total) {
        throw Failure("its counts do not match its pages");
    }
    if (last - first > maxElements) {
        throw Failure(
            fmt::format("its lists have {} values in one chunk, and {} are the most", last - first, maxElements));
    }
    const std::uint64_t missing = total - stored;  // At the beginning: the field was added later.
    Elements found =
        isRealColumn(description.type) ? Elements(std::vector<double>()) : Elements(std::vector<std::int64_t>());
    std::uint64_t begin = missing;  // Of the page.
    std::optional<std::uint64_t> firstFound;
    for (const NTuplePage& page : pages.pages) {
        if (begin + page.elements > first && begin < last) {
            firstFound = firstFound.value_or(begin);
            appendPage(file, description, page, found);
        }
        begin += page.elements;
    }
    std::visit(
        [&](auto& values) {
            const std::uint64_t have = firstFound.value_or(last);
            if (have < first) {
                values.erase(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(first - have));
            } else if (first < missing) {
                values.insert(values.begin(), std::min(missing, last) - first, 0);
            }
            if (values.size() < last - first) {
                throw Failure("its pages end early");
            }
            values.resize(last - first);
        },
        found);
    return found;
}

}  // namespace velmorak::root
