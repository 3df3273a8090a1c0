#include "csv/CsvReader.h"

#include "csv/CsvBlock.h"
#include "csv/CsvBookmark.h"
#include "csv/CsvSurvey.h"

#include <velmorak/Dates.h>
#include <velmorak/Text.h>
#include <velmorak/Utf8.h>

#include <algorithm>
#include <utility>

namespace velmorak {

namespace {

std::string numbered(std::uint64_t number) {
    return std::to_string(number);
}

CsvLayout layoutOf(const CsvOptions& options) {
    const bool isShared = options.form.delimiter == options.decimal || options.form.delimiter == options.thousands;
    return {.form = options.form,
            .notation = {.missing = options.missing,
                         .decimal = options.decimal,
                         .thousands = options.thousands,
                         .hasQuotedNumbers = isShared},
            .columns = {},
            .rowsToInfer = options.rowsToInfer};
}

/// @return the unit without brackets around it.
std::string unitIn(std::string text) {
    for (const std::string_view brackets : {"[]", "()"}) {
        if (text.size() >= 2 && text.front() == brackets.front() && text.back() == brackets.back()) {
            return text.substr(1, text.size() - 2);
        }
    }
    return text;
}

}  // namespace

/// What the first records show of the columns.
struct CsvReader::Sample {
    std::vector<std::string> names;
    std::vector<std::string> units;
    std::vector<TypeGuess> guesses;
    std::vector<bool> isGiven;
    bool isWhole = false;  ///< The file has no more rows.
};

CsvReader::CsvReader(CsvOptions csvOptions, RunContext& context)
    : options(std::move(csvOptions)),
      context(context),
      layout(layoutOf(options)),
      stream(options.file, options.encoding, layout.form, context),
      repairs(options.file.string(), context),
      rows(options, layout, stream, columns, repairs, context),
      isInOrder(options.isSkipping || options.readsInOrder) {
    checkNotation();
    takeHeader();
    if (header) {
        addColumnsOf(*header);
    } else {
        findColumns();
    }
    checkTypes();
    limits = chunkLimitsOf(columns);
}

CsvReader::~CsvReader() {
    repairs.report();
    rows.reportSkipped();
}

void failAtLine(const CsvOptions& options, std::uint64_t line, const std::string& complaint) {
    throw Failure("file", "\"" + options.file.string() + "\", line " + numbered(line) + complaint);
}

void CsvReader::checkNotation() const {
    if (options.decimal == options.thousands) {
        throw Failure("thousands", "the sign between thousands is also the decimal sign");
    }
}

std::size_t CsvReader::recordsBeforeRows() const {
    return (options.hasHeader ? 1 : 0) + (options.hasUnits ? 1 : 0);
}

/// Passes the records before the rows. Where there are none, the first row shows how many columns there are.
void CsvReader::readFirstRecords(Sample& sample) {
    std::optional<CsvStream> other;
    CsvStream& first =
        recordsBeforeRows() > 0 ? stream : other.emplace(options.file, options.encoding, layout.form, context);
    const CsvPiece piece = first.rest().next(std::max<std::size_t>(recordsBeforeRows(), 1), SIZE_MAX);
    CsvRecords records(piece.text, layout.form, piece.line);
    readHeader(records, sample);
    readUnits(records, sample);
}

/// Finds the names in the first record, or makes some, as many as it has fields.
void CsvReader::readHeader(CsvRecords& records, Sample& sample) {
    if (records.next(fields) != CsvRecords::Found::Record) {
        throw Failure("file", "\"" + options.file.string() + "\" has no rows");
    }
    if (!records.complaint().empty()) {
        failAtLine(options, records.line(), ": " + records.complaint());
    }
    std::set<std::string> seen;
    for (const CsvField& field : fields) {
        const bool isNamed = options.hasHeader && !field.text.empty();
        if (isNamed && !isUtf8(field.text)) {
            repairs.note(records.line());
        }
        sample.names.push_back(isNamed ? toUtf8(field.text) : "c" + numbered(sample.names.size() + 1));
        if (!seen.insert(sample.names.back()).second) {
            failAtLine(options, records.line(), ": there are two columns \"" + sample.names.back() + "\"");
        }
    }
}

void CsvReader::readUnits(CsvRecords& records, Sample& sample) {
    sample.units.resize(sample.names.size());
    if (!options.hasUnits) {
        return;
    }
    if (options.hasHeader && records.next(fields) != CsvRecords::Found::Record) {
        throw Failure("file", "\"" + options.file.string() + "\" has no row of units");
    }
    if (fields.size() != sample.names.size()) {
        failAtLine(
            options, records.line(),
            ": there are " + numbered(fields.size()) + " units for " + numbered(sample.names.size()) + " columns");
    }
    for (std::size_t i = 0; i < fields.size(); ++i) {
        sample.units[i] = unitIn(toUtf8(fields[i].text));
    }
}

/// The rows that are looked at are read again, unless nobody asks for them.
void CsvReader::lookAtRows(Sample& sample) {
    if (options.readsColumnsOnly) {
        lookAtRows(stream, sample);
        return;
    }
    CsvStream first(options.file, options.encoding, layout.form, context);
    if (recordsBeforeRows() > 0) {
        first.rest().next(recordsBeforeRows(), SIZE_MAX);
    }
    lookAtRows(first, sample);
}

/// Damage ends the inference; the rows before it are still read.
void CsvReader::lookAtRows(CsvStream& first, Sample& sample) {
    for (std::size_t row = 0; row < options.rowsToInfer; ++row) {
        if (row % 1024 == 0 && context.isStopping()) {
            throw Stopped();
        }
        try {
            if (!first.next(fields)) {
                sample.isWhole = true;
                return;
            }
        } catch (const Failure&) {
            sample.isWhole = true;
            return;
        }
        for (std::size_t i = 0; i < sample.guesses.size() && fields.size() == sample.guesses.size(); ++i) {
            sample.guesses[i].see(fields[i], layout.notation);
        }
    }
}

/// Looks at the rows after the first ones. A preview shows what the first rows suggest.
void CsvReader::widenIntegers(Sample& sample) const {
    std::vector<CsvInteger> integers;
    for (std::size_t i = 0; i < sample.names.size(); ++i) {
        const bool isOne = !sample.isGiven[i] && sample.guesses[i].type() == ColumnType::Integer;
        integers.push_back(isOne ? CsvInteger::Yes : CsvInteger::No);
    }
    const bool hasIntegers = std::find(integers.begin(), integers.end(), CsvInteger::Yes) != integers.end();
    if (!hasIntegers || sample.isWhole || context.isPreview()) {
        return;
    }
    CsvPieces pieces(options.file, options.encoding, layout.form, context);
    if (recordsBeforeRows() > 0) {
        pieces.next(recordsBeforeRows(), SIZE_MAX);
    }
    surveyIntegers(pieces, layout.form, layout.notation, integers);
    for (std::size_t i = 0; i < integers.size(); ++i) {
        if (integers[i] == CsvInteger::Widened) {
            sample.guesses[i].see({}, layout.notation);
        }
    }
}

void CsvReader::findColumns() {
    Sample sample;
    readFirstRecords(sample);
    sample.guesses.resize(sample.names.size());
    for (const std::string& name : sample.names) {
        sample.isGiven.push_back(options.types.contains(name));
    }
    if (std::find(sample.isGiven.begin(), sample.isGiven.end(), false) != sample.isGiven.end()) {
        lookAtRows(sample);
        widenIntegers(sample);
    }
    addColumns(sample);
}

void CsvReader::addColumns(const Sample& sample) {
    std::vector<ColumnInfo> found;
    for (std::size_t i = 0; i < sample.names.size(); ++i) {
        const std::string& name = sample.names[i];
        const ColumnType type = sample.isGiven[i] ? options.types.at(name) : sample.guesses[i].type();
        const bool isDate = options.dates.contains(name);
        found.push_back(
            {.name = name, .type = type, .isList = false, .unit = isDate ? std::string(dateUnit) : sample.units[i]});
        layout.columns.push_back({.name = name, .type = type, .isDate = isDate, .isInferred = !sample.isGiven[i]});
        if (!sample.isGiven[i] && !sample.guesses[i].hasValue()) {
            unseen.insert(name);
        }
    }
    columns = Schema(std::move(found));
}

/// A file of Geant4 says itself how it is written.
void CsvReader::takeHeader() {
    header = geant4HeaderIn(stream.rest().head());
    if (!header) {
        return;
    }
    if (!header->isNtuple()) {
        throw Failure("file", "\"" + options.file.string() + "\" holds an object of class " + header->className +
                                  ", not a table; use Geant4Histogram");
    }
    if (header->columns.empty()) {
        throw Failure("file", "\"" + options.file.string() + "\" has no lines #column");
    }
    options.hasHeader = false;
    options.hasUnits = false;
    layout.form = {.delimiter = header->separator, .comment = "#"};
    layout.notation.vectorSeparator = header->vectorSeparator;
}

void CsvReader::addColumnsOf(const Geant4Header& given) {
    for (const ColumnInfo& column : given.columns) {
        if (columns.find(column.name)) {
            throw Failure("file", "\"" + options.file.string() + "\": there are two columns \"" + column.name + "\"");
        }
        columns.add(column);
        layout.columns.push_back({.name = column.name, .type = column.type, .isList = column.isList});
    }
}

void CsvReader::checkTypes() const {
    std::vector<std::string> names;
    for (const ColumnInfo& column : columns.columns()) {
        names.push_back(column.name);
    }
    for (const auto& given : options.types) {
        if (!columns.find(given.first) && !options.ignoresOtherTypes) {
            throw Failure("types", "there is no column \"" + given.first + "\"" + columnsThere(given.first, names));
        }
    }
}

/// Where a bad row is left out, or ends the table, all columns are read: which rows there are does not depend on their
/// use.
void CsvReader::selectColumns(const std::vector<bool>& needed) {
    if (options.isSkipping || options.readsInOrder) {
        return;
    }
    for (std::size_t i = 0; i < layout.columns.size(); ++i) {
        layout.columns[i].isNeeded = needed[i];
    }
}

bool CsvReader::next(Chunk& chunk) {
    if (isInOrder) {
        return rows.next(chunk, limits);
    }
    auto piece = std::make_shared<CsvPiece>(stream.rest().next(limits.maxRows, limits.maxBytesOfFile));
    if (piece->records < limits.maxRows && piece->text.size() >= limits.maxBytesOfFile) {
        isInOrder = true;
        stream.takePiece(std::move(*piece));
        return rows.next(chunk, limits);
    }
    chunk.rows = piece->records;
    chunk.columns.clear();
    chunk.owner = std::move(piece);
    return chunk.rows > 0;
}

void CsvReader::complete(Chunk& chunk) const {
    const auto piece = std::static_pointer_cast<const CsvPiece>(chunk.owner);
    if (!piece) {
        return;
    }
    if (context.isStopping()) {
        throw Stopped();
    }
    CsvBlock block(layout, *piece);
    chunk.columns = block.parse(options.file.string());
    chunk.owner.reset();
    repairs.note(block.repairedLine());
}

std::optional<std::string> CsvReader::bookmark() const {
    const std::optional<CsvPlace> place = rows.hasFailed() ? std::nullopt : stream.place();
    return place ? std::optional(textOf(CsvBookmark{*place, isInOrder})) : std::nullopt;
}

void CsvReader::seek(std::uint64_t /*file*/, const ChunkStart& start) {
    const std::optional<CsvBookmark> bookmark = csvBookmarkIn(start.bookmark);
    if (!bookmark) {
        throw Failure("file", "\"" + options.file.string() + "\" has no place " + start.bookmark);
    }
    stream.seek(bookmark->place);
    isInOrder = isInOrder || bookmark->isInOrder;
}

}  // namespace velmorak
