#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace velmorak::io {

/// Repairs text that is declared as UTF-8: some writers copy bytes of other encodings, so that a byte that is not part
/// of a valid sequence is taken as ISO-8859-1. Works on pieces; a sequence may be cut anywhere.
class TextRepair {
public:
    /// Appends the repaired piece to the target.
    void append(std::string_view piece, std::string& target);
    /// Appends the rest after the last piece.
    void finish(std::string& target);
    /// Bytes that were taken as ISO-8859-1, each of which became two.
    std::uint64_t repaired() const { return count; }
    /// Number of them before a byte that the last call appended; byte counts from the first one ever appended.
    std::uint64_t repairedBefore(std::uint64_t byte) const;
    /// The last piece ended inside a sequence.
    bool hasRest() const { return !rest.empty(); }

private:
    void repairByte(char byte, std::string& target);
    void appendPiece(std::string_view piece, std::string& target);
    void begin(const std::string& target);
    void end(const std::string& target);

    std::uint64_t appended = 0;            ///< Bytes in total.
    std::uint64_t targetBegin = 0;         ///< Bytes appended before the target's first one.
    std::vector<std::uint64_t> positions;  ///< Positions of the bytes that the last call took as ISO-8859-1.
    std::string rest;                      ///< Beginning of a sequence at the end of the last piece.
    std::uint64_t count = 0;
};

}  // namespace velmorak::io
