#include "csv/CsvSurvey.h"

#include "csv/CsvScan.h"

#include <velmorak/Ahead.h>
#include <velmorak/Tasks.h>

#include <algorithm>
#include <cstdint>
#include <deque>
#include <memory>
#include <utility>

namespace velmorak {

namespace {

constexpr std::size_t bytesInSurveyPiece = std::size_t{1} << 20U;
constexpr std::size_t piecesAheadPerThread = 2;
/// A number of so many digits is in the range of integers.
constexpr std::ptrdiff_t safeDigits = 18;

using Integers = std::vector<CsvInteger>;

class IntegerSurvey {
public:
    IntegerSurvey(const CsvForm& form, const CsvNotation& notation, Integers columns);

    /// @return the columns after a look at the piece.
    Integers at(const CsvPiece& piece);

private:
    void lookAtLines(std::string_view text);
    const char* lookAtLine(const char* place, const char* end);
    const char* lookAtField(const char* begin, const char* end, CsvInteger& column) const;
    void lookAtRecords(const CsvPiece& piece);
    void see(const CsvField& field, CsvInteger& column) const;

    const CsvForm& form;
    const CsvNotation& notation;
    Integers columns;
    std::size_t fieldsToRead = 0;
};

IntegerSurvey::IntegerSurvey(const CsvForm& form, const CsvNotation& notation, Integers columns)
    : form(form), notation(notation), columns(std::move(columns)) {
    for (std::size_t i = 0; i < this->columns.size(); ++i) {
        fieldsToRead = this->columns[i] == CsvInteger::Yes ? i + 1 : fieldsToRead;
    }
}

Integers IntegerSurvey::at(const CsvPiece& piece) {
    const bool isPlain = piece.text.find('"') == std::string_view::npos && form.delimiter != ' ' && notation.isPlain();
    if (isPlain) {
        lookAtLines(piece.text);
    } else {
        lookAtRecords(piece);
    }
    return std::move(columns);
}

void IntegerSurvey::see(const CsvField& field, CsvInteger& column) const {
    TypeGuess guess;
    guess.see(field, notation);
    const bool fits = guess.hasValue() && guess.type() == ColumnType::Integer;
    const bool isNumber = isMissing(field, notation) || guess.type() == ColumnType::Real;
    column = !fits && isNumber ? CsvInteger::Widened : column;
}

/// @return the end of the field.
const char* IntegerSurvey::lookAtField(const char* begin, const char* end, CsvInteger& column) const {
    const char* const digits = begin + (begin != end && *begin == '-' ? 1 : 0);
    const char* past = digits;
    while (past != end && *past >= '0' && *past <= '9') {
        ++past;
    }
    past += past != end && *past == '\r' && past + 1 != end && past[1] == '\n' ? 1 : 0;
    const bool isAtEnd = past == end || *past == form.delimiter || *past == '\n';
    if (isAtEnd && past != digits && past - digits <= safeDigits) {
        return past;
    }
    past = fieldEnd(begin, end, form.delimiter);
    const char* last = past;
    while (last != begin && (last[-1] == ' ' || last[-1] == '\t' || last[-1] == '\r')) {
        --last;
    }
    while (begin != last && (*begin == ' ' || *begin == '\t')) {
        ++begin;
    }
    see({{begin, static_cast<std::size_t>(last - begin)}, false}, column);
    return past;
}

/// @return the place after the line feed.
const char* IntegerSurvey::lookAtLine(const char* place, const char* end) {
    std::size_t passed = 0;
    for (std::size_t i = 0; i < fieldsToRead; ++i) {
        if (columns[i] != CsvInteger::Yes) {
            continue;
        }
        if (i > passed) {
            place = endOfFields(place, end, form.delimiter, i - passed);
            if (place == end || *place == '\n') {
                break;
            }
            ++place;
        }
        place = lookAtField(place, end, columns[i]);
        if (place == end || *place == '\n') {
            break;
        }
        ++place;
        passed = i + 1;
    }
    if (place != end && *place == '\n') {
        return place + 1;
    }
    const auto* const lineEnd =
        place == end ? nullptr
                     : static_cast<const char*>(std::memchr(place, '\n', static_cast<std::size_t>(end - place)));
    return lineEnd ? lineEnd + 1 : end;
}

/// Looks at text without quotes.
void IntegerSurvey::lookAtLines(std::string_view text) {
    const char* const end = text.data() + text.size();
    for (const char* place = text.data(); place < end;) {
        const char* first = place;
        while (first != end && (*first == ' ' || (*first == '\t' && form.delimiter != '\t'))) {
            ++first;
        }
        const std::string_view rest(first, static_cast<std::size_t>(end - first));
        const bool isEmpty = rest.empty() || rest[0] == '\n' || (rest[0] == '\r' && rest.starts_with("\r\n"));
        const bool isComment =
            !isEmpty && !form.comment.empty() && rest[0] == form.comment[0] && rest.starts_with(form.comment);
        if (isComment || isEmpty) {
            const std::size_t lineEnd = rest.find('\n');
            place = lineEnd == std::string_view::npos ? end : first + lineEnd + 1;
        } else {
            place = lookAtLine(place, end);
        }
    }
}

void IntegerSurvey::lookAtRecords(const CsvPiece& piece) {
    CsvRecords records(piece.text, form, piece.line);
    std::vector<CsvField> fields;
    while (records.next(fields) == CsvRecords::Found::Record) {
        for (std::size_t i = 0; i < fieldsToRead && fields.size() == columns.size(); ++i) {
            if (columns[i] == CsvInteger::Yes) {
                see(fields[i], columns[i]);
            }
        }
    }
}

/// Surveys pieces on several threads.
class PieceSurvey {
public:
    PieceSurvey(const CsvForm& form, const CsvNotation& notation, Integers& columns);
    PieceSurvey(const PieceSurvey&) = delete;
    PieceSurvey& operator=(const PieceSurvey&) = delete;
    ~PieceSurvey();

