#include "root/write/RecordHead.h"

#include "root/write/ByteOutput.h"
#include "root/write/Dates.h"

namespace velmorak::root {

std::size_t RecordHead::bytes() const {
    constexpr std::size_t fixed = 4 + 2 + 4 + 4 + 2 + 2 + 8 + 8;
    return fixed + ByteOutput::bytesOfText(className) + ByteOutput::bytesOfText(name) + ByteOutput::bytesOfText(title) +
           more;
}

std::string RecordHead::written() const {
    constexpr std::uint16_t version = 1004;  // With 64-bit positions.
    constexpr std::size_t maxHeadBytes = 0x7FFF;
    constexpr std::size_t maxBytes = 0x7FFFFFFF;
    if (bytes() > maxHeadBytes || bytes() + writtenBytes > maxBytes || contentBytes > maxBytes) {
        throw Failure("\"" + name.substr(0, 80) + "\" is too large for a record of a ROOT file");
    }
    ByteOutput output;
    output.u32(static_cast<std::uint32_t>(bytes() + writtenBytes));
    output.u16(version);
    output.u32(static_cast<std::uint32_t>(contentBytes));
    output.u32(constantDate);
    output.u16(static_cast<std::uint16_t>(bytes()));
    output.u16(cycle);
    output.u64(position);
    output.u64(directory);
    output.text(className);
    output.text(name);
    output.text(title);
    return output.take();
}

}  // namespace velmorak::root
