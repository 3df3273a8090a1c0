#include "arrow/Elements.h"

#include "columnar/Columns.h"
#include "columnar/Numbers.h"

#include <velmorak/Utf8.h>

#include <algorithm>
#include <limits>
#include <type_traits>

namespace velmorak::arrow {
namespace {

using columnar::littleEndian;

/// Reads the values of one leaf.
class LeafReader {
public:
    LeafReader(const Level& level, const BatchBuffers& buffers, const Elements& elements)
        : level(level), buffers(buffers), elements(elements) {}

    Column column(ColumnType type) const;
    std::vector<std::int64_t> integers(const TypeInfo& info) const;

private:
    template <typename Stored, typename Values, typename Convert>
    void convert(Values& values, Convert convertOne) const;
    template <typename Values>
    void numbers(const TypeInfo& info, Values& values) const;
    void reals(Column::Reals& values) const;
    void times(Column::Reals& values) const;
    void decimals(Column::Reals& values) const;
    Column::Booleans booleans() const;
    void texts(Column::Texts& values) const;
    void textsOf(const Elements::Range& range, Column::Texts& values) const;
    void views(Column::Texts& values) const;
    void fixedTexts(Column::Texts& values) const;
    /// Calls onValue(bytes) for each value of fixed width.
    template <typename OnValue>
    void eachFixed(OnValue onValue) const;
    std::size_t buffer(std::size_t which) const { return bufferOf(level, buffers.contents(), which); }

