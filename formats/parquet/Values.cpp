#include "parquet/Values.h"

#include "columnar/Columns.h"
#include "columnar/Numbers.h"
#include "parquet/BitRuns.h"
#include "parquet/Encodings.h"

#include <velmorak/Utf8.h>

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <type_traits>

namespace velmorak::parquet {
namespace {

using columnar::littleEndian;

constexpr double secondsPerDay = 86400.0;

std::size_t widthOf(const SchemaElement& element) {
    constexpr std::size_t int96Bytes = 12;
    switch (*element.type) {
        case Physical::Int32:
        case Physical::Float:
            return 4;
        case Physical::Int96:
            return int96Bytes;
        case Physical::FixedBytes:
            return static_cast<std::size_t>(element.typeLength);
        default:
            return 8;
    }
}

template <typename Stored, typename Values, typename Convert>
void convert(Bytes bytes, Values& values, Convert convertOne) {
    values.resize(bytes.size() / sizeof(Stored));
    const std::uint8_t* from = bytes.data();
    for (auto& value : values) {
        value = convertOne(littleEndian<Stored>(from));
        from += sizeof(Stored);
    }
}

template <typename Stored>
void convertNumbers(Bytes bytes, ColumnType type, Column& column) {
    if (type == ColumnType::Integer) {
        auto& values = column.values.emplace<Column::Integers>();
        convert<Stored>(bytes, values, [](Stored value) { return static_cast<std::int64_t>(value); });
    } else {
        auto& values = column.values.emplace<Column::Reals>();
        convert<Stored>(bytes, values, [](Stored value) { return static_cast<double>(value); });
    }
}

/// Integers that mean something else.
template <typename Stored>
void convertScaled(const SchemaElement& element, Bytes bytes, Column::Reals& values) {
    if (element.meaning == Meaning::Decimal) {
        convert<Stored>(bytes, values, [&](Stored value) { return columnar::decimalValue(value, element.scale); });
    } else if (element.meaning == Meaning::Date) {
        convert<Stored>(bytes, values, [](Stored value) { return static_cast<double>(value) * secondsPerDay; });
    } else {
        convert<Stored>(bytes, values,
                        [&](Stored value) { return static_cast<double>(value) / element.unitsPerSecond; });
    }
}

template <typename Stored>
void convertIntegers(const SchemaElement& element, Bytes bytes, ColumnType type, Column& column) {
    if (element.meaning == Meaning::Integer && element.isUnsigned && sizeof(Stored) == 4) {
        convertNumbers<std::uint32_t>(bytes, type, column);
    } else if (element.meaning == Meaning::Integer && element.isUnsigned && type == ColumnType::Real) {
        convertNumbers<std::uint64_t>(bytes, type, column);
    } else if (element.meaning == Meaning::None || element.meaning == Meaning::Integer) {
        convertNumbers<Stored>(bytes, type, column);
    } else {
        convertScaled<Stored>(element, bytes, column.values.emplace<Column::Reals>());
    }
}

/// Nanoseconds of the day, and the Julian day number.
double secondsOf(Bytes int96) {
    constexpr double nanos = 1e9;
    constexpr double dayOf1970 = 2440588.0;
    const auto day = littleEndian<std::int32_t>(int96.data() + 8);
    return (day - dayOf1970) * secondsPerDay + static_cast<double>(littleEndian<std::int64_t>(int96.data())) / nanos;
}

std::string hexadecimal(Bytes bytes) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    text.reserve(2 * bytes.size());
    for (const std::uint8_t byte : bytes) {
        text += digits[byte >> 4U];
        text += digits[byte & 0xFU];
    }
    return text;
}

std::string uuid(Bytes bytes) {
    std::string text = hexadecimal(bytes);
    for (const std::size_t position : {20U, 16U, 12U, 8U}) {
        text.insert(position, "-");
    }
    return text;
}

/// Applies a function to the bytes of each value.
template <typename Values, typename Convert>
void convertBytes(Bytes bytes, std::size_t width, Values& values, Convert convertOne) {
    values.reserve(bytes.size() / width);
    for (std::size_t at = 0; at < bytes.size(); at += width) {
        values.push_back(convertOne(bytes.subspan(at, width)));
    }
}

void convertFixedBytes(const SchemaElement& element, Bytes bytes, Column& column) {
    const auto width = static_cast<std::size_t>(element.typeLength);
    if (element.meaning == Meaning::Decimal) {
        convertBytes(bytes, width, column.values.emplace<Column::Reals>(),
                     [&](Bytes value) { return columnar::decimalValue(value, element.scale); });
    } else if (element.meaning == Meaning::Float16) {
        convertBytes(bytes, width, column.values.emplace<Column::Reals>(),
                     [](Bytes value) { return columnar::halfValue(littleEndian<std::uint16_t>(value.data())); });
    } else {
        convertBytes(bytes, width, column.values.emplace<Column::Texts>(),
                     [&](Bytes value) { return element.meaning == Meaning::Uuid ? uuid(value) : hexadecimal(value); });
    }
}

Column fixedColumn(const SchemaElement& element, Bytes bytes, ColumnType type) {
    Column column;
    switch (*element.type) {
        case Physical::Int32:
            convertIntegers<std::int32_t>(element, bytes, type, column);
            break;
        case Physical::Int64:
            convertIntegers<std::int64_t>(element, bytes, type, column);
            break;
        case Physical::Float:
            convertNumbers<float>(bytes, ColumnType::Real, column);
            break;
        case Physical::Double:
            convertNumbers<double>(bytes, ColumnType::Real, column);
            break;
        case Physical::Int96:
            convertBytes(bytes, widthOf(element), column.values.emplace<Column::Reals>(), secondsOf);
            break;
        default:
            convertFixedBytes(element, bytes, column);
    }
    return column;
}

Column textColumn(const SchemaElement& element, const TextValues& texts) {
    Column column;
    if (element.meaning == Meaning::Decimal) {
        auto& values = column.values.emplace<Column::Reals>();
        for (const std::string_view text : texts.views) {
            const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
            values.push_back(columnar::decimalValue(Bytes(bytes, text.size()), element.scale));
        }
        return column;
    }
    auto& values = column.values.emplace<Column::Texts>();
    values.reserve(texts.views.size());
    for (const std::string_view text : texts.views) {
        values.push_back(isUtf8(text) ? std::string(text) : toUtf8(text));
    }
    return column;
}

Column booleanColumn(std::vector<std::uint8_t>&& booleans, ColumnType type) {
    Column column;
    if (type == ColumnType::Real) {
        column.values = Column::Reals(booleans.begin(), booleans.end());
    } else {
        column.values = std::move(booleans);
    }
    return column;
}

/// A short page may repeat a long text very often.
void checkTexts(const Column& dictionary, const std::vector<std::uint32_t>& positions) {
    constexpr std::size_t maxBytes = std::size_t{1} << 30U;
    std::size_t total = 0;
    for (const std::uint32_t position : positions) {
        total += dictionary.texts()[position].size();
    }
    if (total > maxBytes) {
        throw Failure("a page has more than a gigabyte of texts");
    }
}

}  // namespace