    void add(CsvPiece piece);

    void takeAll();

private:
    void takeOne();

    const CsvForm& form;
    const CsvNotation& notation;
    Integers& columns;
    const std::size_t window;
    std::deque<std::shared_ptr<Ahead<Integers>>> ahead;
};

PieceSurvey::PieceSurvey(const CsvForm& form, const CsvNotation& notation, Integers& columns)
    : form(form), notation(notation), columns(columns), window(piecesAheadPerThread * runThreads()) {}

PieceSurvey::~PieceSurvey() {
    for (const auto& look : ahead) {
        look->cancel();
    }
}

void PieceSurvey::add(CsvPiece piece) {
    if (ahead.size() == window) {
        takeOne();
    }
    ahead.push_back(Ahead<Integers>::begin([this, piece = std::move(piece), columns = columns] {
        return IntegerSurvey(form, notation, columns).at(piece);
    }));
}

void PieceSurvey::takeAll() {
    while (!ahead.empty()) {
        takeOne();
    }
}

void PieceSurvey::takeOne() {
    const Integers seen = ahead.front()->take();
    ahead.pop_front();
    for (std::size_t i = 0; i < columns.size(); ++i) {
        columns[i] = seen[i] == CsvInteger::Widened ? CsvInteger::Widened : columns[i];
    }
}

CsvPiece nextPiece(CsvPieces& pieces) {
    try {
        return pieces.next(SIZE_MAX, bytesInSurveyPiece);
    } catch (const Failure&) {
        return {};  // The rows before the damage are read, and then the damage is reported.
    }
}

}  // namespace

void surveyIntegers(CsvPieces& pieces, const CsvForm& form, const CsvNotation& notation,
                    std::vector<CsvInteger>& columns) {
    PieceSurvey survey(form, notation, columns);
    const auto hasIntegers = [&] {
        return std::find(columns.begin(), columns.end(), CsvInteger::Yes) != columns.end();
    };
    for (CsvPiece piece = nextPiece(pieces); piece.records > 0 && hasIntegers(); piece = nextPiece(pieces)) {
        survey.add(std::move(piece));
    }
    survey.takeAll();
}

}  // namespace velmorak
