#include "csv/CsvPieces.h"

#include "csv/CsvScan.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

namespace velmorak {

namespace {

constexpr std::size_t readBytes = 1U << 17U;
/// Enough for a header, which is all that is read of a file whose columns are known.
constexpr std::size_t firstReadBytes = 1U << 14U;
/// A buffer that has become too small is made large enough for a small file at once.
constexpr std::uint64_t maxBytesAtOnce = std::uint64_t{4} << 20U;
/// Otherwise an unclosed quote would take in the whole file.
constexpr std::size_t maxRecordBytes = 64U << 20U;

}  // namespace

CsvPieces::CsvPieces(const std::filesystem::path& file, CsvEncoding encoding, const CsvForm& form,
                     const RunContext& context)
    : in(file, encoding), form(&form), run(&context), records({}, form) {}

CsvPiece CsvPieces::next(std::size_t maxRecords, std::size_t maxBytes) {
    CsvPiece piece;
    begin = at;
    beginLine = line;
    while (piece.records < maxRecords && at - begin < maxBytes) {
        const std::size_t plain = passPlainLines(maxRecords - piece.records, maxBytes - (at - begin));
        if (plain == 0 && !passRecord(piece.records > 0, maxBytes)) {
            break;
        }
        piece.records += std::max<std::size_t>(plain, 1);
    }
    if (damage && piece.records == 0) {
        throw Failure(*damage);
    }
    piece.owner = buffer;
    piece.text = std::string_view(buffer.get() + begin, at - begin);
    piece.line = beginLine;
    lastPiece = at - begin;
    return piece;
}

std::optional<CsvPlace> CsvPieces::place() const {
    const std::optional<std::uint64_t> next = in.place();
    return next ? std::optional(CsvPlace{*next - (end - at), line}) : std::nullopt;
}

void CsvPieces::seek(const CsvPlace& place) {
    buffer.reset();
    capacity = begin = at = end = nextQuote = lastPiece = 0;
    line = beginLine = place.line;
    isAtEnd = false;
    damage.reset();
    in.seek(place.byte - std::min<std::uint64_t>(place.byte, 1));
    if (place.byte > 0) {
        requireLineEnd();
        in.seek(place.byte);
    }
}

void CsvPieces::requireLineEnd() {
    std::array<char, 4> bytes{};
    if (in.read(bytes.data(), bytes.size()) == 0 || bytes.front() != '\n') {
        throw Failure("file", "\"" + in.name() + "\" has changed: line " + std::to_string(line) + " begins elsewhere");
    }
}

/// Passes many lines that are surely records at once.
/// @return their number; 0 if there is none that can be passed in this way.
std::size_t CsvPieces::passPlainLines(std::size_t maxRecords, std::size_t maxBytes) {
    const char* const first = buffer.get() + at;
    // The character after a line end is looked at as well.
    const std::size_t length = end > at ? std::min(end - at - 1, maxBytes) : 0;
    if (length < lineBlockBytes || !mayBeginRecord(*first)) {
        return 0;
    }
    const char comment = form->comment.empty() ? '\n' : form->comment.front();
    std::size_t passed = 0;
    std::size_t done = 0;
    for (; length - done >= lineBlockBytes; done += lineBlockBytes) {
        const LineBlock block = lineBlockAt(first + done, comment);
        if (block.isOdd || block.lineEnds > maxRecords - passed) {
            break;
        }
        passed += block.lineEnds;
    }
    if (passed > 0) {
        at += std::string_view(first, done).rfind('\n') + 1;
        line += passed;
    }
    return passed;
}

/// @return false if no more record can be read, or if too many lines that are not records follow those of the piece.
bool CsvPieces::passRecord(bool hasRecords, std::size_t maxBytes) {
    while (!passLine()) {
        if (hasRecords && at - begin >= maxBytes) {
            return false;
        }
        if (!hasRecords) {
            begin = at;
            beginLine = line;
        }
        if (!refill()) {
            return false;
        }
    }
    return isRecord;
}

/// Passes a record, or lines that are none at the end of the file. @return false if more bytes are needed.
bool CsvPieces::passLine() {
    isRecord = true;
    const char* const text = buffer.get();
    const auto* const lineEnd = end == at ? nullptr : static_cast<const char*>(std::memchr(text + at, '\n', end - at));
    if (lineEnd && mayBeginRecord(text[at]) && !hasQuoteBefore(static_cast<std::size_t>(lineEnd - text))) {
        at = static_cast<std::size_t>(lineEnd - text) + 1;
        ++line;
        return true;
    }
    records.seek(std::string_view(text, end), at, line);
    const CsvRecords::Found found = records.skip(isAtEnd);
    at = records.position();
    line = records.lineAfter();
    isRecord = found == CsvRecords::Found::Record;
    return found != CsvRecords::Found::Short;
}

/// Whether a line without quotes that begins with the character is surely a record.
bool CsvPieces::mayBeginRecord(char first) const {
    const bool isComment = !form->comment.empty() && first == form->comment.front();
    return !isComment && first != ' ' && first != '\t' && first != '\r' && first != '\n';
}

bool CsvPieces::hasQuoteBefore(std::size_t lineEnd) {
    if (nextQuote < at) {
        const auto* const quote = static_cast<const char*>(std::memchr(buffer.get() + at, '"', end - at));
        nextQuote = quote ? static_cast<std::size_t>(quote - buffer.get()) : end;
    }
    return nextQuote < lineEnd;
}

/// Reads more of the file. @return false at its end, or where it is damaged.
bool CsvPieces::refill() {
    if (isAtEnd || damage) {
        return false;
    }
    if (run->isStopping()) {
        throw Stopped();
    }
    if (end - at > maxRecordBytes) {
        damage = Failure("file", "\"" + in.name() + "\", line " + std::to_string(line) +
                                     ": the record does not end; is there an unclosed quote?");
        return false;
    }
    const std::size_t wanted = buffer ? std::max(readBytes, end - at) : firstReadBytes;
    makeRoom(wanted);
    try {
        const std::size_t more = in.read(buffer.get() + end, wanted);
        isAtEnd = more == 0;
        end += more;
    } catch (const Failure& failure) {
        damage = failure;
    }
    return !damage;
}

/// Moves the piece to a larger buffer if there is no room. Earlier pieces keep the old one.
void CsvPieces::makeRoom(std::size_t wanted) {
    if (buffer && capacity - end >= wanted) {
        return;
    }
    const std::size_t kept = end - begin;
    const std::size_t rest = static_cast<std::size_t>(std::min(in.bytesLeft().value_or(0), maxBytesAtOnce));
    capacity = std::max({2 * kept, lastPiece + lastPiece / 8, kept > 0 ? kept + rest : 0}) + wanted;
    auto larger = std::make_shared_for_overwrite<char[]>(capacity);
    if (kept > 0) {
        std::memcpy(larger.get(), buffer.get() + begin, kept);
    }
    buffer = std::move(larger);
    at -= begin;
    end -= begin;
    nextQuote = nextQuote < begin ? 0 : nextQuote - begin;
    begin = 0;
}

}  // namespace velmorak
