#include "numpy/ZipArchive.h"

#include <velmorak/Failure.h>

#include <zlib.h>

#include <algorithm>
#include <array>
#include <utility>

namespace velmorak::numpy {
namespace {

constexpr std::uint64_t endBytes = 22;
constexpr std::uint64_t maxCommentBytes = 65535;
constexpr std::uint64_t locatorBytes = 20;
constexpr std::uint64_t end64Bytes = 56;
constexpr std::uint64_t entryBytes = 46;
constexpr std::uint64_t localBytes = 30;
constexpr std::uint64_t maxDirectoryBytes = std::uint64_t{1} << 30U;
constexpr std::uint32_t in64Bits = 0xFFFFFFFFU;

[[noreturn]] void fail(const PlainFile& file, const std::string& reason) {
    throw Failure(file.path().string() + " is a damaged archive: " + reason);
}

/// Little-endian numbers in bytes of the archive.
class Fields {
public:
    Fields(const PlainFile& file, std::uint64_t position, std::uint64_t count);

    std::uint64_t number(std::uint64_t at, std::size_t size) const;
    std::uint16_t u16(std::uint64_t at) const { return static_cast<std::uint16_t>(number(at, 2)); }
    std::uint32_t u32(std::uint64_t at) const { return static_cast<std::uint32_t>(number(at, 4)); }
    std::uint64_t u64(std::uint64_t at) const { return number(at, 8); }
    std::string text(std::uint64_t at, std::uint64_t size) const;
    std::uint64_t size() const { return bytes.size(); }
    const std::string& all() const { return bytes; }

private:
    void check(std::uint64_t at, std::uint64_t size) const;

    const PlainFile& file;
    std::string bytes;
};

Fields::Fields(const PlainFile& file, std::uint64_t position, std::uint64_t count) : file(file) {
    if (position > file.size() || count > file.size() - position) {
        fail(file, "it ends before its list of contents does");
    }
    bytes.resize(count);
    file.read(position, bytes.size(), bytes.data());
}

std::uint64_t Fields::number(std::uint64_t at, std::size_t size) const {
    check(at, size);
    std::uint64_t value = 0;
    for (std::size_t i = size; i > 0; --i) {
        value = value << 8U | static_cast<unsigned char>(bytes[at + i - 1]);
    }
    return value;
}

std::string Fields::text(std::uint64_t at, std::uint64_t size) const {
    check(at, size);
    return bytes.substr(at, size);
}

void Fields::check(std::uint64_t at, std::uint64_t size) const {
    if (at > bytes.size() || size > bytes.size() - at) {
        fail(file, "its list of contents is cut off");
    }
}

struct Directory {
    std::uint64_t position = 0;
    std::uint64_t bytes = 0;
};

Directory directory64(const PlainFile& file, std::uint64_t locator) {
    const Fields pointer(file, locator, locatorBytes);
    if (pointer.text(0, 4) != "PK\x06\x07") {
        fail(file, "the place of its list of contents is missing");
    }
    const Fields end(file, pointer.u64(8), end64Bytes);
    if (end.text(0, 4) != "PK\x06\x06") {
        fail(file, "its list of contents is not where it should be");
    }
    return {end.u64(48), end.u64(40)};
}

Directory directoryOf(const PlainFile& file) {
    const std::uint64_t tail = std::min(file.size(), endBytes + maxCommentBytes);
    const Fields bytes(file, file.size() - tail, tail);
    const std::size_t found = bytes.all().rfind("PK\x05\x06");
    if (found == std::string::npos || bytes.size() - found < endBytes) {
        fail(file, "its list of contents is missing; it was cut off, or is still being written");
    }
    Directory directory{bytes.u32(found + 16), bytes.u32(found + 12)};
    const std::uint64_t end = file.size() - tail + found;
    if ((directory.position == in64Bits || directory.bytes == in64Bits) && end >= locatorBytes) {
        directory = directory64(file, end - locatorBytes);
    }
    if (directory.bytes > maxDirectoryBytes) {
        fail(file, "its list of contents is too long");
    }
    return directory;
}

/// Sizes and position in 64 bits, where the entry has no room for them.
void readExtra(const Fields& list, std::uint64_t at, std::uint64_t end, ZipMember& member) {
    while (at + 4 <= end) {
        const std::uint16_t id = list.u16(at);
        const std::uint64_t next = at + 4 + list.u16(at + 2);
        at += 4;
        for (std::uint64_t* number : {&member.bytes, &member.packedBytes, &member.position}) {
            if (id == 1 && *number == in64Bits && at + 8 <= next) {
                *number = list.u64(at);
                at += 8;
            }
        }
        at = next;
    }
}

/// The packed bytes follow the member's own header, which repeats its name.
void findBytes(const PlainFile& file, ZipMember& member) {
    const Fields local(file, member.position, localBytes);
    if (local.text(0, 4) != "PK\x03\x04") {
        fail(file, "\"" + member.name + "\" is not where it should be");
    }
    member.position += localBytes + local.u16(26) + local.u16(28);
    if (member.position > file.size() || member.packedBytes > file.size() - member.position) {
        fail(file, "\"" + member.name + "\" is cut off");
    }
}

ZipMember memberAt(const PlainFile& file, const Fields& list, std::uint64_t at) {
    constexpr std::uint16_t encrypted = 1;
    constexpr std::uint16_t deflated = 8;
    ZipMember member{.name = list.text(at + entryBytes, list.u16(at + 28)),
                     .position = list.u32(at + 42),
                     .packedBytes = list.u32(at + 20),
                     .bytes = list.u32(at + 24),
                     .checksum = list.u32(at + 16),
                     .isDeflated = list.u16(at + 10) == deflated};
    const std::uint64_t extra = at + entryBytes + list.u16(at + 28);
    readExtra(list, extra, extra + list.u16(at + 30), member);
    if ((list.u16(at + 8) & encrypted) != 0 || (list.u16(at + 10) != 0 && !member.isDeflated)) {
        throw Failure(file.path().string() + ": \"" + member.name +
                      "\" is encrypted or packed by another method than deflate, and cannot be read");
    }
    findBytes(file, member);
    if (!member.isDeflated && member.bytes != member.packedBytes) {
        fail(file, "\"" + member.name + "\" has two different sizes");
    }
    return member;
}

}  // namespace

std::vector<ZipMember> zipMembers(const PlainFile& file) {
    const Directory directory = directoryOf(file);
    const Fields list(file, directory.position, directory.bytes);
    std::vector<ZipMember> members;
    for (std::uint64_t at = 0; at < list.size();) {
        if (list.text(at, 4) != "PK\x01\x02") {
            break;  // A signature of the list may follow it.
        }
        members.push_back(memberAt(file, list, at));
        at += entryBytes + list.u16(at + 28) + list.u16(at + 30) + list.u16(at + 32);
    }
    return members;
}

struct MemberStream::Impl {
    Impl(const PlainFile& file, ZipMember member);
    ~Impl();
    Impl(const Impl&) = delete;
    Impl& operator=(const Impl&) = delete;

