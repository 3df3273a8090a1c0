#include "shared/RowKeys.h"

#include "shared/TextParts.h"

#include <velmorak/Failure.h>
#include <velmorak/Text.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <utility>

namespace velmorak {

namespace {

constexpr std::uint64_t signBit = std::uint64_t{1} << 63U;
constexpr std::uint64_t lastKey = ~std::uint64_t{0};  ///< Of a missing number; no other has it.

/// Numbers in the order of the values. No value but NaN becomes lastKey, in either direction: the smallest and the
/// largest are infinities, which lie within.
std::uint64_t ordered(double value, bool isDescending) {
    if (std::isnan(value)) {
        return lastKey;
    }
    const auto bits = std::bit_cast<std::uint64_t>(value == 0.0 ? 0.0 : value);
    const std::uint64_t key = (bits & signBit) != 0 ? ~bits : bits | signBit;
    return isDescending ? ~key : key;
}

std::uint64_t ordered(std::int64_t value, bool isDescending) {
    const std::uint64_t key = static_cast<std::uint64_t>(value) ^ signBit;
    return isDescending ? ~key : key;
}

std::uint64_t ordered(std::uint8_t value, bool isDescending) {
    return ordered(static_cast<std::int64_t>(value != 0), isDescending);
}

void appendNumber(std::string& bytes, std::uint64_t key) {
    for (unsigned shift = 64; shift > 0; shift -= 8) {
        bytes += static_cast<char>(key >> (shift - 8));
    }
}

/// A mark that brings empty texts last, the characters, and an end that comes before every character: so that no key is
/// the beginning of another, and a longer text comes after its beginning. A character 0 is followed by 255.
void appendText(std::string& bytes, const std::string& text, bool isDescending) {
    bytes += text.empty() ? '\1' : '\0';
    const std::size_t begin = bytes.size();
    for (const char c : text) {
        bytes += c;
        if (c == '\0') {
            bytes += '\xFF';
        }
    }
    bytes.append(2, '\0');
    if (isDescending) {
        std::transform(bytes.begin() + static_cast<std::ptrdiff_t>(begin), bytes.end(),
                       bytes.begin() + static_cast<std::ptrdiff_t>(begin),
                       [](char c) { return static_cast<char>(~static_cast<unsigned char>(c)); });
    }
}

bool isMissing(double value) {
    return std::isnan(value);
}
bool isMissing(const std::string& value) {
    return value.empty();
}
template <typename Other>
bool isMissing(const Other&) {
    return false;
}

void appendKey(std::string& bytes, const Column& column, std::size_t row, bool isDescending) {
    std::visit(
        [&](const auto& values) {
            if constexpr (std::is_same_v<std::decay_t<decltype(values)>, Column::Texts>) {
                appendText(bytes, values[row], isDescending);
            } else {
                appendNumber(bytes, ordered(values[row], isDescending));
            }
        },
        column.values);
}

void markMissing(const Column& column, std::vector<std::uint8_t>& missing) {
    std::visit(
        [&](const auto& values) {
            for (std::size_t row = 0; row < missing.size(); ++row) {
                missing[row] |= static_cast<std::uint8_t>(isMissing(values[row]));
            }
        },
        column.values);
}

/// @return the first eight bytes as a number, filled up with zeros.
std::uint64_t prefixOf(std::string_view key) {
    std::uint64_t prefix = 0;
    for (std::size_t i = 0; i < sizeof prefix; ++i) {
        prefix = prefix << 8U | (i < key.size() ? static_cast<unsigned char>(key[i]) : 0U);
    }
    return prefix;
}

KeyOrder orderIn(const std::string& part) {
    const std::string text(trimmed(part));
    for (const bool isDescending : {false, true}) {
        const std::string_view word = isDescending ? "descending" : "ascending";
        if (text.size() <= word.size() || !text.ends_with(word)) {
            continue;
        }
        const std::string before = text.substr(0, text.size() - word.size());
        const bool isWord = std::string(" \t)`").find(before.back()) != std::string::npos;
        if (isWord && !trimmed(before).empty()) {
            return {std::string(trimmed(before)), isDescending};
        }
    }
    return {text, false};
}

/// The key is the only column, which holds no texts: its order is that of one word.
void takeWords(const Column& column, bool isDescending, std::vector<std::uint64_t>& words) {
    std::visit(
        [&](const auto& values) {
            if constexpr (!std::is_same_v<std::decay_t<decltype(values)>, Column::Texts>) {
                std::transform(values.begin(), values.end(), words.begin(),
                               [&](auto value) { return ordered(value, isDescending); });
            }
        },
        column.values);
}

}  // namespace

std::vector<KeyOrder> keyOrdersIn(const std::string& text) {
    std::vector<KeyOrder> orders;
    for (const std::string& part : partsOutsideQuotes(text, "\n;")) {
        if (!trimmed(part).empty()) {
            orders.push_back(orderIn(part));
        }
    }
    return orders;
}

std::string keyOrdersRefusal(const std::string& text) {
    for (const KeyOrder& order : keyOrdersIn(text)) {
        if (std::string reason = expressionRefusal(order.expression); !reason.empty()) {
            return reason;
        }
    }
    return {};
}

std::vector<NamedNumbers::Text> keyTexts(const std::string& input, const std::string& list) {
    std::vector<NamedNumbers::Text> texts;
    for (KeyOrder& order : keyOrdersIn(list)) {
        texts.push_back({input, std::move(order.expression)});
    }
    return texts;
}

std::string RowKeys::whole(std::size_t row) const {
    std::string key;
    appendNumber(key, prefixes[row]);
    key += rest(row);
    return key;
}

RowKeys RowKeys::inOrder(const std::vector<std::uint32_t>& order) const {
    RowKeys some;
    some.rowsWithoutKey = rowsWithoutKey;
    some.prefixes.reserve(order.size());
    if (!isShort()) {
        some.ends.reserve(order.size() + 1);
        some.ends.push_back(0);
    }
    for (const std::uint32_t row : order) {
        some.prefixes.push_back(prefixes[row]);
        if (!isShort()) {
            some.bytes += rest(row);
            some.ends.push_back(some.bytes.size());
        }
    }
    return some;
}

KeyMaker::KeyMaker(const std::string& input, const std::vector<KeyOrder>& orders, const Schema& schema,
                   const std::map<std::string, double>& numbers) {
    for (const KeyOrder& order : orders) {
        Expression expression(order.expression, schema, numbers);
        if (expression.isList()) {
            throw Failure(input, "\"" + order.expression + "\" is a list in each row; expected a single value");
        }
        parts.push_back({std::move(expression), order.isDescending});
    }
}

RowKeys KeyMaker::keysOf(const Chunk& chunk) const {
    RowKeys keys;
    keys.prefixes.resize(chunk.rows);
    std::vector<ColumnPtr> columns;
    columns.reserve(parts.size());
    std::vector<std::uint8_t> missing(chunk.rows, 0);
    for (const KeyPart& part : parts) {
        columns.push_back(part.expression.evaluate(chunk));
        markMissing(*columns.back(), missing);
    }
    keys.rowsWithoutKey = static_cast<std::size_t>(std::count(missing.begin(), missing.end(), 1));
    if (columns.size() == 1 && columns.front()->type() != ColumnType::Text) {
        takeWords(*columns.front(), parts.front().isDescending, keys.prefixes);
    } else {
        takeBytes(columns, chunk.rows, keys);
    }
    return keys;
}

void KeyMaker::takeBytes(const std::vector<ColumnPtr>& columns, std::size_t rows, RowKeys& keys) const {
    keys.ends.push_back(0);
    std::string key;
    for (std::size_t row = 0; row < rows; ++row) {
        key.clear();
        for (std::size_t i = 0; i < parts.size(); ++i) {
            appendKey(key, *columns[i], row, parts[i].isDescending);
        }
        keys.prefixes[row] = prefixOf(key);
        keys.bytes.append(key, std::min(key.size(), sizeof(std::uint64_t)));
        keys.ends.push_back(keys.bytes.size());
    }
}

void KeyMaker::markColumns(std::vector<bool>& needed) const {
    for (const KeyPart& part : parts) {
        part.expression.markColumns(needed);
    }
}

}  // namespace velmorak
