#include "csv/CsvStream.h"

#include <algorithm>
#include <utility>

namespace velmorak {

namespace {

constexpr std::size_t mostRecords = 1024;
constexpr std::size_t bytesInPiece = std::size_t{1} << 17U;

}  // namespace

void CsvStream::takePiece(CsvPiece given) {
    piece = std::move(given);
    records = CsvRecords(piece.text, *form, piece.line);
}

std::optional<CsvPlace> CsvStream::place() const {
    const std::optional<CsvPlace> end = pieces.place();
    const std::size_t left = piece.text.size() - records.position();
    return end && left > 0 ? CsvPlace{end->byte - left, records.lineAfter()} : end;
}

void CsvStream::seek(const CsvPlace& place) {
    pieces.seek(place);
    takePiece({.owner = nullptr, .text = {}, .records = 0, .line = place.line});
}

bool CsvStream::next(std::vector<CsvField>& fields) {
    while (records.next(fields) != CsvRecords::Found::Record) {
        CsvPiece more = pieces.next(recordsInPiece, bytesInPiece);
        recordsInPiece = std::min(2 * recordsInPiece, mostRecords);
        if (more.records == 0) {
            return false;
        }
        takePiece(std::move(more));
    }
    return true;
}

}  // namespace velmorak
