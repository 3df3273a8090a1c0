#include "parquet/write/EncodedColumn.h"

#include "parquet/PageHeader.h"
#include "parquet/write/BitWriter.h"
#include "parquet/write/ThriftWriter.h"

#include <velmorak/Failure.h>

#include <zlib.h>
#include <zstd.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <span>
#include <type_traits>
#include <unordered_map>

namespace velmorak::parquet {
namespace {

template <typename Number>
void appendLittleEndian(std::string& bytes, Number value) {
    auto raw = std::bit_cast<std::array<char, sizeof(Number)>>(value);
    if constexpr (std::endian::native == std::endian::big) {
        std::reverse(raw.begin(), raw.end());
    }
    bytes.append(raw.data(), raw.size());
}

void appendValue(std::string& bytes, const std::string& value) {
    appendLittleEndian(bytes, static_cast<std::uint32_t>(value.size()));
    bytes += value;
}

template <typename Number>
void appendValue(std::string& bytes, Number value) {
    appendLittleEndian(bytes, value);
}

template <typename Value>
void appendPlain(std::string& bytes, std::span<const Value> values) {
    for (const Value& value : values) {
        appendValue(bytes, value);
    }
}

/// Booleans: eight in a byte, the first one lowest.
void appendPlain(std::string& bytes, std::span<const std::uint8_t> values) {
    for (std::size_t i = 0; i < values.size(); i += 8) {
        unsigned byte = 0;
        for (std::size_t bit = 0; bit < std::min<std::size_t>(8, values.size() - i); ++bit) {
            byte |= (values[i + bit] != 0 ? 1U : 0U) << bit;
        }
        bytes += static_cast<char>(byte);
    }
}

std::size_t plainBytes(const std::string& value) {
    return value.size() + sizeof(std::uint32_t);
}

template <typename Number>
std::size_t plainBytes(Number /*value*/) {
    return sizeof(Number);
}

/// Reals are distinguished by their bits: 0 and -0 differ, and each NaN keeps its own.
std::uint64_t keyOf(double value) {
    return std::bit_cast<std::uint64_t>(value);
}
std::int64_t keyOf(std::int64_t value) {
    return value;
}
const std::string& keyOf(const std::string& value) {
    return value;
}

/// The different values of a column in the order in which they first appear, and the position of each value in them.
template <typename Value>
struct Dictionary {
    std::vector<Value> values;
    std::vector<std::uint32_t> positions;

    unsigned width() const { return std::max(1U, static_cast<unsigned>(std::bit_width(values.size() - 1))); }
};

/// @return no values if a dictionary does not pay.
template <typename Value>
Dictionary<Value> dictionaryOf(std::span<const Value> values) {
    constexpr std::size_t maxValues = 65536;
    constexpr std::size_t sample = 2048;
    using Key = std::decay_t<decltype(keyOf(values[0]))>;
    Dictionary<Value> found;
    std::unordered_map<Key, std::uint32_t> known;
    std::size_t plain = 0;
    std::size_t own = 0;
    for (std::size_t i = 0; i < values.size(); ++i) {
        const auto [place, isNew] = known.try_emplace(keyOf(values[i]), static_cast<std::uint32_t>(known.size()));
        plain += plainBytes(values[i]);
        if (isNew) {
            own += plainBytes(values[i]);
            found.values.push_back(values[i]);
        }
        found.positions.push_back(place->second);
        if (known.size() > maxValues || (i == sample && known.size() > sample / 2)) {
            return {};
        }
    }
    if (values.empty() || own + found.positions.size() * found.width() / 8 > plain / 2) {
        return {};
    }
    return found;
}

/// What a page holds, without its header.
struct PageContent {
    std::string bytes;
    std::size_t values = 0;
    Encoding encoding = Encoding::Plain;
};

std::string packed(const std::string& bytes) {
    std::string target(ZSTD_compressBound(bytes.size()), '\0');
    const std::size_t size =
        ZSTD_compress(target.data(), target.size(), bytes.data(), bytes.size(), ZSTD_CLEVEL_DEFAULT);
    if (ZSTD_isError(size) != 0U) {
        throw Failure(std::string("cannot compress a page: ") + ZSTD_getErrorName(size));
    }
    target.resize(size);
    return target;
}

/// @return the page's bytes in the file.
std::size_t appendPage(const PageContent& page, bool isDictionary, EncodedColumn& target) {
    const std::string content = packed(page.bytes);
    const auto* bytes = reinterpret_cast<const unsigned char*>(content.data());
    ThriftWriter header;
    header.integer(1, static_cast<std::int32_t>(isDictionary ? PageHeader::Type::Dictionary : PageHeader::Type::Data));
    header.integer(2, static_cast<std::int32_t>(page.bytes.size()));
    header.integer(3, static_cast<std::int32_t>(content.size()));
    header.integer(4, static_cast<std::int32_t>(crc32_z(0, bytes, content.size())));
    header.structure(isDictionary ? 7 : 5);
    header.integer(1, static_cast<std::int32_t>(page.values));
    header.integer(2, static_cast<std::int32_t>(page.encoding));
    if (!isDictionary) {
        header.integer(3, static_cast<std::int32_t>(Encoding::Rle));
        header.integer(4, static_cast<std::int32_t>(Encoding::Rle));
    }
    header.end();
    header.end();
    target.bytes += header.written() + content;
    target.unpackedBytes += header.written().size() + page.bytes.size();
    return header.written().size() + content.size();
}

/// Levels of the rows of a page: a value that begins no row repeats, an empty list has no value.
struct Levels {
    std::vector<std::uint8_t> repetitions;
    std::vector<std::uint8_t> definitions;
};

Levels levelsOf(const Column& column, std::size_t first, std::size_t last) {
    Levels levels;
    for (std::size_t row = first; row < last; ++row) {
        const std::uint64_t count = column.offsets[row + 1] - column.offsets[row];
        for (std::uint64_t i = 0; i < std::max<std::uint64_t>(count, 1); ++i) {
            levels.repetitions.push_back(i > 0 ? 1 : 0);
            levels.definitions.push_back(count > 0 ? 1 : 0);
        }
    }
    return levels;
}

void appendLevels(const std::vector<std::uint8_t>& levels, std::string& bytes) {
    std::string runs;
    appendPacked<std::uint8_t>(runs, 1, levels);
    appendValue(bytes, runs);
}

template <typename Value>
class ColumnEncoder {
public:
    ColumnEncoder(const Column& column, std::span<const Value> values) : column(column), values(values) {}

