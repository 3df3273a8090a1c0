#pragma once

#include "columnar/Bytes.h"
#include "parquet/Metadata.h"

namespace velmorak::parquet {

/// @param size of the unpacked bytes.
/// @throws Failure if the bytes are damaged or the codec is not supported.
columnar::Block unpacked(Codec codec, Bytes packed, std::size_t size);

}  // namespace velmorak::parquet
