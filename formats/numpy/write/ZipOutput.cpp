#include "numpy/write/ZipOutput.h"

#include <velmorak/Failure.h>

#include <zlib.h>

#include <algorithm>
#include <array>
#include <ostream>

namespace velmorak::numpy {
namespace {

constexpr std::uint64_t in64Bits = 0xFFFFFFFFU;
constexpr std::uint64_t version = 45;     ///< Of the first that has 64 bits.
constexpr std::uint64_t firstDay = 0x21;  ///< 1980-01-01, before which the format has no dates.

/// Appends little-endian numbers.
class Fields {
public:
    Fields& text(const std::string& more);
    Fields& number(std::uint64_t value, std::size_t size);

    std::string bytes;
};

Fields& Fields::text(const std::string& more) {
    bytes += more;
    return *this;
}

Fields& Fields::number(std::uint64_t value, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i) {
        bytes += static_cast<char>(value >> (8 * i) & 0xFFU);
    }
    return *this;
}

/// Bit 11 says that the name is in UTF-8.
std::uint64_t flagsFor(const std::string& name) {
    const bool isPlain = std::all_of(name.begin(), name.end(), [](char c) { return (c & 0x80) == 0; });
    return isPlain ? 0 : 0x800;
}

}  // namespace

/// Deflates pieces of a member.
struct ZipOutput::Packer {
    Packer();
    ~Packer() { deflateEnd(&state); }
    Packer(const Packer&) = delete;
    Packer& operator=(const Packer&) = delete;

    std::string pack(const char* bytes, std::size_t count, int flush);

    z_stream state{};
    std::array<char, 65536> buffer{};
};

ZipOutput::Packer::Packer() {
    constexpr int level = 6;
    constexpr int memory = 8;
    if (deflateInit2(&state, level, Z_DEFLATED, -MAX_WBITS, memory, Z_DEFAULT_STRATEGY) != Z_OK) {
        throw Failure("there is too little memory to compress the file");
    }
}

std::string ZipOutput::Packer::pack(const char* bytes, std::size_t count, int flush) {
    std::string packed;
    // zlib does not change what it reads.
    state.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes));  // NOLINT(*-const-cast)
    state.avail_in = static_cast<uInt>(count);
    do {
        state.next_out = reinterpret_cast<Bytef*>(buffer.data());
        state.avail_out = static_cast<uInt>(buffer.size());
        deflate(&state, flush);
        packed.append(buffer.data(), buffer.size() - state.avail_out);
    } while (state.avail_out == 0);
    return packed;
}

ZipOutput::ZipOutput(std::ostream& out, bool deflates) : out(out), deflates(deflates) {}

ZipOutput::~ZipOutput() = default;

void ZipOutput::put(const std::string& bytes) {
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    position += bytes.size();
}

/// Sizes and checksum are known at the end of a member, when its head is written again.
std::string ZipOutput::headOf(const Member& member) const {
    Fields head;
    head.text("PK\x03\x04").number(version, 2).number(flagsFor(member.name), 2).number(deflates ? 8 : 0, 2);
    head.number(0, 2).number(firstDay, 2).number(member.checksum, 4).number(in64Bits, 4).number(in64Bits, 4);
    head.number(member.name.size(), 2).number(20, 2).text(member.name);
    head.number(1, 2).number(16, 2).number(member.bytes, 8).number(member.packedBytes, 8);
    return head.bytes;
}

std::string ZipOutput::entryOf(const Member& member) const {
    Fields entry;
    entry.text("PK\x01\x02").number(version, 2).number(version, 2).number(flagsFor(member.name), 2);
    entry.number(deflates ? 8 : 0, 2).number(0, 2).number(firstDay, 2).number(member.checksum, 4);
    entry.number(in64Bits, 4).number(in64Bits, 4).number(member.name.size(), 2).number(28, 2);
    entry.number(0, 2).number(0, 2).number(0, 2).number(0, 4).number(in64Bits, 4).text(member.name);
    entry.number(1, 2).number(24, 2).number(member.bytes, 8).number(member.packedBytes, 8).number(member.position, 8);
    return entry.bytes;
}

void ZipOutput::begin(const std::string& name) {
    constexpr std::size_t maxNameBytes = 65535;
    if (name.size() > maxNameBytes) {
        throw Failure("the name of the column \"" + name.substr(0, 40) + "...\" is too long for an archive");
    }
    members.push_back(
        {.name = name, .position = position, .checksum = static_cast<std::uint32_t>(crc32(0, nullptr, 0))});
    put(headOf(members.back()));
    packer = deflates ? std::make_unique<Packer>() : nullptr;
}

void ZipOutput::write(const char* bytes, std::size_t count) {
    constexpr std::size_t maxPiece = std::size_t{1} << 30U;
    Member& member = members.back();
    while (count > 0) {
        const std::size_t piece = std::min(count, maxPiece);
        member.checksum = static_cast<std::uint32_t>(
            crc32(member.checksum, reinterpret_cast<const Bytef*>(bytes), static_cast<uInt>(piece)));
        member.bytes += piece;
        if (packer) {
            const std::string packed = packer->pack(bytes, piece, Z_NO_FLUSH);
            member.packedBytes += packed.size();
            put(packed);
        } else {
            member.packedBytes += piece;
            out.write(bytes, static_cast<std::streamsize>(piece));
            position += piece;
        }
        bytes += piece;
        count -= piece;
    }
}

void ZipOutput::end() {
    Member& member = members.back();
    if (packer) {
        const std::string rest = packer->pack(nullptr, 0, Z_FINISH);
        member.packedBytes += rest.size();
        put(rest);
        packer.reset();
    }
    const std::string head = headOf(member);
    out.seekp(static_cast<std::streamoff>(member.position));
    out.write(head.data(), static_cast<std::streamsize>(head.size()));
    out.seekp(static_cast<std::streamoff>(position));
}

void ZipOutput::finish() {
    constexpr std::uint64_t in16Bits = 0xFFFFU;
    const std::uint64_t begin = position;
    for (const Member& member : members) {
        put(entryOf(member));
    }
    const std::uint64_t end = position;
    Fields last;
    last.text("PK\x06\x06").number(44, 8).number(version, 2).number(version, 2).number(0, 4).number(0, 4);
    last.number(members.size(), 8).number(members.size(), 8).number(end - begin, 8).number(begin, 8);
    last.text("PK\x06\x07").number(0, 4).number(end, 8).number(1, 4);
    last.text("PK\x05\x06").number(0, 2).number(0, 2).number(in16Bits, 2).number(in16Bits, 2);
    last.number(in64Bits, 4).number(in64Bits, 4).number(0, 2);
    put(last.bytes);
}

}  // namespace velmorak::numpy
