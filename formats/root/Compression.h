#pragma once

#include "root/Buffer.h"

namespace velmorak::root {

/// Unpacks a record's content, which is a row of frames by zlib ("ZL"), the deflate of old programs ("CS"), lzma
/// ("XZ"), lz4 ("L4") or zstd ("ZS"). A content as long as what it unpacks to is not packed.
/// @param size of the unpacked content.
/// @throws Failure when a frame is damaged, of another kind, or its checksum is wrong.
std::vector<std::uint8_t> unpacked(Bytes packed, std::size_t size);

}  // namespace velmorak::root
