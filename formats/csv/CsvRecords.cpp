#include "csv/CsvRecords.h"

#include <velmorak/Failure.h>

#include <algorithm>
#include <utility>

namespace velmorak {

namespace {

constexpr std::size_t blockBytes = 1U << 20U;
/// Otherwise an unclosed quote would take in the whole file.
constexpr std::size_t maxRecordBytes = 64U << 20U;

/// Turns failures into failures of the input that names the file.
template <typename Work>
auto ofTheFile(Work&& work) {
    try {
        return work();
    } catch (const Failure& failure) {
        throw Failure("file", failure.what());
    }
}

}  // namespace

CsvRecords::CsvRecords(const std::filesystem::path& file, CsvForm form, const RunContext& context)
    : form(std::move(form)), run(&context), name(file.string()), in(ofTheFile([&] { return CompressedFile(file); })) {
    refill();
    begin();
}

/// Determines encoding and line ends from the first bytes.
void CsvRecords::begin() {
    constexpr std::string_view utf32("\xFF\xFE\0\0", 4);
    const bool isUtf32 = buffer.starts_with(utf32) || buffer.starts_with(std::string_view("\0\0\xFE\xFF", 4));
    if (isUtf32 || buffer.starts_with("\xFF\xFE") || buffer.starts_with("\xFE\xFF")) {
        throw Failure("file",
                      "\"" + name + "\" is encoded in " + (isUtf32 ? "UTF-32" : "UTF-16") + "; save it as UTF-8");
    }
    if (buffer.starts_with("\xEF\xBB\xBF")) {
        place = 3;
    }
    const std::size_t carriageReturn = buffer.find('\r');
    // A carriage return at the end of the block may belong to a CR LF pair.
    isOfMac = buffer.find('\n') == std::string::npos && carriageReturn != std::string::npos &&
              (carriageReturn + 1 < buffer.size() || buffer.size() < blockBytes);
    makeLineEnds(0);
}

/// Converts the line ends of an old Mac file.
void CsvRecords::makeLineEnds(std::size_t from) {
    if (isOfMac) {
        std::replace(buffer.begin() + static_cast<std::ptrdiff_t>(from), buffer.end(), '\r', '\n');
    }
}

/// Appends more of the file to the rest in the buffer.
bool CsvRecords::refill() {
    if (isAtEnd) {
        return false;
    }
    if (run->isStopping()) {
        throw Stopped();
    }
    buffer.erase(0, std::exchange(place, 0));
    if (buffer.size() > maxRecordBytes) {
        throw Failure("file", "\"" + name + "\", line " + std::to_string(nextLine) +
                                  ": the record does not end; is there an unclosed quote?");
    }
    const std::size_t before = buffer.size();
    buffer.resize(before + std::max(blockBytes, before));
    const std::size_t more = ofTheFile([&] { return in.read(buffer.data() + before, buffer.size() - before); });
    isAtEnd = more == 0;
    buffer.resize(before + more);
    makeLineEnds(before);
    return true;
}

std::size_t CsvRecords::pastBlanks(std::size_t at) const {
    while (at < buffer.size() && isBlank(buffer[at])) {
        ++at;
    }
    return at;
}

/// Skips an empty line or a comment. @return false if there is neither.
bool CsvRecords::skipLine() {
    const std::size_t begin = pastBlanks(place);
    const bool isComment = !form.comment.empty() && buffer.compare(begin, form.comment.size(), form.comment) == 0;
    const bool isEmpty = begin < buffer.size() && (buffer[begin] == '\n' || buffer.compare(begin, 2, "\r\n") == 0);
    if (!isComment && !isEmpty) {
        return false;
    }
    const std::size_t end = buffer.find('\n', begin);
    place = end == std::string::npos ? buffer.size() : end + 1;
    nextLine += end == std::string::npos ? 0 : 1;
    return true;
}

bool CsvRecords::next(std::vector<CsvField>& fields) {
    for (;;) {
        // A line, or the comment sign, may continue beyond the buffer's end.
        while (!isAtEnd && buffer.find('\n', place) == std::string::npos) {
            refill();
        }
        if (pastBlanks(place) >= buffer.size() && isAtEnd) {
            return false;
        }
        if (skipLine()) {
            continue;
        }
        recordLine = nextLine;
        const Step step = readRecord(fields);
        if (step != Step::Short) {
            return true;
        }
        nextLine = recordLine;
        refill();
    }
}

CsvRecords::Step CsvRecords::readRecord(std::vector<CsvField>& fields) {
    fields.clear();
    unescaped.clear();
    problem.clear();
    std::size_t at = place;
    Step step = Step::More;
    while (step == Step::More) {
        if (fields.size() == maxFields) {
            throw Failure("file", "\"" + name + "\", line " + std::to_string(recordLine) + ": there are more than " +
                                      std::to_string(maxFields) + " fields");
        }
        step = readField(at, fields);
    }
    return step == Step::End ? complete(at) : step;
}

/// Ends the record at a position in the buffer.
CsvRecords::Step CsvRecords::complete(std::size_t end) {
    if (std::string_view(buffer).substr(place, end - place).find('\0') != std::string_view::npos) {
        problem = "it contains a zero byte; is the file encoded in UTF-16?";
    }
    place = end;
    return Step::End;
}

CsvRecords::Step CsvRecords::readField(std::size_t& at, std::vector<CsvField>& fields) {
    at = pastBlanks(at);
    if (at < buffer.size() && buffer[at] == '"') {
        if (readQuoted(at, fields) == Step::Short) {
            return Step::Short;
        }
    } else {
        std::size_t end = at;
        while (end < buffer.size() && buffer[end] != form.delimiter && buffer[end] != '\n' &&
               !(form.delimiter == ' ' && isBlank(buffer[end]))) {
            ++end;
        }
        std::size_t last = end;
        while (last > at && (isBlank(buffer[last - 1]) || buffer[last - 1] == '\r')) {
            --last;
        }
        fields.push_back({std::string_view(buffer).substr(at, last - at), false});
        at = end;
    }
    at = pastBlanks(at);
    if (at < buffer.size() && buffer[at] == '\r') {
        ++at;
    }
    if (at >= buffer.size()) {
        return isAtEnd ? Step::End : Step::Short;
    }
    if (buffer[at] == '\n') {
        ++at;
        ++nextLine;
        return Step::End;
    }
    if (form.delimiter != ' ') {
        ++at;
    }
    return Step::More;
}

CsvRecords::Step CsvRecords::readQuoted(std::size_t& at, std::vector<CsvField>& fields) {
    const std::size_t begin = at + 1;
    std::size_t end = begin;
    bool hasQuotes = false;
    for (;; end += 2, hasQuotes = true) {
        end = buffer.find('"', end);
        if (end == std::string::npos || (end + 1 == buffer.size() && !isAtEnd)) {
            break;
        }
        if (end + 1 >= buffer.size() || buffer[end + 1] != '"') {
            break;
        }
    }
    if ((end == std::string::npos || end + 1 == buffer.size()) && !isAtEnd) {
        return Step::Short;
    }
    if (end == std::string::npos) {
        problem = "a quote is not closed";
        end = buffer.size();
    }
    const std::string_view raw = std::string_view(buffer).substr(begin, end - begin);
    nextLine += static_cast<std::uint64_t>(std::count(raw.begin(), raw.end(), '\n'));
    if (hasQuotes) {
        std::string& text = unescaped.emplace_back();
        for (std::size_t i = 0; i < raw.size(); ++i) {
            text += raw[i];
            i += raw[i] == '"' ? 1 : 0;
        }
        fields.push_back({text, true});
    } else {
        fields.push_back({raw, true});
    }
    at = pastBlanks(std::min(end + 1, buffer.size()));
    const bool isFollowed = at < buffer.size() && buffer[at] != form.delimiter && buffer[at] != '\n' &&
                            buffer[at] != '\r' && form.delimiter != ' ';
    if (isFollowed) {
        problem = "there is text after a closing quote";
        while (at < buffer.size() && buffer[at] != form.delimiter && buffer[at] != '\n') {
            ++at;
        }
    }
    return Step::More;
}

}  // namespace velmorak
