#include "aida/read/AidaTupleHandler.h"

#include "aida/Vocabulary.h"

#include <velmorak/Failure.h>

#include <fmt/format.h>

#include <algorithm>
#include <array>

namespace velmorak::io {

namespace {

/// Limits against malformed or hostile files.
constexpr std::size_t maxColumnDepth = 64;
constexpr std::size_t maxListedColumns = 8'000'000;
constexpr std::size_t maxReported = 20;

/// Columns of a cloud: its coordinates, and the weight, which is 1 if a point has none.
std::vector<AidaColumn> cloudColumns(std::size_t dimensions) {
    constexpr std::array<std::string_view, 3> names{"x", "y", "z"};
    std::vector<AidaColumn> columns;
    for (std::size_t direction = 0; direction < dimensions; ++direction) {
        columns.push_back(columnFrom(names[direction], "double", ""));
    }
    columns.push_back(columnFrom("weight=1", "double", ""));
    return columns;
}

}  // namespace

AidaTupleHandler::AidaTupleHandler(std::filesystem::path file, std::string wanted, RunContext& context)
    : file(std::move(file)), wanted(std::move(wanted)), warnings(context) {}

void AidaTupleHandler::fail(const std::string& reason) const {
    throw Failure(fmt::format("{}{}: {}", file.string(), reader->where(), reason));
}

void AidaTupleHandler::warnOnce(const std::string& about, const std::string& sentence) {
    if (isReading() && warned.size() < maxWarned && warned.insert(about).second) {
        warnings.add(fmt::format("{}: {}", file.string(), sentence));
    }
}

void AidaTupleHandler::noteUnknown(std::string_view name) {
    if (isReading() && !isKnownElement(name)) {
        warnOnce(fmt::format("<{}>", name), fmt::format("the unknown element <{}> is skipped", name));
    }
}

void AidaTupleHandler::selectColumns(const std::vector<bool>& needed) {
    rowBuilder->selectColumns(needed);
    if (!plain.empty()) {
        plain = rowBuilder->plainColumns();
    }
}

void AidaTupleHandler::beginElement(const char* name, const char* const* attributes) {
    const State state = begun(name, attributes);
    if (state == State::Skipped) {
        noteUnknown(name);
    }
    states.push_back(state);
}

AidaTupleHandler::State AidaTupleHandler::begun(std::string_view name, const char* const* attributes) {
    switch (states.back()) {
        case State::File:
            if (name != "aida") {
                fail(fmt::format("this is not an AIDA file: it begins with <{}>", name));
            }
            return State::Root;
        case State::Root:
            return aidaObjectType(name) ? beginObject(*aidaObjectType(name), attributes) : State::Skipped;
        case State::Tuple:
            return beginInTuple(name, attributes);
        case State::Columns:
            if (name != "column") {
                return State::Skipped;
            }
            beginColumn(attributes);
            return State::Column;
        case State::Column:
            return name == "columns" && openColumns.size() < maxColumnDepth ? State::Columns : State::Skipped;
        case State::Rows:
            return name == "row" ? State::Row : State::Skipped;
        case State::Row:
        case State::NestedRow:
            return beginInRow(name, attributes);
        case State::Nested:
            return name == "row" ? State::NestedRow : State::Skipped;
        case State::Cloud:
            return beginInCloud(name);
        case State::Points:
            if (name.substr(0, 5) != "entry" || name.substr(5) != std::string_view(current.element).substr(5)) {
                return State::Skipped;
            }
            putPoint(attributes);
            return State::Point;
        default:
            return State::Skipped;
    }
}

void AidaTupleHandler::beginDocument() {
    states = {State::File};
    isInPlainRows = false;
    openColumns.clear();
    isWanted = false;
}

bool AidaTupleHandler::continuesAfter(const std::string& damage) {
    if (reader->document().empty() || hasBegun) {
        return false;
    }
    // The damaged document may have contained the wanted object.
    if (isReading()) {
        warnings.add(damage);
    }
    if (reported.size() < maxReported) {
        reported.push_back(damage);
    }
    return true;
}

AidaTupleHandler::State AidaTupleHandler::beginObject(const AidaObjectType& type, const char* const* attributes) {
    std::string warning;
    if (found.size() == maxObjects) {
        fail(fmt::format("the file contains more than {} objects", maxObjects));
    }
    current = {paths.next(attributes, reader->document(), warning), std::string(type.element), {}};
    if (!warning.empty()) {
        warnOnce(warning, warning);
    }
    isWanted = isReading() && !done && current.path == wanted;
    hasHeader = isConverted = false;
    if (isWanted) {
        columnCount = 0;
    }
    header.clear();
    if (type.family == AidaFamily::Tuple) {
        return State::Tuple;
    }
    if (type.family != AidaFamily::Cloud) {
        found.push_back(current);
        return State::Skipped;
    }
    header = cloudColumns(type.dimensions);
    return State::Cloud;
}

AidaTupleHandler::State AidaTupleHandler::beginInTuple(std::string_view name, const char* const* attributes) {
    if (name == "columns") {
        return State::Columns;
    }
    if (isOfFamily(name, AidaFamily::Tuple) && isWanted) {
        members.push_back(
            objectPath(textOr(attributeOf(attributes, "path"), ""), textOr(attributeOf(attributes, "name"), "")));
    }
    if (name != "rows") {
        return State::Skipped;
    }
    endHeader();
    if (isWanted) {
        plain = rowBuilder->plainColumns();
    }
    isInPlainRows = (isWanted || !isReading()) && !plain.empty();
    return isWanted ? State::Rows : State::SkippedRows;
}

AidaTupleHandler::State AidaTupleHandler::beginInCloud(std::string_view name) {
    isConverted = isConverted || isOfFamily(name, AidaFamily::Histogram);
    if (name.substr(0, 7) != "entries") {
        return State::Skipped;
    }
    endHeader();
    return isWanted ? State::Points : State::Skipped;
}

AidaTupleHandler::State AidaTupleHandler::beginInRow(std::string_view name, const char* const* attributes) {
    if (name == "entry") {
        putEntry(attributes);
        return State::Entry;
    }
    if (name != "entryITuple" && name != "entryTuple") {
        return State::Skipped;
    }
    rowBuilder->beginNested();
    return State::Nested;
}

void AidaTupleHandler::putEntry(const char* const* attributes) {
    const char* value = attributeOf(attributes, "value");
    if (!value) {
        rowBuilder->missingEntry();
    } else if (!rowBuilder->entry(value)) {
        fail(rowBuilder->problem());
    }
}

void AidaTupleHandler::putPoint(const char* const* attributes) {
    constexpr std::array names{"valueX", "valueY", "valueZ"};
    const auto put = [&](const char* value) {
        if (!value) {
            rowBuilder->missingEntry();
        } else if (!rowBuilder->entry(value)) {
            fail(rowBuilder->problem());
        }
    };
    for (std::size_t axis = 0; axis + 1 < header.size(); ++axis) {
        put(attributeOf(attributes, names[axis]));
    }
    put(attributeOf(attributes, "weight"));
}

void AidaTupleHandler::beginColumn(const char* const* attributes) {
    if (++columnCount > (isWanted ? maxColumns : maxListedColumns)) {
        fail(fmt::format("there are more than {} columns", isWanted ? maxColumns : maxListedColumns));
    }
    openColumns.push_back(columnFrom(textOr(attributeOf(attributes, "name"), ""),
                                     textOr(attributeOf(attributes, "type"), "double"),
                                     textOr(attributeOf(attributes, "booking"), "")));
}

void AidaTupleHandler::endColumn() {
    AidaColumn column = std::move(openColumns.back());
    openColumns.pop_back();
    auto& parent = openColumns.empty() ? header : openColumns.back().children;
    parent.push_back(std::move(column));
}

void AidaTupleHandler::endHeader() {
    if (hasHeader) {
        return;
    }
    hasHeader = true;
    auto made = std::make_unique<TupleBuilder>(header);
    current.schema = made->schema();
    // Skipping rows is faster with the scanner, which uses the columns of the first tuple.
    if (!isReading() && plain.empty()) {
        plain = made->plainColumns();
    }
    found.push_back(current);
    if (!isWanted) {
        return;
    }
    for (const std::string& sentence : made->warnings()) {
        warnOnce(sentence, sentence);
    }
    if (rowBuilder && !haveSameShape(rowBuilder->columns(), header)) {
        fail(fmt::format("{} has other columns than the previous tuples of its chain", current.path));
    }
    if (!rowBuilder) {
        rowBuilder = std::move(made);
    }
    hasBegun = true;
    reader->pause();
}

void AidaTupleHandler::endElement(const char* /*name*/) {
    const State state = states.back();
    states.pop_back();
    switch (state) {
        case State::Column:
            return endColumn();
        case State::Row:
        case State::Point:
            return endRow();
        case State::Rows:
        case State::SkippedRows:
            isInPlainRows = false;
            return;
        case State::NestedRow:
            if (!rowBuilder->endNestedRow()) {
                fail(rowBuilder->problem());
            }
            return;
        case State::Nested:
            return rowBuilder->endNested();
        case State::Tuple:
        case State::Cloud:
            return endObject();
        default:
            return;
    }
}

void AidaTupleHandler::endRow() {
    rowBuilder->endRow();
    if (rowBuilder->hasExtraEntries()) {
        warnOnce("extra entries",
                 fmt::format("{} has rows with more entries than columns; the surplus is ignored", current.path));
    }
    if (rowBuilder->isFull()) {
        reader->pause();
    }
}

std::size_t AidaTupleHandler::takeRows(const RowFastPath& rows, std::size_t first) {
    if (!rowBuilder) {
        return rows.count() - first;
    }
    const std::size_t count = rowBuilder->roomFor(rows, first);
    rowBuilder->appendRows(rows, first, count);
    return count;
}

void AidaTupleHandler::endObject() {
    if (isWanted && !hasHeader && isConverted) {
        fail(fmt::format("the cloud {} was converted to a histogram and has no points", current.path));
    }
    if (!isWanted || members.empty() || hasHeader) {
        endHeader();
    }
    if (!isWanted) {
        return;
    }
    if (reader->repairedBytes() > 0) {
        warnOnce("encoding", "bytes that are not valid UTF-8 are read as ISO-8859-1");
    }
    if (reader->skippedEntity()) {
        warnOnce("entity", "a reference to another file is left out");
    }
    warnings.finish(file.string());
    done = true;
    isWanted = false;
    reader->pause();
}

}  // namespace velmorak::io
