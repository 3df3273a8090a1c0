#include "parquet/Thrift.h"

#include <limits>

namespace velmorak::parquet {
namespace {

std::int64_t fromZigzag(std::uint64_t value) {
    return static_cast<std::int64_t>(value >> 1U ^ (0 - (value & 1U)));
}

}  // namespace

void ThriftReader::require(ThriftType type, ThriftType wanted) {
    if (type != wanted) {
        throw Failure("a description holds a value of another type than it should");
    }
}

ThriftType ThriftReader::nextField(int& number) {
    const unsigned head = byte();
    const unsigned step = head >> 4U;
    const auto type = static_cast<ThriftType>(head & 0x0FU);
    if (type == ThriftType::Stop) {
        return type;
    }
    const std::int64_t next = step == 0 ? fromZigzag(varint()) : number + static_cast<std::int64_t>(step);
    if (next < 0 || next > std::numeric_limits<std::int16_t>::max()) {
        throw Failure("a description is damaged");
    }
    number = static_cast<int>(next);
    return type;
}

/// Every element takes a byte or more.
std::uint64_t ThriftReader::listLength(ThriftType& element) {
    const unsigned head = byte();
    element = static_cast<ThriftType>(head & 0x0FU);
    const std::uint64_t length = head >> 4U == 0x0FU ? varint() : head >> 4U;
    if (length > bytes.size() - at) {
        throw EndsEarly();
    }
    return length;
}

std::int64_t ThriftReader::integer(ThriftType type) {
    if (type == ThriftType::Byte) {
        return static_cast<std::int8_t>(byte());
    }
    if (type != ThriftType::Int16 && type != ThriftType::Int32) {
        require(type, ThriftType::Int64);
    }
    return fromZigzag(varint());
}

std::int32_t ThriftReader::smallInteger(ThriftType type) {
    const std::int64_t value = integer(type);
    if (value < std::numeric_limits<std::int32_t>::min() || value > std::numeric_limits<std::int32_t>::max()) {
        throw Failure("a number in a description is too large");
    }
    return static_cast<std::int32_t>(value);
}

bool ThriftReader::boolean(ThriftType type) {
    if (type != ThriftType::False) {
        require(type, ThriftType::True);
    }
    return type == ThriftType::True;
}

std::string_view ThriftReader::binary(ThriftType type) {
    require(type, ThriftType::Binary);
    return columnar::textOf(take(varint()));
}

void ThriftReader::skip(ThriftType type) {
    constexpr std::size_t uuidBytes = 16;
    switch (type) {
        case ThriftType::True:
        case ThriftType::False:
            return;
        case ThriftType::Byte:
            byte();
            return;
        case ThriftType::Int16:
        case ThriftType::Int32:
        case ThriftType::Int64:
            varint();
            return;
        case ThriftType::Double:
            take(sizeof(double));
            return;
        case ThriftType::Binary:
            binary(type);
            return;
        case ThriftType::List:
        case ThriftType::Set:
            list(ThriftType::List, [this](ThriftType element) {
                const bool isBoolean = element == ThriftType::True || element == ThriftType::False;
                skip(isBoolean ? ThriftType::Byte : element);
            });
            return;
        case ThriftType::Map:
            skipMap();
            return;
        case ThriftType::Struct:
            structure([this](int, ThriftType field) { skip(field); });
            return;
        case ThriftType::Uuid:
            take(uuidBytes);
            return;
        case ThriftType::Stop:
            break;
    }
    throw Failure("a description is damaged");
}

void ThriftReader::skipMap() {
    const Nesting nesting(*this);
    const std::uint64_t pairs = varint();
    if (pairs > bytes.size() - at) {
        throw EndsEarly();
    }
    const unsigned types = pairs > 0 ? byte() : 0U;
    for (std::uint64_t i = 0; i < pairs; ++i) {
        skip(static_cast<ThriftType>(types >> 4U));
        skip(static_cast<ThriftType>(types & 0x0FU));
    }
}

std::uint8_t ThriftReader::byte() {
    return take(1)[0];
}

std::uint64_t ThriftReader::varint() {
    constexpr unsigned maxShift = 63;
    std::uint64_t value = 0;
    for (unsigned shift = 0; shift <= maxShift; shift += 7) {
        const std::uint64_t next = byte();
        value |= (next & 0x7FU) << shift;
        if (next < 0x80U) {
            return value;
        }
    }
    throw Failure("a number in a description is too long");
}

Bytes ThriftReader::take(std::uint64_t count) {
    if (count > bytes.size() - at) {
        throw EndsEarly();
    }
    const Bytes taken = bytes.subspan(at, count);
    at += count;
    return taken;
}

}  // namespace velmorak::parquet