    void copy(std::size_t count, char* target);
    void unpack(std::size_t count, char* target);
    void refill();
    [[noreturn]] void failHere() const;

    const PlainFile& file;
    ZipMember member;
    z_stream state{};
    std::array<char, 65536> packed{};
    std::uint64_t taken = 0;  ///< Packed bytes that were read.
    std::uint64_t done = 0;   ///< Bytes that were returned.
    uLong sum = crc32(0, nullptr, 0);
};

MemberStream::Impl::Impl(const PlainFile& file, ZipMember member) : file(file), member(std::move(member)) {
    if (this->member.isDeflated && inflateInit2(&state, -MAX_WBITS) != Z_OK) {
        throw Failure("there is too little memory to unpack " + file.path().string());
    }
}

MemberStream::Impl::~Impl() {
    if (member.isDeflated) {
        inflateEnd(&state);
    }
}

void MemberStream::Impl::failHere() const {
    fail(file, "\"" + member.name + "\" is damaged after " + std::to_string(done) + " bytes");
}

void MemberStream::Impl::copy(std::size_t count, char* target) {
    file.read(member.position + done, count, target);
}

void MemberStream::Impl::refill() {
    const std::size_t count = std::min<std::uint64_t>(packed.size(), member.packedBytes - taken);
    if (count == 0) {
        failHere();
    }
    file.read(member.position + taken, count, packed.data());
    taken += count;
    state.next_in = reinterpret_cast<Bytef*>(packed.data());
    state.avail_in = static_cast<uInt>(count);
}

void MemberStream::Impl::unpack(std::size_t count, char* target) {
    state.next_out = reinterpret_cast<Bytef*>(target);
    state.avail_out = static_cast<uInt>(count);
    while (state.avail_out > 0) {
        if (state.avail_in == 0) {
            refill();
        }
        const int result = inflate(&state, Z_NO_FLUSH);
        if (result != Z_OK && (result != Z_STREAM_END || state.avail_out > 0)) {
            failHere();
        }
    }
}

MemberStream::MemberStream(const PlainFile& file, ZipMember member)
    : part(std::make_unique<Impl>(file, std::move(member))) {}

MemberStream::~MemberStream() = default;

void MemberStream::read(std::size_t count, char* target) {
    if (count > part->member.bytes - part->done) {
        part->failHere();
    }
    constexpr std::size_t maxPiece = std::size_t{1} << 30U;
    while (count > 0) {
        const std::size_t piece = std::min(count, maxPiece);
        if (part->member.isDeflated) {
            part->unpack(piece, target);
        } else {
            part->copy(piece, target);
        }
        part->sum = crc32(part->sum, reinterpret_cast<const Bytef*>(target), static_cast<uInt>(piece));
        part->done += piece;
        target += piece;
        count -= piece;
    }
    if (part->done == part->member.bytes && part->sum != part->member.checksum) {
        fail(part->file, "the checksum of \"" + part->member.name + "\" is wrong");
    }
}

void MemberStream::skip(std::uint64_t count) {
    std::array<char, 65536> rest{};
    while (count > 0) {
        const std::size_t piece = std::min<std::uint64_t>(rest.size(), count);
        read(piece, rest.data());
        count -= piece;
    }
}

}  // namespace velmorak::numpy
