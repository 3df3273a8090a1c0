#pragma once

#include "root/container/Buffer.h"
#include "root/container/ByteVector.h"

namespace velmorak::root {

/// Decompresses a record's content: a sequence of frames by zlib ("ZL"), the deflate of old programs ("CS"), lzma
/// ("XZ"), lz4 ("L4") or zstd ("ZS"). Content of the stated length is not compressed.
/// @param size of the decompressed content.
/// @throws Failure if a frame is damaged, has an unknown format, or a wrong checksum.
ByteVector unpacked(Bytes packed, std::size_t size);

}  // namespace velmorak::root