    EncodedColumn encode(std::size_t rows);

private:
    void appendRows(std::size_t first, std::size_t last, EncodedColumn& target) const;
    void appendDictionary(EncodedColumn& target) const;
    void addLimits(EncodedColumn& target) const;

    const Column& column;
    std::span<const Value> values;
    Dictionary<Value> dictionary;
};

template <typename Value>
EncodedColumn ColumnEncoder<Value>::encode(std::size_t rows) {
    EncodedColumn target;
    if constexpr (!std::is_same_v<Value, std::uint8_t>) {
        dictionary = dictionaryOf(values);
    }
    if (!dictionary.values.empty()) {
        appendDictionary(target);
    }
    for (std::size_t first = 0; first < rows; first += pageRows) {
        appendRows(first, std::min(rows, first + pageRows), target);
    }
    addLimits(target);
    return target;
}

template <typename Value>
void ColumnEncoder<Value>::appendDictionary(EncodedColumn& target) const {
    PageContent page{{}, dictionary.values.size(), Encoding::Plain};
    appendPlain(page.bytes, std::span<const Value>(dictionary.values));
    target.dictionaryBytes = appendPage(page, true, target);
}

template <typename Value>
void ColumnEncoder<Value>::appendRows(std::size_t first, std::size_t last, EncodedColumn& target) const {
    PageContent page;
    page.values = last - first;
    if (column.isList()) {
        const Levels levels = levelsOf(column, first, last);
        appendLevels(levels.repetitions, page.bytes);
        appendLevels(levels.definitions, page.bytes);
        page.values = levels.repetitions.size();
        target.empty += std::count(levels.definitions.begin(), levels.definitions.end(), 0);
        first = column.offsets[first];
        last = column.offsets[last];
    }
    if (dictionary.values.empty()) {
        appendPlain(page.bytes, values.subspan(first, last - first));
    } else {
        page.encoding = Encoding::RleDictionary;
        page.bytes += static_cast<char>(dictionary.width());
        appendPacked<std::uint32_t>(page.bytes, dictionary.width(),
                                    std::span(dictionary.positions).subspan(first, last - first));
    }
    target.values += static_cast<std::int64_t>(page.values);
    appendPage(page, false, target);
}

std::string limitText(double value) {
    std::string bytes;
    appendLittleEndian(bytes, value);
    return bytes;
}
std::string limitText(std::int64_t value) {
    std::string bytes;
    appendLittleEndian(bytes, value);
    return bytes;
}
std::string limitText(std::uint8_t value) {
    return {value != 0 ? '\1' : '\0'};
}
std::string limitText(const std::string& value) {
    return value;
}

template <typename Value>
bool isOrdered(const Value& value) {
    if constexpr (std::is_same_v<Value, double>) {
        return !std::isnan(value);
    }
    return true;
}

/// NaN is in no order. A limit of zero has the sign that excludes neither zero.
template <typename Value>
void ColumnEncoder<Value>::addLimits(EncodedColumn& target) const {
    constexpr std::size_t maxBytes = 64;
    const Value* low = nullptr;
    const Value* high = nullptr;
    for (const Value& value : values) {
        if (isOrdered(value)) {
            low = !low || value < *low ? &value : low;
            high = !high || *high < value ? &value : high;
        }
    }
    if (!low) {
        return;
    }
    if constexpr (std::is_same_v<Value, double>) {
        target.low = limitText(*low == 0.0 ? -0.0 : *low);
        target.high = limitText(*high == 0.0 ? 0.0 : *high);
    } else {
        target.low = limitText(*low);
        target.high = limitText(*high);
    }
    if (target.low->size() > maxBytes || target.high->size() > maxBytes) {
        target.low.reset();
        target.high.reset();
    }
}

}  // namespace

EncodedColumn encodeColumn(const Column& column, std::size_t rows) {
    return std::visit(
        [&](const auto& values) {
            using Value = typename std::decay_t<decltype(values)>::value_type;
            return ColumnEncoder<Value>(column, std::span<const Value>(values)).encode(rows);
        },
        column.values);
}

}  // namespace velmorak::parquet
