#include "csv/CsvRecords.h"

#include <algorithm>

namespace velmorak {

std::size_t CsvRecords::pastBlanks(std::size_t at) const {
    while (at < text.size() && isBlank(text[at])) {
        ++at;
    }
    return at;
}

CsvRecords::Found CsvRecords::next(std::vector<CsvField>& fields) {
    isWhole = true;
    const Found found = find(&fields);
    const bool hasZero = found == Found::Record && problem.empty() && hasZeroByte();
    if (hasZero) {
        problem = "it contains a zero byte; is the file encoded in UTF-16?";
    }
    return found;
}

CsvRecords::Found CsvRecords::skip(bool isAll) {
    isWhole = isAll;
    return find(nullptr);
}

void CsvRecords::seek(std::string_view longer, std::size_t position, std::uint64_t line) {
    text = longer;
    place = position;
    nextLine = line;
}

CsvRecords::Found CsvRecords::find(std::vector<CsvField>* fields) {
    Found found = Found::Record;
    while (skipLine(found)) {
    }
    if (found != Found::Record) {
        return found;
    }
    recordLine = nextLine;
    recordPlace = place;
    if (readRecord(fields) == Step::Short) {
        nextLine = recordLine;
        return Found::Short;
    }
    return Found::Record;
}

/// Skips an empty line or a comment. @param found Record if there is neither. @return whether there was one.
bool CsvRecords::skipLine(Found& found) {
    const std::size_t begin = pastBlanks(place);
    if (begin >= text.size()) {
        found = isWhole ? Found::End : Found::Short;
        return false;
    }
    const bool isComment = !form->comment.empty() && text.substr(begin).starts_with(form->comment);
    const bool isEmpty = text[begin] == '\n' || text.substr(begin).starts_with("\r\n");
    const bool isUndecided = !isWhole && text.find('\n', begin) == std::string_view::npos;
    if (isUndecided) {
        found = Found::Short;
        return false;
    }
    if (!isComment && !isEmpty) {
        found = Found::Record;
        return false;
    }
    const std::size_t end = text.find('\n', begin);
    place = end == std::string_view::npos ? text.size() : end + 1;
    nextLine += end == std::string_view::npos ? 0 : 1;
    return true;
}

bool CsvRecords::hasZeroByte() const {
    return text.substr(recordPlace, place - recordPlace).find('\0') != std::string_view::npos;
}

CsvRecords::Step CsvRecords::readRecord(std::vector<CsvField>* fields) {
    if (fields) {
        fields->clear();
        unescaped.clear();
    }
    problem.clear();
    std::size_t at = place;
    Step step = Step::More;
    while (step == Step::More) {
        if (fields && fields->size() == maxFields) {
            problem = "there are more than " + std::to_string(maxFields) + " fields";
            fields = nullptr;
        }
        step = readField(at, fields);
    }
    place = step == Step::End ? at : place;
    return step;
}

CsvRecords::Step CsvRecords::readField(std::size_t& at, std::vector<CsvField>* fields) {
    at = pastBlanks(at);
    if (at < text.size() && text[at] == '"') {
        if (!readQuoted(at, fields)) {
            return Step::Short;
        }
    } else {
        readUnquoted(at, fields);
    }
    at = pastBlanks(at);
    if (at < text.size() && text[at] == '\r') {
        ++at;
    }
    if (at >= text.size()) {
        return isWhole ? Step::End : Step::Short;
    }
    if (text[at] == '\n') {
        ++at;
        ++nextLine;
        return Step::End;
    }
    if (form->delimiter != ' ') {
        ++at;
    }
    return Step::More;
}

void CsvRecords::readUnquoted(std::size_t& at, std::vector<CsvField>* fields) const {
    std::size_t end = at;
    while (end < text.size() && text[end] != form->delimiter && text[end] != '\n' &&
           !(form->delimiter == ' ' && isBlank(text[end]))) {
        ++end;
    }
    std::size_t last = end;
    while (last > at && (isBlank(text[last - 1]) || text[last - 1] == '\r')) {
        --last;
    }
    if (fields) {
        fields->push_back({text.substr(at, last - at), false});
    }
    at = end;
}

/// @return position of the quote that closes the field; npos if there is none.
std::size_t CsvRecords::closingQuote(std::size_t begin, bool& hasQuotes) const {
    for (std::size_t end = begin;; end += 2, hasQuotes = true) {
        end = text.find('"', end);
        if (end == std::string_view::npos || end + 1 >= text.size() || text[end + 1] != '"') {
            return end;
        }
    }
}

/// @return false if the text is too short.
bool CsvRecords::readQuoted(std::size_t& at, std::vector<CsvField>* fields) {
    const std::size_t begin = at + 1;
    bool hasQuotes = false;
    std::size_t end = closingQuote(begin, hasQuotes);
    // A quote at the end of the text may be the first of two.
    if (!isWhole && (end == std::string_view::npos || end + 1 == text.size())) {
        return false;
    }
    if (end == std::string_view::npos) {
        problem = "a quote is not closed";
        end = text.size();
    }
    const std::string_view raw = text.substr(begin, end - begin);
    nextLine += static_cast<std::uint64_t>(std::count(raw.begin(), raw.end(), '\n'));
    if (fields) {
        keepQuoted(raw, hasQuotes, *fields);
    }
    at = pastBlanks(std::min(end + 1, text.size()));
    passRest(at);
    return true;
}

void CsvRecords::keepQuoted(std::string_view raw, bool hasQuotes, std::vector<CsvField>& fields) {
    if (!hasQuotes) {
        fields.push_back({raw, true});
        return;
    }
    std::string& plain = unescaped.emplace_back();
    for (std::size_t i = 0; i < raw.size(); ++i) {
        plain += raw[i];
        i += raw[i] == '"' ? 1 : 0;
    }
    fields.push_back({plain, true});
}

/// Passes text after a closing quote, which is an error.
void CsvRecords::passRest(std::size_t& at) {
    const bool isFollowed = at < text.size() && text[at] != form->delimiter && text[at] != '\n' && text[at] != '\r' &&
                            form->delimiter != ' ';
    if (!isFollowed) {
        return;
    }
    problem = "there is text after a closing quote";
    while (at < text.size() && text[at] != form->delimiter && text[at] != '\n') {
        ++at;
    }
}

}  // namespace velmorak
