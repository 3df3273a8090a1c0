#include "parquet/PageHeader.h"

#include "parquet/Thrift.h"

namespace velmorak::parquet {
namespace {

std::uint32_t count(ThriftReader& reader, ThriftType type) {
    const std::int32_t value = reader.smallInteger(type);
    if (value < 0) {
        throw Failure("the header of a page has a negative size");
    }
    return static_cast<std::uint32_t>(value);
}

Encoding encoding(ThriftReader& reader, ThriftType type) {
    return static_cast<Encoding>(reader.smallInteger(type));
}

void readData(ThriftReader& reader, ThriftType type, PageHeader& header) {
    reader.structure(type, [&](int number, ThriftType field) {
        switch (number) {
            case 1:
                header.values = count(reader, field);
                return;
            case 2:
                header.encoding = encoding(reader, field);
                return;
            case 3:
                header.definitionEncoding = encoding(reader, field);
                return;
            case 4:
                header.repetitionEncoding = encoding(reader, field);
                return;
            default:
                reader.skip(field);
        }
    });
}

void readDictionary(ThriftReader& reader, ThriftType type, PageHeader& header) {
    reader.structure(type, [&](int number, ThriftType field) {
        if (number == 1) {
            header.values = count(reader, field);
        } else if (number == 2) {
            header.encoding = encoding(reader, field);
        } else {
            reader.skip(field);
        }
    });
}

void readDataV2(ThriftReader& reader, ThriftType type, PageHeader& header) {
    reader.structure(type, [&](int number, ThriftType field) {
        switch (number) {
            case 1:
                header.values = count(reader, field);
                return;
            case 3:
                header.rows = count(reader, field);
                return;
            case 4:
                header.encoding = encoding(reader, field);
                return;
            case 5:
                header.definitionBytes = count(reader, field);
                return;
            case 6:
                header.repetitionBytes = count(reader, field);
                return;
            case 7:
                header.isPacked = reader.boolean(field);
                return;
            default:
                reader.skip(field);
        }
    });
}

PageHeader::Type pageType(std::int32_t number) {
    if (number < 0 || number > static_cast<std::int32_t>(PageHeader::Type::DataV2)) {
        throw Failure("a page is of an unknown type");
    }
    return static_cast<PageHeader::Type>(number);
}

}  // namespace

PageHeader readPageHeader(Bytes bytes) {
    PageHeader header;
    ThriftReader reader(bytes);
    reader.structure([&](int number, ThriftType field) {
        switch (number) {
            case 1:
                header.type = pageType(reader.smallInteger(field));
                return;
            case 2:
                header.unpackedBytes = count(reader, field);
                return;
            case 3:
                header.packedBytes = count(reader, field);
                return;
            case 4:
                header.checksum = static_cast<std::uint32_t>(reader.integer(field));
                return;
            case 5:
                readData(reader, field, header);
                return;
            case 7:
                readDictionary(reader, field, header);
                return;
            case 8:
                readDataV2(reader, field, header);
                return;
            default:
                reader.skip(field);
        }
    });
    header.headerBytes = reader.position();
    return header;
}

}  // namespace velmorak::parquet
