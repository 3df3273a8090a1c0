#pragma once

#include "aida/text/RowBlocks.h"
#include "aida/text/XmlHandler.h"

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace velmorak::io {

/// The text of a document from the first rows that may be plain to its end. Plain rows bypass the parser; what they lie
/// between is handed out for it. Threads: one at a time.
class RowBlockReader {
public:
    /// @param stream outlives this, and is read by nobody else until then.
    RowBlockReader(TextInput& stream, const std::vector<PlainColumn>& columns) : blocks(stream, columns) {}

    /// Hands the plain rows that come next to the handler, as many as it accepts.
    /// @return false if what comes next is for the parser.
    bool takeRows(XmlHandler& handler);
    /// @return the text of one row or several for the parser, to the end of a row: twice as many each time that no row
    ///         was plain in between. Empty at the end of the document. Valid until the next call.
    std::string_view nextSlowRows();

    /// Part of the file that has been read up to here, 0 to 1.
    double fraction() const { return blockFraction; }
    /// Bytes and line ends that bypassed the parser.
    std::uint64_t bypassedBytes() const { return bytes; }
    std::uint64_t bypassedLines() const { return lines; }

private:
    void passRows(RowBlocks::Block& block);

    RowBlocks blocks;
    std::size_t cursor = 0;     ///< Bytes of the first block that have been read.
    std::size_t rowsTaken = 0;  ///< Of those that were scanned last.
    std::size_t slowRows = 1;   ///< To parse when the next ones are not plain.
    double blockFraction = 0.0;
    std::uint64_t bytes = 0;
    std::uint64_t lines = 0;
};

}  // namespace velmorak::io
