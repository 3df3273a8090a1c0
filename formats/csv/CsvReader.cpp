#include "csv/CsvReader.h"

#include <velmorak/ChunkSize.h>
#include <velmorak/Text.h>
#include <velmorak/Utf8.h>

#include <algorithm>
#include <set>
#include <utility>

namespace velmorak {

namespace {

std::string numbered(std::uint64_t number) {
    return std::to_string(number);
}

Column emptyColumn(ColumnType type) {
    switch (type) {
        case ColumnType::Integer:
            return {Column::Integers(), {}};
        case ColumnType::Boolean:
            return {Column::Booleans(), {}};
        case ColumnType::Text:
            return {Column::Texts(), {}};
        default:
            return {Column::Reals(), {}};
    }
}

void shorten(Column& column, std::size_t rows) {
    std::visit([rows](auto& values) { values.resize(rows); }, column.values);
}

}  // namespace

CsvReader::CsvReader(CsvOptions csvOptions, RunContext& runContext)
    : options(std::move(csvOptions)), context(runContext), records(options.file, options.form, runContext) {
    findColumns();
    if (options.hasHeader) {
        records.next(fields);
    }
}

CsvReader::~CsvReader() {
    reportSkipped();
}

/// @return the names in the first record, or generated ones, as many as it has fields.
std::vector<std::string> CsvReader::readHeader(CsvRecords& from) {
    std::vector<CsvField> first;
    if (!from.next(first)) {
        throw Failure("file", "\"" + options.file.string() + "\" has no rows");
    }
    if (!from.complaint().empty()) {
        throw Failure("file",
                      "\"" + options.file.string() + "\", line " + numbered(from.line()) + ": " + from.complaint());
    }
    std::vector<std::string> names;
    std::set<std::string> seen;
    for (const CsvField& field : first) {
        const bool isNamed = options.hasHeader && !field.text.empty();
        if (isNamed && firstRepaired == 0 && !isUtf8(field.text)) {
            firstRepaired = from.line();
        }
        names.push_back(isNamed ? toUtf8(field.text) : "c" + numbered(names.size() + 1));
        if (!seen.insert(names.back()).second) {
            throw Failure("file", "\"" + options.file.string() + "\", line " + numbered(from.line()) +
                                      ": there are two columns \"" + names.back() + "\"");
        }
    }
    return names;
}

/// Damage ends the inference; the rows before it are still read.
void CsvReader::lookAtRows(CsvRecords& sample, std::vector<TypeGuess>& guesses) {
    for (std::size_t row = 0; row < options.rowsToInfer; ++row) {
        if (row % 1024 == 0 && context.isStopping()) {
            throw Stopped();
        }
        try {
            if (!sample.next(fields)) {
                return;
            }
        } catch (const Failure&) {
            return;
        }
        for (std::size_t i = 0; i < guesses.size() && fields.size() == guesses.size(); ++i) {
            guesses[i].see(fields[i], options.missing);
        }
    }
}

void CsvReader::findColumns() {
    CsvRecords sample(options.file, options.form, context);
    const std::vector<std::string> names = readHeader(sample);
    std::vector<TypeGuess> guesses(names.size());
    if (!options.hasHeader) {
        sample = CsvRecords(options.file, options.form, context);
    }
    const auto isGiven = [this](const std::string& name) { return options.types.contains(name); };
    if (!std::all_of(names.begin(), names.end(), isGiven)) {
        lookAtRows(sample, guesses);
    }
    std::vector<ColumnInfo> found;
    for (std::size_t i = 0; i < names.size(); ++i) {
        const auto given = options.types.find(names[i]);
        const bool isInferred = given == options.types.end();
        found.push_back({.name = names[i], .type = isInferred ? guesses[i].type() : given->second});
        if (isInferred && !guesses[i].hasValue()) {
            unseen.insert(names[i]);
        }
    }
    columns = Schema(std::move(found));
    maxRows = rowsInChunk(columns);
    rowBytes = bytesInRow(columns);
    for (std::size_t i = 0; i < columns.size(); ++i) {
        if (columns[i].type == ColumnType::Text) {
            textColumns.push_back(i);
        }
    }
    for (const auto& given : options.types) {
        if (!columns.find(given.first) && !options.ignoresOtherTypes) {
            throw Failure("types", "there is no column \"" + given.first + "\"" + columnsThere(given.first, names));
        }
    }
}

bool CsvReader::next(Chunk& chunk) {
    std::vector<Column> target;
    for (const ColumnInfo& column : columns.columns()) {
        target.push_back(emptyColumn(column.type));
    }
    chunk.rows = 0;
    try {
        while (!failure && !isFull(target, chunk.rows) && readRow(target, chunk.rows)) {
        }
    } catch (const Failure& damage) {
        failure = damage;
        for (Column& column : target) {
            shorten(column, chunk.rows);
        }
    }
    // Complete rows before the damage are returned first.
    if (failure && chunk.rows == 0) {
        throw Failure(*failure);
    }
    chunk.columns.clear();
    for (Column& column : target) {
        chunk.columns.push_back(std::make_shared<const Column>(std::move(column)));
    }
    if (chunk.rows == 0) {
        reportSkipped();
    }
    return chunk.rows > 0;
}

/// Long texts end a chunk before it has its full number of rows.
bool CsvReader::isFull(const std::vector<Column>& target, std::size_t rows) {
    if (rows == 0) {
        textBytes = 0;
        rowsCounted = 0;
    }
    for (; rowsCounted < rows; ++rowsCounted) {
        for (const std::size_t position : textColumns) {
            textBytes += target[position].texts()[rowsCounted].size();
        }
    }
    return rows >= maxRows || rows * rowBytes + textBytes >= maxChunkBytes;
}

/// Appends the next record to the columns, or skips it. @return false at the end of the file.
bool CsvReader::readRow(std::vector<Column>& target, std::size_t& rows) {
    if (++recordsSeen % 4096 == 0 && context.isStopping()) {
        throw Stopped();
    }
    if (!records.next(fields)) {
        return false;
    }
    const std::string complaint = complaintAbout(target);
    if (complaint.empty()) {
        ++rows;
        return true;
    }
    if (!options.isSkipping) {
        throw Failure("file", complaint);
    }
    for (Column& column : target) {
        shorten(column, rows);
    }
    if (skippedRows++ == 0) {
        firstComplaint = complaint;
    }
    return true;
}

/// A text that is not UTF-8 would be invalid in every file that it is written to.
CsvField CsvReader::withUtf8(const CsvField& field, ColumnType type) {
    if (type != ColumnType::Text || isUtf8(field.text)) {
        return field;
    }
    if (firstRepaired == 0) {
        firstRepaired = records.line();
    }
    repaired = toUtf8(field.text);
    return {repaired, field.isQuoted};
}

/// Appends the record to the columns. @return why it cannot be appended; empty if it is.
std::string CsvReader::complaintAbout(std::vector<Column>& target) {
    const auto where = [this] { return "\"" + options.file.string() + "\", line " + numbered(records.line()); };
    if (!records.complaint().empty()) {
        return where() + ": " + records.complaint();
    }
    if (fields.size() != target.size()) {
        return where() +
               (fields.size() == 1 ? ": there is 1 field" : ": there are " + numbered(fields.size()) + " fields") +
               " instead of " + numbered(target.size());
    }
    for (std::size_t i = 0; i < target.size(); ++i) {
        if (!appendField(withUtf8(fields[i], target[i].type()), options.missing, target[i])) {
            const std::string what = fields[i].text.empty()
                                         ? "the value is missing, and only "
                                           "reals and texts may be missing"
                                         : "\"" + toUtf8(fields[i].text.substr(0, 40)) + "\" is not a value of type " +
                                               std::string(nameOf(target[i].type()));
            return where() + ", column " + numbered(i + 1) + " (" + columns[i].name + "): " + what;
        }
    }
    return {};
}

void CsvReader::reportSkipped() {
    if (firstRepaired != 0) {
        context.warn("\"" + options.file.string() + "\": bytes that are not UTF-8, the first on line " +
                     numbered(std::exchange(firstRepaired, 0)) + ", are read as ISO-8859-1");
    }
    if (skippedRows == 0) {
        return;
    }
    context.warn(numbered(skippedRows) + (skippedRows == 1 ? " row was" : " rows were") +
                 " skipped; the first: " + firstComplaint);
    skippedRows = 0;
}

}  // namespace velmorak
