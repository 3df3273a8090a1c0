#pragma once

#include "arrow/Flat.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace velmorak::arrow {

enum class Type : std::uint8_t {
    None,
    Null,
    Int,
    FloatingPoint,
    Binary,
    Utf8,
    Bool,
    Decimal,
    Date,
    Time,
    Timestamp,
    Interval,
    List,
    Struct,
    Union,
    FixedSizeBinary,
    FixedSizeList,
    Map,
    Duration,
    LargeBinary,
    LargeUtf8,
    LargeList,
    RunEndEncoded,
    BinaryView,
    Utf8View,
    ListView,
    LargeListView
};

/// A type with its parameters.
struct TypeInfo {
    Type type = Type::None;
    std::size_t bytes = 0;  ///< Of a value of fixed width, if it is not a bit.
    bool isSigned = false;
    std::int32_t scale = 0;       ///< Of decimals.
    double unitsPerSecond = 0.0;  ///< Of times; days have less than one.
    std::uint64_t listSize = 0;   ///< Of lists of a fixed size.
    bool isDense = false;         ///< Of unions.

    bool isText() const;
    bool isView() const { return type == Type::BinaryView || type == Type::Utf8View; }
    bool hasWideOffsets() const;
};

struct Dictionary {
    std::int64_t id = 0;
    TypeInfo index;
};

struct Field {
    std::string name;
    std::string unit;
    TypeInfo type;
    std::optional<Dictionary> dictionary;
    std::vector<Field> children;
};

/// @throws Failure if the description is damaged or is of big-endian data.
std::vector<Field> readSchema(const FlatTable& schema);

}  // namespace velmorak::arrow
