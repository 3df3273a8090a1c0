#include "root/tree/BulkDecode.h"

#include <algorithm>
#include <array>
#include <bit>

namespace velmorak::root {
namespace {

/// They stay in the processor's fastest memory until they are appended, and the column is not set to zero before.
constexpr std::size_t valuesAtOnce = 512;

template <typename Stored, typename Value>
[[gnu::always_inline]] inline void convert(const std::uint8_t* from, std::size_t count, Value* to) {
    for (std::size_t i = 0; i < count; ++i) {
        to[i] = static_cast<Value>(+bigEndian<Stored>(from + i * sizeof(Stored)));
    }
}

#if defined(__x86_64__)
/// The order of several numbers' bytes is reversed by one instruction. The values are the same.
template <typename Stored, typename Value>
[[gnu::target("avx2")]] void convertWide(const std::uint8_t* from, std::size_t count, Value* to) {
    convert<Stored>(from, count, to);
}

const bool isWide = static_cast<bool>(__builtin_cpu_supports("avx2"));
#endif

template <typename Stored, typename Value>
void convertAsWideAsPossible(const std::uint8_t* from, std::size_t count, Value* to) {
#if defined(__x86_64__)
    if (isWide) {
        convertWide<Stored>(from, count, to);
        return;
    }
#endif
    convert<Stored>(from, count, to);
}

template <typename Stored, typename Values>
void append(Bytes bytes, Values& values) {
    using Value = typename Values::value_type;
    std::array<Value, valuesAtOnce> converted;
    const std::size_t count = bytes.size() / sizeof(Stored);
    for (std::size_t done = 0; done < count; done += valuesAtOnce) {
        const std::size_t more = std::min(valuesAtOnce, count - done);
        convertAsWideAsPossible<Stored>(bytes.data() + done * sizeof(Stored), more, converted.data());
        values.insert(values.end(), converted.begin(), converted.begin() + static_cast<std::ptrdiff_t>(more));
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

/// @param size of a value, a power of two.
/// @param before number of values before the first entry.
void appendOffsets(const Basket& basket, std::uint64_t first, std::uint64_t last, std::size_t size, std::size_t before,
                   std::vector<std::uint64_t>& offsets) {
    const int shift = std::countr_zero(size);
    const std::size_t begin = basket.position(first);
    const std::size_t known = offsets.size();
    offsets.resize(known + (last - first));
    for (std::uint64_t i = 0; i < last - first; ++i) {
        offsets[known + i] = before + ((basket.position(first + i + 1) - begin) >> shift);
    }
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
    if (target.isList()) {
        appendOffsets(basket, first, last, size, before, target.offsets);
    }
    return true;
}

}  // namespace velmorak::root
