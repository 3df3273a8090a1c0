#include "numpy/write/ArrayOutput.h"

#include "numpy/ArrayHeader.h"
#include "numpy/write/ZipOutput.h"

#include <velmorak/Failure.h>
#include <velmorak/Text.h>
#include <velmorak/Utf8.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <ostream>
#include <utility>

namespace velmorak::numpy {
namespace {

/// NumPy gives each text of an array the room of the longest.
constexpr std::uint64_t maxCharacters = 65536;

/// How the values of a column are stored.
struct Stored {
    std::string code;  ///< As NumPy writes it: "<f8".
    std::size_t bytes = 8;
};

Stored storedAs(const ColumnInfo& info, const ColumnExtent& extent) {
    const std::string order = std::endian::native == std::endian::little ? "<" : ">";
    switch (info.type) {
        case ColumnType::Real:
            return {order + "f8", 8};
        case ColumnType::Integer:
            return {order + "i8", 8};
        case ColumnType::Boolean:
            return {"|b1", 1};
        default:
            break;
    }
    if (extent.characters > maxCharacters) {
        throw Failure("a text of the column " + velmorak::quoted(info.name) + " has " +
                      std::to_string(extent.characters) + " characters; an array would give all others as much room");
    }
    const std::uint64_t characters = std::max<std::uint64_t>(extent.characters, 1);
    return {order + "U" + std::to_string(characters), 4 * characters};
}

/// A text as Python writes it.
std::string literalOf(const std::string& text) {
    constexpr const char* digits = "0123456789abcdef";
    std::string literal = "'";
    for (const char c : text) {
        const auto code = static_cast<unsigned char>(c);
        if (code < 0x20) {
            literal += {'\\', 'x', digits[code >> 4U], digits[code & 15U]};
            continue;
        }
        literal += c == '\'' || c == '\\' ? "\\" : "";
        literal += c;
    }
    return literal + "'";
}

/// @param type of the elements as Python writes it.
std::string headerWith(const std::string& type, std::uint64_t rows) {
    std::string text = "{'descr': " + type + ", 'fortran_order': False, 'shape': (" + std::to_string(rows) + ",), }";
    const bool isPlain = std::all_of(text.begin(), text.end(), [](char c) { return (c & 0x80) == 0; });
    constexpr std::size_t alignment = 64;
    constexpr std::size_t shortPrefix = 10;
    constexpr std::size_t maxShort = 65535;
    const bool isShort = isPlain && text.size() + alignment < maxShort;
    const std::size_t prefix = isShort ? shortPrefix : prefixBytes;
    text.resize((prefix + text.size() + alignment) / alignment * alignment - prefix - 1, ' ');
    text += '\n';
    std::string header(arraySignature);
    header += static_cast<char>(isShort ? 1 : isPlain ? 2 : 3);
    header += '\0';
    for (std::size_t shift = 0; header.size() < prefix; shift += 8) {
        header += static_cast<char>(text.size() >> shift & 0xFFU);
    }
    return header + text;
}

void storeText(const std::string& text, std::size_t bytes, char* target) {
    std::memset(target, 0, bytes);
    for (std::string_view rest = text; !rest.empty() && bytes > 0; bytes -= 4, target += 4) {
        const std::size_t length = characterBytes(rest);
        const char32_t code =
            length == 0 ? static_cast<unsigned char>(rest.front()) : codePointOf(rest.substr(0, length));
        std::memcpy(target, &code, sizeof(code));
        rest.remove_prefix(std::max<std::size_t>(length, 1));
    }
}

/// Stores the values one after the other.
/// @param stride bytes from one to the next.
void store(const Column& column, const Stored& stored, std::size_t stride, char* target) {
    std::visit(
        [&](const auto& values) {
            for (const auto& value : values) {
                if constexpr (std::is_same_v<std::decay_t<decltype(value)>, std::string>) {
                    storeText(value, stored.bytes, target);
                } else {
                    std::memcpy(target, &value, sizeof(value));
                }
                target += stride;
            }
        },
        column.values);
}

void checkStop(const RunContext& context) {
    if (context.isStopping()) {
        throw Stopped();
    }
}

/// A field of the records.
struct WrittenField {
    Stored stored;
    std::size_t offset = 0;
    std::size_t count = 1;  ///< Of its values.
};

/// @return number of values in each list of the column.
std::size_t listLength(const ColumnInfo& info, const ColumnExtent& extent, std::uint64_t rows) {
    if (rows == 0) {
        return 1;
    }
    if (extent.shortestList != extent.longestList || extent.longestList == 0) {
        throw Failure("the lists of the column " + velmorak::quoted(info.name) + " have " +
                      std::to_string(extent.shortestList) + " to " + std::to_string(extent.longestList) +
                      " values; in an array of records (.npy) all must have the same number, at least one; write an "
                      "archive (.npz)");
    }
    return extent.longestList;
}

std::vector<WrittenField> fieldsOf(const RowStore& rows) {
    std::vector<WrittenField> fields;
    std::size_t offset = 0;
    for (std::size_t i = 0; i < rows.schema().size(); ++i) {
        const ColumnInfo& info = rows.schema()[i];
        const std::size_t count = info.isList ? listLength(info, rows.extent(i), rows.rows()) : 1;
        fields.push_back({storedAs(info, rows.extent(i)), offset, count});
        offset += count * fields.back().stored.bytes;
    }
    return fields;
}

std::string typeOf(const Schema& schema, const std::vector<WrittenField>& fields) {
    std::string type = "[";
    for (std::size_t i = 0; i < fields.size(); ++i) {
        type += (i == 0 ? "(" : ", (") + literalOf(schema[i].name) + ", '" + fields[i].stored.code + "'";
        type += schema[i].isList ? ", (" + std::to_string(fields[i].count) + ",))" : ")";
    }
    return type + "]";
}

/// @param bytes of a record.
void storeField(const Column& column, const WrittenField& field, std::size_t bytes, char* first) {
    if (!column.isList()) {
        store(column, field.stored, bytes, first);
        return;
    }
    std::string packed(column.valueCount() * field.stored.bytes, '\0');
    store(column, field.stored, field.stored.bytes, packed.data());
    const std::size_t length = field.count * field.stored.bytes;
    for (std::size_t from = 0; from < packed.size(); from += length, first += bytes) {
        std::memcpy(first, packed.data() + from, length);
    }
}

/// Writes an array with the values of a column.
void writeValues(RowStore& rows, std::size_t column, ZipOutput& zip, const RunContext& context) {
    const Stored stored = storedAs(rows.schema()[column], rows.extent(column));
    const std::string header = headerWith("'" + stored.code + "'", rows.extent(column).values);
    zip.begin(rows.schema()[column].name + ".npy");
    zip.write(header.data(), header.size());
    for (std::size_t block = 0; block < rows.blocks(); ++block) {
        checkStop(context);
        const Column values = rows.read(block, column);
        std::string packed(values.valueCount() * stored.bytes, '\0');
        store(values, stored, stored.bytes, packed.data());
        zip.write(packed.data(), packed.size());
    }
    zip.end();
}

/// Writes an array that says where the list of each row begins.
void writeOffsets(RowStore& rows, std::size_t column, ZipOutput& zip, const RunContext& context) {
    const Stored stored = storedAs({.name = {}, .type = ColumnType::Integer}, {});
    const std::string header = headerWith("'" + stored.code + "'", rows.rows() + 1);
    zip.begin(rows.schema()[column].name + ".offsets.npy");
    zip.write(header.data(), header.size());
    std::uint64_t end = 0;
    zip.write(reinterpret_cast<const char*>(&end), sizeof(end));
    for (std::size_t block = 0; block < rows.blocks(); ++block) {
        checkStop(context);
        std::vector<std::uint64_t> offsets = rows.read(block, column).offsets;
        std::ranges::for_each(offsets, [&](std::uint64_t& offset) { offset += end; });
        end = offsets.back();
        zip.write(reinterpret_cast<const char*>(offsets.data() + 1), (offsets.size() - 1) * sizeof(end));
    }
    zip.end();
}

}  // namespace

void writeRecords(RowStore& rows, std::ostream& out, const RunContext& context) {
    const std::vector<WrittenField> fields = fieldsOf(rows);
    const std::size_t bytes = fields.back().offset + fields.back().count * fields.back().stored.bytes;
    const std::string header = headerWith(typeOf(rows.schema(), fields), rows.rows());
    out.write(header.data(), static_cast<std::streamsize>(header.size()));
    for (std::size_t block = 0; block < rows.blocks(); ++block) {
        checkStop(context);
        std::string records(rows.rowsIn(block) * bytes, '\0');
        for (std::size_t i = 0; i < fields.size(); ++i) {
            storeField(rows.read(block, i), fields[i], bytes, records.data() + fields[i].offset);
        }
        out.write(records.data(), static_cast<std::streamsize>(records.size()));
    }
}

void writeArchive(RowStore& rows, std::ostream& out, bool deflates, const RunContext& context) {
    ZipOutput zip(out, deflates);
    for (std::size_t i = 0; i < rows.schema().size(); ++i) {
        const ColumnInfo& info = rows.schema()[i];
        writeValues(rows, i, zip, context);
        if (info.isList) {
            writeOffsets(rows, i, zip, context);
        }
    }
    zip.finish();
}

}  // namespace velmorak::numpy
