#pragma once

#include "parquet/Metadata.h"

#include <string_view>

namespace velmorak::parquet {

/// Values of a fixed width, one after the other and little-endian: in the page itself, or unpacked from it.
struct FixedValues {
    Bytes bytes;
    std::vector<std::uint8_t> own;
};

/// Texts: in the page itself, or put together from it.
struct TextValues {
    std::vector<std::string_view> views;
    std::vector<char> own;
};

/// @param width of a value in bytes.
/// @throws Failure if the bytes are damaged or too few, or the encoding is not one for such values.
FixedValues decodeFixed(Physical type, std::size_t width, Encoding encoding, Bytes bytes, std::size_t count);
std::vector<std::uint8_t> decodeBooleans(Encoding encoding, Bytes bytes, std::size_t count);
TextValues decodeTexts(Encoding encoding, Bytes bytes, std::size_t count);

}  // namespace velmorak::parquet
