#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace velmorak::io {

/// Makes valid UTF-8 of what a file says is UTF-8. Writers copy bytes of other encodings as they are: a byte that is no
/// part of a valid sequence is taken as ISO-8859-1. Works on pieces; a sequence may be cut anywhere.
class TextRepair {
public:
    /// Appends the piece to the target.
    void append(std::string_view piece, std::string& target);
    /// Appends what is left when no more pieces come.
    void finish(std::string& target);
    /// Bytes that were taken as ISO-8859-1, each of which has become two.
    std::uint64_t repaired() const { return count; }
    /// Those of them that stand before a byte of all that has been appended; one that the last call appended.
    std::uint64_t repairedBefore(std::uint64_t byte) const;
    /// The last piece was cut in a sequence.
    bool hasRest() const { return !rest.empty(); }

private:
    void appendLatin1(char byte, std::string& target);

    void appendPiece(std::string_view piece, std::string& target);
    void begin(const std::string& target);
    void end(const std::string& target);

    std::uint64_t appended = 0;         ///< Bytes in all.
    std::uint64_t targetBegin = 0;      ///< Bytes that were appended before the target's first one.
    std::vector<std::uint64_t> places;  ///< Where the last call has put bytes that were taken as ISO-8859-1.
    std::string rest;                   ///< The beginning of a sequence that the last piece was cut in.
    std::uint64_t count = 0;
};

}  // namespace velmorak::io
