#include "parquet/write/Footer.h"

#include "parquet/write/ThriftWriter.h"

#include <string_view>

namespace velmorak::parquet {
namespace {

constexpr std::int32_t utf8 = 0;
constexpr std::int32_t list = 3;

Physical physicalType(ColumnType type) {
    switch (type) {
        case ColumnType::Real:
            return Physical::Double;
        case ColumnType::Integer:
            return Physical::Int64;
        case ColumnType::Boolean:
            return Physical::Boolean;
        case ColumnType::Text:
            break;
    }
    return Physical::ByteArray;
}

void writeLogicalType(ThriftWriter& writer, int member) {
    writer.structure(10);
    writer.structure(member);
    writer.end();
    writer.end();
}

void writeLeaf(ThriftWriter& writer, std::string_view name, ColumnType type) {
    writer.element();
    writer.integer(1, static_cast<std::int32_t>(physicalType(type)));
    writer.integer(3, static_cast<std::int32_t>(Repetition::Required));
    writer.text(4, name);
    if (type == ColumnType::Text) {
        writer.integer(6, utf8);
        writeLogicalType(writer, 1);
    }
    writer.end();
}

/// A list has three levels: the list, the repeated group, the element.
void writeList(ThriftWriter& writer, const ColumnInfo& column) {
    writer.element();
    writer.integer(3, static_cast<std::int32_t>(Repetition::Required));
    writer.text(4, column.name);
    writer.integer(5, 1);
    writer.integer(6, list);
    writeLogicalType(writer, 3);
    writer.end();
    writer.element();
    writer.integer(3, static_cast<std::int32_t>(Repetition::Repeated));
    writer.text(4, "list");
    writer.integer(5, 1);
    writer.end();
    writeLeaf(writer, "element", column.type);
}

void writeSchema(ThriftWriter& writer, const Schema& schema) {
    std::size_t elements = 1;
    for (const ColumnInfo& column : schema.columns()) {
        elements += column.isList ? 3 : 1;
    }
    writer.list(2, ThriftType::Struct, elements);
    writer.element();
    writer.text(4, "schema");
    writer.integer(5, static_cast<std::int32_t>(schema.size()));
    writer.end();
    for (const ColumnInfo& column : schema.columns()) {
        if (column.isList) {
            writeList(writer, column);
        } else {
            writeLeaf(writer, column.name, column.type);
        }
    }
}

void writePath(ThriftWriter& writer, const ColumnInfo& column) {
    writer.list(3, ThriftType::Binary, column.isList ? 3 : 1);
    writer.element(std::string_view(column.name));
    if (column.isList) {
        writer.element(std::string_view("list"));
        writer.element(std::string_view("element"));
    }
}

void writeEncodings(ThriftWriter& writer, const EncodedColumn& column) {
    const bool hasDictionary = column.dictionaryBytes > 0;
    writer.list(2, ThriftType::Int32, hasDictionary ? 3 : 2);
    writer.element(static_cast<std::int32_t>(Encoding::Plain));
    writer.element(static_cast<std::int32_t>(Encoding::Rle));
    if (hasDictionary) {
        writer.element(static_cast<std::int32_t>(Encoding::RleDictionary));
    }
}

void writeStatistics(ThriftWriter& writer, const EncodedColumn& column) {
    writer.structure(12);
    writer.integer64(3, column.empty);
    if (column.low && column.high) {
        writer.text(5, *column.high);
        writer.text(6, *column.low);
    }
    writer.end();
}

void writeChunk(ThriftWriter& writer, const ColumnInfo& info, const WrittenGroup::Chunk& chunk) {
    const EncodedColumn& column = chunk.column;
    const auto position = static_cast<std::int64_t>(chunk.position);
    writer.element();
    writer.integer64(2, 0);
    writer.structure(3);
    writer.integer(1, static_cast<std::int32_t>(physicalType(info.type)));
    writeEncodings(writer, column);
    writePath(writer, info);
    writer.integer(4, static_cast<std::int32_t>(Codec::Zstd));
    writer.integer64(5, column.values);
    writer.integer64(6, static_cast<std::int64_t>(column.unpackedBytes));
    writer.integer64(7, static_cast<std::int64_t>(chunk.bytes));
    writer.integer64(9, position + static_cast<std::int64_t>(column.dictionaryBytes));
    if (column.dictionaryBytes > 0) {
        writer.integer64(11, position);
    }
    writeStatistics(writer, column);
    writer.end();
    writer.end();
}

void writeGroup(ThriftWriter& writer, const Schema& schema, const WrittenGroup& group) {
    std::size_t bytes = 0;
    writer.element();
    writer.list(1, ThriftType::Struct, group.chunks.size());
    for (std::size_t i = 0; i < group.chunks.size(); ++i) {
        writeChunk(writer, schema[i], group.chunks[i]);
        bytes += group.chunks[i].column.unpackedBytes;
    }
    writer.integer64(2, static_cast<std::int64_t>(bytes));
    writer.integer64(3, static_cast<std::int64_t>(group.rows));
    writer.end();
}

void writeUnits(ThriftWriter& writer, const Schema& schema) {
    std::vector<const ColumnInfo*> known;
    for (const ColumnInfo& column : schema.columns()) {
        if (!column.unit.empty()) {
            known.push_back(&column);
        }
    }
    if (known.empty()) {
        return;
    }
    writer.list(5, ThriftType::Struct, known.size());
    for (const ColumnInfo* column : known) {
        writer.element();
        writer.text(1, "velmorak.unit." + column->name);
        writer.text(2, column->unit);
        writer.end();
    }
}

/// Limits are in the order of the types.
void writeOrders(ThriftWriter& writer, const Schema& schema) {
    writer.list(7, ThriftType::Struct, schema.size());
    for (std::size_t i = 0; i < schema.size(); ++i) {
        writer.element();
        writer.structure(1);
        writer.end();
        writer.end();
    }
}

}  // namespace

std::string footerOf(const Schema& schema, const std::vector<WrittenGroup>& groups) {
    constexpr std::int32_t formatVersion = 2;
    std::size_t rows = 0;
    for (const WrittenGroup& group : groups) {
        rows += group.rows;
    }
    ThriftWriter writer;
    writer.integer(1, formatVersion);
    writeSchema(writer, schema);
    writer.integer64(3, static_cast<std::int64_t>(rows));
    writer.list(4, ThriftType::Struct, groups.size());
    for (const WrittenGroup& group : groups) {
        writeGroup(writer, schema, group);
    }
    writeUnits(writer, schema);
    writer.text(6, "Velmorak");
    writeOrders(writer, schema);
    writer.end();
    std::string footer = writer.written();
    const std::size_t length = footer.size();
    for (unsigned shift = 0; shift < 32; shift += 8) {
        footer += static_cast<char>(length >> shift);
    }
    return footer + "PAR1";
}

}  // namespace velmorak::parquet