Column decodeValues(const Leaf& leaf, Encoding encoding, Bytes bytes, std::size_t count, ColumnType type) {
    const SchemaElement& element = leaf.element;
    if (element.meaning == Meaning::Null) {
        Column column;
        column.values = Column::Reals(count, std::numeric_limits<double>::quiet_NaN());
        return column;
    }
    if (element.type == Physical::Boolean) {
        return booleanColumn(decodeBooleans(encoding, bytes, count), type);
    }
    if (element.type == Physical::ByteArray) {
        return textColumn(element, decodeTexts(encoding, bytes, count));
    }
    const FixedValues values = decodeFixed(*element.type, widthOf(element), encoding, bytes, count);
    return fixedColumn(element, values.bytes, type);
}

Column decodePositions(const Column& dictionary, Bytes bytes, std::size_t count) {
    constexpr unsigned maxWidth = 32;
    Column column = columnar::emptyColumn(dictionary.type(), false);
    if (count == 0) {
        return column;
    }
    if (bytes.empty() || bytes[0] > maxWidth) {
        throw Failure("the positions in a dictionary have an impossible width");
    }
    std::vector<std::uint32_t> positions(count);
    BitRuns(bytes.subspan(1), bytes[0]).read<std::uint32_t>(positions);
    const std::size_t size = dictionary.valueCount();
    if (*std::max_element(positions.begin(), positions.end()) >= size) {
        throw Failure(fmt::format("a value is beyond the end of the dictionary, which has {} values", size));
    }
    if (dictionary.type() == ColumnType::Text) {
        checkTexts(dictionary, positions);
    }
    std::visit(
        [&](auto& values) {
            const auto& from = std::get<std::remove_reference_t<decltype(values)>>(dictionary.values);
            values.reserve(count);
            for (const std::uint32_t position : positions) {
                values.push_back(from[position]);
            }
        },
        column.values);
    return column;
}

}  // namespace velmorak::parquet
