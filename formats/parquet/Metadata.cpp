#include "parquet/Metadata.h"

#include "parquet/Thrift.h"

#include <velmorak/Failure.h>

#include <algorithm>
#include <array>

namespace velmorak::parquet {
namespace {

constexpr double millis = 1e3;
constexpr double micros = 1e6;
constexpr double nanos = 1e9;

template <typename Enumeration>
Enumeration checked(std::int64_t value, Enumeration last, const char* what) {
    if (value < 0 || value > static_cast<std::int64_t>(last)) {
        throw Failure(std::string("it has ") + what + " that does not exist");
    }
    return static_cast<Enumeration>(value);
}

/// The older annotation.
void applyConverted(std::int32_t converted, SchemaElement& element) {
    constexpr std::array meanings = {
        Meaning::Text,    Meaning::Map,     Meaning::None,    Meaning::List,      Meaning::Text,      Meaning::Decimal,
        Meaning::Date,    Meaning::Time,    Meaning::Time,    Meaning::Timestamp, Meaning::Timestamp, Meaning::Integer,
        Meaning::Integer, Meaning::Integer, Meaning::Integer, Meaning::Integer,   Meaning::Integer,   Meaning::Integer,
        Meaning::Integer, Meaning::Text,    Meaning::None,    Meaning::Interval};
    constexpr std::int32_t firstUnsigned = 11;
    constexpr std::int32_t lastUnsigned = 14;
    constexpr std::int32_t mapKeyValue = 2;
    if (converted < 0 || static_cast<std::size_t>(converted) >= meanings.size()) {
        return;
    }
    element.meaning = converted == mapKeyValue ? Meaning::Map : meanings[static_cast<std::size_t>(converted)];
    element.isUnsigned = converted >= firstUnsigned && converted <= lastUnsigned;
    element.unitsPerSecond = converted == 7 || converted == 9 ? millis : micros;
}

double readUnit(ThriftReader& reader, ThriftType type) {
    double unit = micros;
    reader.structure(type, [&](int number, ThriftType field) {
        unit = number == 1 ? millis : number == 2 ? micros : nanos;
        reader.skip(field);
    });
    return unit;
}

void readTime(ThriftReader& reader, ThriftType type, SchemaElement& element) {
    reader.structure(type, [&](int number, ThriftType field) {
        if (number == 2) {
            element.unitsPerSecond = readUnit(reader, field);
        } else {
            reader.skip(field);
        }
    });
}

void readInteger(ThriftReader& reader, ThriftType type, SchemaElement& element) {
    reader.structure(type, [&](int number, ThriftType field) {
        if (number == 2) {
            element.isUnsigned = !reader.boolean(field);
        } else {
            reader.skip(field);
        }
    });
}

/// The newer annotation, a union of structures.
void readLogical(ThriftReader& reader, ThriftType type, SchemaElement& element) {
    constexpr std::array meanings = {Meaning::None,      Meaning::Text,    Meaning::Map,     Meaning::List,
                                     Meaning::Text,      Meaning::Decimal, Meaning::Date,    Meaning::Time,
                                     Meaning::Timestamp, Meaning::None,    Meaning::Integer, Meaning::Null,
                                     Meaning::Text,      Meaning::None,    Meaning::Uuid,    Meaning::Float16};
    reader.structure(type, [&](int number, ThriftType field) {
        element.meaning = static_cast<std::size_t>(number) < meanings.size()
                              ? meanings[static_cast<std::size_t>(number)]
                              : Meaning::None;
        if (element.meaning == Meaning::Time || element.meaning == Meaning::Timestamp) {
            readTime(reader, field, element);
        } else if (element.meaning == Meaning::Integer) {
            readInteger(reader, field, element);
        } else {
            reader.skip(field);
        }
    });
}

SchemaElement readElement(ThriftReader& reader, ThriftType type) {
    SchemaElement element;
    reader.structure(type, [&](int number, ThriftType field) {
        switch (number) {
            case 1:
                element.type = checked(reader.integer(field), Physical::FixedBytes, "a type");
                return;
            case 2:
                element.typeLength = reader.smallInteger(field);
                return;
            case 3:
                element.repetition = checked(reader.integer(field), Repetition::Repeated, "a repetition");
                return;
            case 4:
                element.name = reader.text(field);
                return;
            case 5:
                element.children = reader.smallInteger(field);
                return;
            case 6:
                applyConverted(reader.smallInteger(field), element);
                return;
            case 7:
                element.scale = reader.smallInteger(field);
                return;
            case 10:
                readLogical(reader, field, element);
                return;
            default:
                reader.skip(field);
        }
    });
    return element;
}

Statistics readStatistics(ThriftReader& reader, ThriftType type) {
    Statistics statistics;
    reader.structure(type, [&](int number, ThriftType field) {
        switch (number) {
            case 3:
                statistics.nulls = reader.integer(field);
                return;
            case 5:
                statistics.high = reader.text(field);
                return;
            case 6:
                statistics.low = reader.text(field);
                return;
            default:
                reader.skip(field);
        }
    });
    return statistics;
}

void readColumnMetadata(ThriftReader& reader, ThriftType type, ColumnChunk& chunk) {
    reader.structure(type, [&](int number, ThriftType field) {
        switch (number) {
            case 1:
                chunk.type = checked(reader.integer(field), Physical::FixedBytes, "a type");
                return;
            case 4:
                chunk.codec = checked(reader.integer(field), Codec::Lz4Raw, "a compression");
                return;
            case 5:
                chunk.values = reader.integer(field);
                return;
            case 9:
                chunk.dataOffset = reader.integer(field);
                return;
            case 11:
                chunk.dictionaryOffset = reader.integer(field);
                return;
            case 12:
                chunk.statistics = readStatistics(reader, field);
                return;
            default:
                reader.skip(field);
        }
    });
}

ColumnChunk readChunk(ThriftReader& reader, ThriftType type) {
    ColumnChunk chunk;
    bool isHere = false;
    reader.structure(type, [&](int number, ThriftType field) {
        switch (number) {
            case 1:
                chunk.isElsewhere = !reader.binary(field).empty();
                return;
            case 3:
                isHere = true;
                readColumnMetadata(reader, field, chunk);
                return;
            default:
                reader.skip(field);
        }
    });
    chunk.isElsewhere = chunk.isElsewhere || !isHere;
    return chunk;
}

RowGroup readGroup(ThriftReader& reader, ThriftType type) {
    RowGroup group;
    reader.structure(type, [&](int number, ThriftType field) {
        switch (number) {
            case 1:
                reader.list(field, [&](ThriftType each) { group.columns.push_back(readChunk(reader, each)); });
                return;
            case 3:
                group.rows = reader.integer(field);
                return;
            default:
                reader.skip(field);
        }
    });
    return group;
}

std::pair<std::string, std::string> readKeyValue(ThriftReader& reader, ThriftType type) {
    std::pair<std::string, std::string> pair;
    reader.structure(type, [&](int number, ThriftType field) {
        if (number == 1 || number == 2) {
            (number == 1 ? pair.first : pair.second) = reader.text(field);
        } else {
            reader.skip(field);
        }
    });
    return pair;
}

FileMetadata parse(Bytes bytes) {
    FileMetadata metadata;
    ThriftReader reader(bytes);
    reader.structure([&](int number, ThriftType field) {
        switch (number) {
            case 2:
                reader.list(field, [&](ThriftType each) { metadata.schema.push_back(readElement(reader, each)); });
                return;
            case 4:
                reader.list(field, [&](ThriftType each) { metadata.groups.push_back(readGroup(reader, each)); });
                return;
            case 5:
                reader.list(field, [&](ThriftType each) { metadata.keyValues.push_back(readKeyValue(reader, each)); });
                return;
            case 6:
                metadata.createdBy = reader.text(field);
                return;
            case 8:
                throw Failure("it is encrypted, which cannot be read");
            default:
                reader.skip(field);
        }
    });
    return metadata;
}

constexpr std::size_t markBytes = 4;

std::string markAt(const columnar::FileBytes& file, std::uint64_t position) {
    return std::string(columnar::textOf(file.read(position, markBytes).bytes()));
}

}  // namespace

FileMetadata readMetadata(const columnar::FileBytes& file) {
    constexpr std::size_t tailBytes = 8;
    constexpr std::size_t smallest = tailBytes + markBytes;
    if (file.size() < smallest || (markAt(file, 0) != "PAR1" && markAt(file, 0) != "PARE")) {
        throw Failure("it is not a Parquet file, which begins with \"PAR1\"");
    }
    const std::string endMark = markAt(file, file.size() - markBytes);
    if (endMark == "PARE" || markAt(file, 0) == "PARE") {
        throw Failure("it is encrypted, which cannot be read");
    }
    if (endMark != "PAR1") {
        throw Failure("it does not end with \"PAR1\": it was not written to its end, or is cut off");
    }
    const columnar::Block tail = file.read(file.size() - tailBytes, tailBytes);
    const auto length = columnar::littleEndian<std::uint32_t>(tail.bytes().data());
    if (length > file.size() - smallest) {
        throw Failure("its description cannot be as long as it says");
    }
    return parse(file.read(file.size() - tailBytes - length, length).bytes());
}

}  // namespace velmorak::parquet
