#include "root/container/Record.h"

namespace velmorak::root {
namespace {

constexpr std::uint32_t countMask = 0x40000000;
constexpr std::uint16_t memberWiseMask = 0x4000;
constexpr std::uint32_t isReferenced = 1U << 4U;

}  // namespace

ObjectHeader readHeader(Buffer& buffer, bool hasChecksum) {
    ObjectHeader header;
    const std::size_t begin = buffer.position();
    std::uint16_t version = 0;
    const std::uint32_t first = buffer.remaining() >= 6 ? buffer.u32() : 0;
    if ((first & countMask) != 0) {
        header.end = begin + 4 + (first & ~countMask);
        if (*header.end > buffer.size()) {
            throw Failure("an object extends beyond its record");
        }
        version = buffer.u16();
    } else {
        buffer.seek(begin);
        version = buffer.u16();
    }
    header.isMemberWise = (version & memberWiseMask) != 0;
    header.version = static_cast<std::int16_t>(version & static_cast<std::uint16_t>(~memberWiseMask));
    if (header.version <= 0 && header.end && hasChecksum) {
        header.checksum = buffer.u32();
    }
    return header;
}

ObjectBase readObjectBase(Buffer& buffer) {
    const std::uint16_t version = buffer.u16();
    if ((version & 0x4000U) != 0) {
        buffer.skip(4);  // A byte count comes before the version.
    }
    ObjectBase base;
    base.uniqueId = buffer.u32();
    base.bits = buffer.u32();
    if ((base.bits & isReferenced) != 0) {
        buffer.skip(2);
    }
    return base;
}

NameAndTitle readNamed(Buffer& buffer) {
    const ObjectHeader header = readHeader(buffer);
    readObjectBase(buffer);
    NameAndTitle named{buffer.text(), buffer.text()};
    header.leave(buffer);
    return named;
}

}  // namespace velmorak::root
