#include "root/tree/BulkDecode.h"

namespace velmorak::root {
namespace {

template <typename Stored, typename Values>
void append(Bytes bytes, Values& values) {
    const std::size_t count = bytes.size() / sizeof(Stored);
    const std::size_t before = values.size();
    values.resize(before + count);
    for (std::size_t i = 0; i < count; ++i) {
        const auto number = bigEndian<Stored>(bytes.data() + i * sizeof(Stored));
        values[before + i] = static_cast<typename Values::value_type>(+number);
    }
}

void appendIntegers(NumberType type, Bytes bytes, Column::Integers& values) {
    using enum NumberType;
    switch (type) {
        case Int8:
            return append<std::int8_t>(bytes, values);
        case UInt8:
            return append<std::uint8_t>(bytes, values);
        case Int16:
            return append<std::int16_t>(bytes, values);
        case UInt16:
            return append<std::uint16_t>(bytes, values);
        case Int32:
            return append<std::int32_t>(bytes, values);
        case UInt32:
            return append<std::uint32_t>(bytes, values);
        default:
            return append<std::int64_t>(bytes, values);
    }
}

void appendReals(NumberType type, Bytes bytes, Column::Reals& values) {
    if (type == NumberType::Double) {
        append<double>(bytes, values);
    } else {
        append<float>(bytes, values);
    }
}

void appendBooleans(Bytes bytes, Column::Booleans& values) {
    for (const std::uint8_t byte : bytes) {
        values.push_back(byte != 0 ? 1 : 0);
    }
}

bool isPlain(const TreeColumn& column) {
    const Layout& layout = column.layout;
    const bool isStoredWhole = layout.type.number != NumberType::Float16 &&
                               (layout.type.number != NumberType::Double32 || layout.type.range.isTrivial());
    return layout.kind == Layout::Kind::Numbers && layout.type.arguments.empty() && !layout.hasHeader &&
           layout.before == 0 && isStoredWhole;
}

}  // namespace

bool decodeAtOnce(const TreeColumn& column, const Basket& basket, std::uint64_t first, std::uint64_t last,
                  Column& target) {
    const NumberType type = column.layout.type.number;
    const std::size_t size = sizeOf(type, column.layout.type.range);
    const std::size_t each = basket.entries == 0 ? 0 : basket.content.size() / basket.entries;
    const bool isExact = column.count || each == size * column.layout.length;
    if (!isPlain(column) || !isExact) {
        return false;
    }
    const std::size_t begin = basket.position(first);
    const Bytes bytes = Bytes(basket.content).subspan(begin, basket.position(last) - begin);
    const std::size_t before = target.valueCount();
    if (target.type() == ColumnType::Real) {
        appendReals(type, bytes, std::get<Column::Reals>(target.values));
    } else if (target.type() == ColumnType::Integer) {
        appendIntegers(type, bytes, std::get<Column::Integers>(target.values));
    } else {
        appendBooleans(bytes, std::get<Column::Booleans>(target.values));
    }
    for (std::uint64_t entry = first; target.isList() && entry < last; ++entry) {
        target.offsets.push_back(before + (basket.position(entry + 1) - begin) / size);
    }
    return true;
}

}  // namespace velmorak::root
