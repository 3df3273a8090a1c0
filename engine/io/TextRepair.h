#pragma once

#include <cstdint>
#include <string>
#include <string_view>

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

private:
    void appendLatin1(char byte, std::string& target);

    std::string rest;  ///< The beginning of a sequence that the last piece was cut in.
    std::uint64_t count = 0;
};

}  // namespace velmorak::io
