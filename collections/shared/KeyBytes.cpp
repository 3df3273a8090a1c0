#include "shared/KeyBytes.h"

#include "shared/RowGroups.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <utility>

namespace velmorak {

namespace {

constexpr std::uint64_t sign = std::uint64_t{1} << 63U;
constexpr std::size_t wordBytes = 8;

void appendWord(std::string& bytes, std::uint64_t word) {
    for (unsigned shift = 64; shift > 0; shift -= 8) {
        bytes += static_cast<char>((word >> (shift - 8U)) & 0xffU);
    }
}

std::uint64_t ascending(double number) {
    if (std::isnan(number)) {
        return wordOfNan;
    }
    const std::uint64_t word = wordOf(number);
    return (word & sign) != 0 ? ~word : word | sign;
}

double realFrom(std::uint64_t word) {
    if (word == wordOfNan) {
        return std::numeric_limits<double>::quiet_NaN();
    }
    return std::bit_cast<double>((word & sign) != 0 ? word & ~sign : ~word);
}

/// A byte says whether the text is empty. A zero byte is followed by another one that says whether it is the end.
void appendText(std::string& bytes, const std::string& text) {
    bytes += static_cast<char>(text.empty() ? 1 : 0);
    if (text.empty()) {
        return;
    }
    for (const char c : text) {
        bytes += c;
        if (c == '\0') {
            bytes += '\xff';
        }
    }
    bytes.append({'\0', '\1'});
}

[[noreturn]] void refuse() {
    throw std::invalid_argument("the bytes are not those of a key");
}

class KeyReader {
public:
    explicit KeyReader(std::string_view bytes) : bytes(bytes) {}

    std::uint64_t word();
    std::string text();
    void mustBeAtEnd() const;

private:
    char next();

    std::string_view bytes;
};

std::uint64_t KeyReader::word() {
    if (bytes.size() < wordBytes) {
        refuse();
    }
    std::uint64_t word = 0;
    for (std::size_t i = 0; i < wordBytes; ++i) {
        word = (word << 8U) | static_cast<unsigned char>(bytes[i]);
    }
    bytes.remove_prefix(wordBytes);
    return word;
}

void KeyReader::mustBeAtEnd() const {
    if (!bytes.empty()) {
        refuse();
    }
}

char KeyReader::next() {
    if (bytes.empty()) {
        refuse();
    }
    const char c = bytes.front();
    bytes.remove_prefix(1);
    return c;
}

std::string KeyReader::text() {
    if (next() != '\0') {
        return {};
    }
    std::string text;
    while (true) {
        const char c = next();
        if (c == '\0' && next() == '\1') {
            return text;
        }
        text += c;
    }
}

void appendNext(Column& column, KeyReader& reader) {
    switch (column.type()) {
        case ColumnType::Real:
            std::get<Column::Reals>(column.values).push_back(realFrom(reader.word()));
            break;
        case ColumnType::Integer:
            std::get<Column::Integers>(column.values).push_back(static_cast<std::int64_t>(reader.word() ^ sign));
            break;
        case ColumnType::Boolean:
            std::get<Column::Booleans>(column.values).push_back(reader.word() == sign ? 0 : 1);
            break;
        case ColumnType::Text:
            std::get<Column::Texts>(column.values).push_back(reader.text());
            break;
    }
}

Column emptyColumn(ColumnType type) {
    switch (type) {
        case ColumnType::Real:
            return {Column::Reals(), {}};
        case ColumnType::Integer:
            return {Column::Integers(), {}};
        case ColumnType::Boolean:
            return {Column::Booleans(), {}};
        case ColumnType::Text:
            break;
    }
    return {Column::Texts(), {}};
}

}  // namespace

void appendKeyBytes(std::string& bytes, const Column& column, std::size_t row) {
    switch (column.type()) {
        case ColumnType::Real:
            appendWord(bytes, ascending(column.reals()[row]));
            break;
        case ColumnType::Integer:
            appendWord(bytes, static_cast<std::uint64_t>(column.integers()[row]) ^ sign);
            break;
        case ColumnType::Boolean:
            appendWord(bytes, column.booleans()[row] ^ sign);
            break;
        case ColumnType::Text:
            appendText(bytes, column.texts()[row]);
            break;
    }
}

std::string keyBytes(const std::vector<ColumnPtr>& keys, std::size_t row) {
    std::string bytes;
    for (const ColumnPtr& key : keys) {
        appendKeyBytes(bytes, *key, row);
    }
    return bytes;
}

std::vector<std::uint64_t> orderedWords(const Column& column) {
    std::vector<std::uint64_t> words(column.valueCount());
    if (column.type() == ColumnType::Real) {
        std::transform(column.reals().begin(), column.reals().end(), words.begin(), ascending);
    } else if (column.type() == ColumnType::Integer) {
        std::transform(column.integers().begin(), column.integers().end(), words.begin(),
                       [](std::int64_t value) { return static_cast<std::uint64_t>(value) ^ sign; });
    } else {
        std::transform(column.booleans().begin(), column.booleans().end(), words.begin(),
                       [](std::uint8_t value) { return value ^ sign; });
    }
    return words;
}

std::vector<ColumnPtr> columnsOfKeys(const std::vector<ColumnType>& types, const std::vector<std::string>& rows) {
    std::vector<Column> columns;
    columns.reserve(types.size());
    for (const ColumnType type : types) {
        columns.push_back(emptyColumn(type));
    }
    for (const std::string& row : rows) {
        KeyReader reader(row);
        for (Column& column : columns) {
            appendNext(column, reader);
        }
        reader.mustBeAtEnd();
    }
    std::vector<ColumnPtr> made;
    made.reserve(columns.size());
    for (Column& column : columns) {
        made.push_back(std::make_shared<const Column>(std::move(column)));
    }
    return made;
}

}  // namespace velmorak