    const Level& level;
    const BatchBuffers& buffers;
    const Elements& elements;
};

template <typename Stored, typename Values, typename Convert>
void LeafReader::convert(Values& values, Convert convertOne) const {
    using Value = typename Values::value_type;
    for (const Elements::Range& range : elements.ranges) {
        const std::uint64_t count = range.last - range.first;
        const std::size_t before = values.size();
        if constexpr (std::is_same_v<Stored, Value> && std::endian::native == std::endian::little) {
            buffers.check(buffer(1), range.first * sizeof(Stored), count * sizeof(Stored));
            values.resize(before + count);
            buffers.copy(buffer(1), range.first * sizeof(Stored),
                         std::as_writable_bytes(std::span(values).subspan(before)));
        } else {
            const Piece piece = buffers.read(buffer(1), range.first * sizeof(Stored), count * sizeof(Stored));
            values.resize(before + count);
            for (std::uint64_t i = 0; i < count; ++i) {
                // A number of one byte is not a character. NOLINTBEGIN(bugprone-signed-char-misuse)
                values[before + i] =
                    static_cast<Value>(convertOne(littleEndian<Stored>(piece.bytes.data() + i * sizeof(Stored))));
                // NOLINTEND(bugprone-signed-char-misuse)
            }
        }
    }
}

template <typename Values>
void LeafReader::numbers(const TypeInfo& info, Values& values) const {
    const auto same = [](auto value) { return value; };
    switch (info.bytes) {
        case 1:
            return info.isSigned ? convert<std::int8_t>(values, same) : convert<std::uint8_t>(values, same);
        case 2:
            return info.isSigned ? convert<std::int16_t>(values, same) : convert<std::uint16_t>(values, same);
        case 4:
            return info.isSigned ? convert<std::int32_t>(values, same) : convert<std::uint32_t>(values, same);
        default:
            return info.isSigned ? convert<std::int64_t>(values, same) : convert<std::uint64_t>(values, same);
    }
}

void LeafReader::reals(Column::Reals& values) const {
    switch (level.type.bytes) {
        case 2:
            convert<std::uint16_t>(values, [](std::uint16_t bits) { return columnar::halfValue(bits); });
            break;
        case 4:
            convert<float>(values, [](float value) { return value; });
            break;
        case 8:
            convert<double>(values, [](double value) { return value; });
            break;
        default:
            throw Failure("reals have an unknown width");
    }
}

void LeafReader::times(Column::Reals& values) const {
    constexpr double secondsPerDay = 86400.0;
    const double unit = level.type.unitsPerSecond;
    const auto seconds = [unit](auto value) {
        return unit < 1.0 ? static_cast<double>(value) * secondsPerDay : static_cast<double>(value) / unit;
    };
    if (level.type.bytes == 4) {
        convert<std::int32_t>(values, seconds);
    } else {
        convert<std::int64_t>(values, seconds);
    }
}

template <typename OnValue>
void LeafReader::eachFixed(OnValue onValue) const {
    const std::size_t width = level.type.bytes;
    for (const Elements::Range& range : elements.ranges) {
        const Piece piece = buffers.read(buffer(1), range.first * width, (range.last - range.first) * width);
        for (std::size_t at = 0; at < piece.bytes.size(); at += width) {
            onValue(piece.bytes.subspan(at, width));
        }
    }
}

void LeafReader::decimals(Column::Reals& values) const {
    std::vector<std::uint8_t> turned(level.type.bytes);
    eachFixed([&](Bytes value) {
        std::reverse_copy(value.begin(), value.end(), turned.begin());
        values.push_back(columnar::decimalValue(turned, level.type.scale));
    });
}

Column::Booleans LeafReader::booleans() const {
    Column::Booleans values;
    for (const Elements::Range& range : elements.ranges) {
        const std::uint64_t byte = range.first / 8;
        const Piece bits = buffers.read(buffer(1), byte, (range.last + 7) / 8 - byte);
        for (std::uint64_t i = range.first; i < range.last; ++i) {
            values.push_back(bits.bytes[i / 8 - byte] >> (i & 7U) & 1U);
        }
    }
    return values;
}

std::string textFrom(Bytes bytes) {
    const std::string_view text = columnar::textOf(bytes);
    return isUtf8(text) ? std::string(text) : toUtf8(text);
}

void LeafReader::textsOf(const Elements::Range& range, Column::Texts& values) const {
    const std::uint64_t width = level.type.hasWideOffsets() ? 8 : 4;
    const Piece offsets = buffers.read(buffer(1), range.first * width, (range.last - range.first + 1) * width);
    const auto offset = [&](std::uint64_t i) {
        const std::uint8_t* at = offsets.bytes.data() + i * width;
        return width == 8 ? littleEndian<std::int64_t>(at) : littleEndian<std::int32_t>(at);
    };
    const std::uint64_t count = range.last - range.first;
    const std::int64_t begin = offset(0);
    if (begin < 0 || offset(count) < begin) {
        throw Failure("the offsets of texts are damaged");
    }
    const Piece characters =
        buffers.read(buffer(2), static_cast<std::uint64_t>(begin), static_cast<std::uint64_t>(offset(count) - begin));
    for (std::uint64_t i = 0; i < count; ++i) {
        const std::int64_t first = offset(i) - begin;
        const std::int64_t last = offset(i + 1) - begin;
        if (first < 0 || last < first || static_cast<std::uint64_t>(last) > characters.bytes.size()) {
            throw Failure("the offsets of texts do not ascend");
        }
        values.push_back(textFrom(
            characters.bytes.subspan(static_cast<std::size_t>(first), static_cast<std::size_t>(last - first))));
    }
}

/// A view has a length, and either up to 12 characters or a buffer and a position in it.
void LeafReader::views(Column::Texts& values) const {
    constexpr std::size_t viewBytes = 16;
    constexpr std::uint32_t maxInside = 12;
    const std::vector<std::uint64_t>& counts = buffers.contents().viewBuffers;
    const std::uint64_t further = level.viewsBefore < counts.size() ? counts[level.viewsBefore] : 0;
    std::size_t element = 0;
    for (const Elements::Range& range : elements.ranges) {
        const Piece piece = buffers.read(buffer(1), range.first * viewBytes, (range.last - range.first) * viewBytes);
        for (std::size_t at = 0; at < piece.bytes.size(); at += viewBytes, ++element) {
            const Bytes view = piece.bytes.subspan(at, viewBytes);
            const auto length = littleEndian<std::uint32_t>(view.data());
            const bool isMissing = !elements.isPresent.empty() && elements.isPresent[element] == 0;
            if (length <= maxInside || isMissing) {
                values.push_back(textFrom(view.subspan(4, isMissing ? 0 : length)));
                continue;
            }
            const auto which = littleEndian<std::uint32_t>(view.data() + 8);
            if (which >= further) {
                throw Failure("a text is in a buffer that does not exist");
            }
            values.push_back(textFrom(
                buffers.read(buffer(2) + which, littleEndian<std::uint32_t>(view.data() + maxInside), length).bytes));
        }
    }
}

void LeafReader::fixedTexts(Column::Texts& values) const {
    constexpr std::string_view digits = "0123456789abcdef";
    eachFixed([&](Bytes value) {
        std::string text;
        for (const std::uint8_t byte : value) {
            text += digits[byte >> 4U];
            text += digits[byte & 0xFU];
        }
        values.push_back(std::move(text));
    });
}

void LeafReader::texts(Column::Texts& values) const {
    if (level.type.type == Type::FixedSizeBinary) {
        fixedTexts(values);
    } else if (level.type.isView()) {
        views(values);
    } else {
        for (const Elements::Range& range : elements.ranges) {
            textsOf(range, values);
        }
    }
}

Column LeafReader::column(ColumnType type) const {
    Column column = columnar::emptyColumn(type, false);
    if (type == ColumnType::Text) {
        texts(std::get<Column::Texts>(column.values));
    } else if (level.type.type == Type::Bool) {
        const Column::Booleans values = booleans();
        if (type == ColumnType::Real) {
            column.values = Column::Reals(values.begin(), values.end());
        } else {
            column.values = values;
        }
    } else if (type == ColumnType::Integer) {
        numbers(level.type, std::get<Column::Integers>(column.values));
    } else if (level.type.type == Type::Null) {
        column.values = Column::Reals(elements.size, std::numeric_limits<double>::quiet_NaN());
    } else if (level.type.type == Type::Int) {
        numbers(level.type, std::get<Column::Reals>(column.values));
    } else if (level.type.type == Type::FloatingPoint) {
        reals(std::get<Column::Reals>(column.values));
    } else if (level.type.type == Type::Decimal) {
        decimals(std::get<Column::Reals>(column.values));
    } else {
        times(std::get<Column::Reals>(column.values));
    }
    return column;
}

std::vector<std::int64_t> LeafReader::integers(const TypeInfo& info) const {
    std::vector<std::int64_t> values;
    numbers(info, values);
    return values;
}

}  // namespace

Column valuesOf(const Leaf& leaf, const BatchBuffers& buffers, const Elements& elements, ColumnType type) {
    return LeafReader(leaf.levels.back(), buffers, elements).column(type);
}

std::vector<std::int64_t> positionsOf(const Leaf& leaf, const BatchBuffers& buffers, const Elements& elements) {
    return LeafReader(leaf.levels.back(), buffers, elements).integers(leaf.dictionary->index);
}

}  // namespace velmorak::arrow
