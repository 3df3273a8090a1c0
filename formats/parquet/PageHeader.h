#pragma once

#include "parquet/Metadata.h"

namespace velmorak::parquet {

/// What precedes the content of a page.
struct PageHeader {
    enum class Type { Data = 0, Index, Dictionary, DataV2 };

    Type type = Type::Data;
    std::size_t headerBytes = 0;
    std::uint32_t unpackedBytes = 0;
    std::uint32_t packedBytes = 0;
    std::optional<std::uint32_t> checksum;  ///< CRC-32 of the packed bytes.
    std::uint32_t values = 0;               ///< With missing ones.
    Encoding encoding = Encoding::Plain;
    Encoding definitionEncoding = Encoding::Rle;  ///< Of version 1.
    Encoding repetitionEncoding = Encoding::Rle;
    std::uint32_t rows = 0;  ///< Of version 2, as the levels' bytes.
    std::uint32_t definitionBytes = 0;
    std::uint32_t repetitionBytes = 0;
    bool isPacked = true;

    bool isData() const { return type == Type::Data || type == Type::DataV2; }
};

/// @throws EndsEarly if the bytes end inside the header; Failure if it is damaged.
PageHeader readPageHeader(Bytes bytes);

}  // namespace velmorak::parquet
