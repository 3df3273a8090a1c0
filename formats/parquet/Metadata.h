#pragma once

#include "columnar/FileBytes.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/// What a Parquet file says of itself: https://github.com/apache/parquet-format
namespace velmorak::parquet {

using columnar::Bytes;

enum class Physical { Boolean = 0, Int32, Int64, Int96, Float, Double, ByteArray, FixedBytes };
enum class Repetition { Required = 0, Optional, Repeated };
enum class Codec { None = 0, Snappy, Gzip, Lzo, Brotli, Lz4, Zstd, Lz4Raw };
enum class Encoding {
    Plain = 0,
    PlainDictionary = 2,
    Rle = 3,
    BitPacked = 4,
    DeltaBinaryPacked = 5,
    DeltaLengthByteArray = 6,
    DeltaByteArray = 7,
    RleDictionary = 8,
    ByteStreamSplit = 9
};

/// What values mean.
enum class Meaning { None, Text, List, Map, Decimal, Date, Time, Timestamp, Integer, Null, Uuid, Float16, Interval };

/// A node of the schema's tree, in the order in which a walk through the tree meets them first.
struct SchemaElement {
    std::string name;
    std::optional<Physical> type;  ///< Of a leaf.
    Repetition repetition = Repetition::Required;
    std::int32_t children = 0;
    std::int32_t typeLength = 0;  ///< Of FixedBytes.
    Meaning meaning = Meaning::None;
    std::int32_t scale = 0;       ///< Of decimals.
    double unitsPerSecond = 0.0;  ///< Of times.
    bool isUnsigned = false;      ///< Of integers.
};

struct Statistics {
    std::optional<std::int64_t> nulls;
    std::optional<std::string> low;  ///< In the order of the type, as the newer fields have it.
    std::optional<std::string> high;
};

/// The values of one leaf in one row group.
struct ColumnChunk {
    bool isElsewhere = false;  ///< In another file, or encrypted.
    Physical type = Physical::Boolean;
    Codec codec = Codec::None;
    std::int64_t values = 0;
    std::int64_t dataOffset = 0;
    std::int64_t dictionaryOffset = 0;  ///< 0 if there is none.
    Statistics statistics;
};

struct RowGroup {
    std::vector<ColumnChunk> columns;
    std::int64_t rows = 0;
};

struct FileMetadata {
    std::vector<SchemaElement> schema;
    std::vector<RowGroup> groups;
    std::vector<std::pair<std::string, std::string>> keyValues;
    std::string createdBy;
};

/// @throws Failure if it is not a Parquet file, or its description is damaged.
FileMetadata readMetadata(const columnar::FileBytes& file);

}  // namespace velmorak::parquet
