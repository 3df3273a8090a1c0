#include "aida/text/XmlReader.h"

#include <algorithm>
#include <string_view>

/// Plain rows: they are kept from the parser, which is told nothing of them, and only its places are moved on.
namespace velmorak::io {

namespace {

constexpr std::string_view rowEnd = "</row>";
constexpr std::size_t maxOddRows = 1024;

}  // namespace

bool XmlReader::mayScan() const {
    return reading == RowReading::Scanned && isScannable && handler.plainColumns() != nullptr;
}

/// All that the parser was given has been told to the handler, and the last was the end of a row or blanks.
bool XmlReader::isParserBetweenRows() const {
    const XML_Index place = XML_GetCurrentByteIndex(parser.get());
    return handler.isBetweenRows() && !isInCdata && !repair.hasRest() && place >= 0 &&
           static_cast<std::uint64_t>(place) == parsedBytes;
}

/// @return false where what comes next is for the parser.
bool XmlReader::takeRows() {
    if (!blocks || !mayScan() || !isParserBetweenRows()) {
        return false;
    }
    RowBlocks::Block* const block = blocks->front();
    if (!block) {
        return false;
    }
    if (block->scannedFrom != cursor) {
        block->scanFrom(cursor);
        rowsTaken = 0;
    }
    if (block->rows.bytes() == 0) {
        return false;
    }
    rowsTaken += handler.takeRows(block->rows, rowsTaken);
    if (rowsTaken == block->rows.count()) {
        passRows(*block);
    }
    return true;
}

void XmlReader::passRows(RowBlocks::Block& block) {
    scannedBytes += block.rows.bytes();
    scannedLines += block.rows.lines();
    cursor += block.rows.bytes();
    if (block.rows.count() > 0) {
        oddRows = 1;
    }
    rowsTaken = 0;
    blockFraction = block.fraction;
    if (cursor < block.size) {
        block.scannedFrom = cursor;
        block.rows.clear();
    } else {
        blocks->pop();
        cursor = 0;
    }
}

/// A row or several, up to an end of one; more each time that none of them was plain.
std::string_view XmlReader::nextOddRows() {
    for (;;) {
        const RowBlocks::Block* const block = blocks->front();
        if (!block) {
            return {};
        }
        if (cursor == block->size) {
            blocks->pop();
            cursor = 0;
            continue;
        }
        blockFraction = block->fraction;
        const std::string_view text = block->text();
        std::size_t end = cursor;
        for (std::size_t row = 0; row < oddRows && end < text.size(); ++row) {
            const std::size_t found = text.find(rowEnd, end);
            end = found == std::string_view::npos ? text.size() : found + rowEnd.size();
        }
        oddRows = std::min(2 * oddRows, maxOddRows);
        const std::string_view rows = text.substr(cursor, end - cursor);
        cursor = end;
        return rows;
    }
}

void XMLCALL XmlReader::beganCdata(void* self) {
    static_cast<XmlReader*>(self)->isInCdata = true;
}

void XMLCALL XmlReader::endedCdata(void* self) {
    static_cast<XmlReader*>(self)->isInCdata = false;
}

void XMLCALL XmlReader::beganDoctype(void* self, const XML_Char* /*name*/, const XML_Char* /*systemId*/,
                                     const XML_Char* /*publicId*/, int hasInternalSubset) {
    // A file may declare there what a row means, the defaults of attributes for example.
    if (hasInternalSubset != 0) {
        static_cast<XmlReader*>(self)->isScannable = false;
    }
}

}  // namespace velmorak::io
