#include "arrow/Schema.h"

#include <array>

namespace velmorak::arrow {
namespace {

constexpr unsigned maxDepth = 40;

double unitNumbered(std::int16_t unit) {
    constexpr std::array units = {1.0, 1e3, 1e6, 1e9};
    if (unit < 0 || static_cast<std::size_t>(unit) >= units.size()) {
        throw Failure("a time has an unknown unit");
    }
    return units[static_cast<std::size_t>(unit)];
}

/// @return the bytes of a width in bits, 0 for one that does not exist.
std::size_t bytesOf(std::int32_t bits) {
    constexpr std::int32_t maxBits = 256;
    return bits < 8 || bits > maxBits || (bits & (bits - 1)) != 0 ? 0 : static_cast<std::size_t>(bits) / 8;
}

std::size_t sizeOf(std::int32_t size) {
    constexpr std::int32_t maxSize = 1 << 24;
    return size < 0 || size > maxSize ? 0 : static_cast<std::size_t>(size);
}

void readTime(const FlatTable& table, TypeInfo& info) {
    constexpr double perDay = 1.0 / 86400.0;
    constexpr std::int16_t millisecond = 1;
    switch (info.type) {
        case Type::Date:
            info.bytes = table.number<std::int16_t>(0, millisecond) == 0 ? 4 : 8;
            info.unitsPerSecond = info.bytes == 4 ? perDay : 1e3;
            break;
        case Type::Time:
            info.bytes = bytesOf(table.number<std::int32_t>(1, 32));
            info.unitsPerSecond = unitNumbered(table.number<std::int16_t>(0, millisecond));
            break;
        default:
            info.bytes = 8;
            info.unitsPerSecond = unitNumbered(
                table.number<std::int16_t>(0, info.type == Type::Duration ? millisecond : std::int16_t{0}));
    }
}

TypeInfo readInt(const FlatTable& table) {
    TypeInfo info;
    info.type = Type::Int;
    info.bytes = bytesOf(table.number<std::int32_t>(0, 0));
    info.isSigned = table.boolean(1);
    return info;
}

TypeInfo readType(Type type, const FlatTable& table) {
    TypeInfo info;
    info.type = type;
    switch (type) {
        case Type::Int:
            return readInt(table);
        case Type::FloatingPoint:
            info.bytes = std::size_t{2} << (static_cast<unsigned>(table.number<std::int16_t>(0, 0)) & 3U);
            break;
        case Type::Decimal:
            info.scale = table.number<std::int32_t>(1, 0);
            info.bytes = bytesOf(table.number<std::int32_t>(2, 128));
            break;
        case Type::Date:
        case Type::Time:
        case Type::Timestamp:
        case Type::Duration:
            readTime(table, info);
            break;
        case Type::FixedSizeBinary:
            info.bytes = sizeOf(table.number<std::int32_t>(0, 0));
            break;
        case Type::FixedSizeList:
            info.listSize = sizeOf(table.number<std::int32_t>(0, 0));
            break;
        case Type::Union:
            info.isDense = table.number<std::int16_t>(0, 0) == 1;
            break;
        default:
            break;
    }
    return info;
}

std::string unitIn(const FlatList& pairs) {
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        const FlatTable pair = pairs.table(i);
        if (pair.text(0) == "unit") {
            return std::string(pair.text(1));
        }
    }
    return {};
}

std::vector<Field> readFields(const FlatList& list, unsigned depth);

Field readField(const FlatTable& table, unsigned depth) {
    Field field;
    field.name = table.text(0);
    field.type = readType(static_cast<Type>(table.number<std::uint8_t>(2, 0)), table.requiredTable(3));
    if (const std::optional<FlatTable> dictionary = table.table(4)) {
        const std::optional<FlatTable> index = dictionary->table(1);
        field.dictionary = {dictionary->number<std::int64_t>(0, 0),
                            index ? readInt(*index) : TypeInfo{Type::Int, 4, true}};
    }
    field.children = readFields(table.list(5, 4), depth + 1);
    field.unit = unitIn(table.list(6, 4));
    return field;
}

std::vector<Field> readFields(const FlatList& list, unsigned depth) {
    if (depth > maxDepth) {
        throw Failure("its schema is nested too deeply");
    }
    std::vector<Field> fields;
    for (std::size_t i = 0; i < list.size(); ++i) {
        fields.push_back(readField(list.table(i), depth));
    }
    return fields;
}

}  // namespace

bool TypeInfo::isText() const {
    return type == Type::Binary || type == Type::Utf8 || type == Type::LargeBinary || type == Type::LargeUtf8 ||
           isView();
}

bool TypeInfo::hasWideOffsets() const {
    return type == Type::LargeBinary || type == Type::LargeUtf8 || type == Type::LargeList;
}

std::vector<Field> readSchema(const FlatTable& schema) {
    if (schema.number<std::int16_t>(0, 0) != 0) {
        throw Failure("its numbers have the most significant byte first, which cannot be read");
    }
    return readFields(schema.list(1, 4), 0);
}

}  // namespace velmorak::arrow
