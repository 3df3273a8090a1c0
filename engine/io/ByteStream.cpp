#include "ByteStream.h"

#include "velmorak/Failure.h"

#include <fmt/format.h>
#include <zlib.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string_view>
#include <system_error>

namespace velmorak::io {

namespace {

constexpr std::size_t packedSize = std::size_t{1} << 16;

bool beginsWith(std::string_view bytes, std::string_view mark) {
    return bytes.substr(0, mark.size()) == mark;
}

bool isXml(std::string_view bytes) {
    if (beginsWith(bytes, "\xFE\xFF") || beginsWith(bytes, "\xFF\xFE"))
        return true;
    if (beginsWith(bytes, "\xEF\xBB\xBF"))
        bytes.remove_prefix(3);
    const auto first = bytes.find_first_not_of(" \t\r\n");
    return first == std::string_view::npos || bytes[first] == '<';
}

std::string_view packingOf(std::string_view bytes) {
    if (beginsWith(bytes, "BZh"))
        return "bzip2";
    if (beginsWith(bytes, "PK\x03\x04"))
        return "zip";
    if (beginsWith(bytes, std::string_view("\x03\x00\x00\x6A", 4)))
        return "WBXML";
    if (beginsWith(bytes,
                   "\xFD"
                   "7zXZ"))
        return "xz";
    const bool isZlib = bytes.size() > 1 && bytes[0] == '\x78' &&
                        (static_cast<unsigned char>(bytes[0]) * 256U + static_cast<unsigned char>(bytes[1])) % 31U == 0;
    return isZlib ? "zlib" : "";
}

std::string shown(std::string_view bytes) {
    std::string hex;
    for (const char byte : bytes.substr(0, 8))
        hex += fmt::format("{}{:02X}", hex.empty() ? "" : " ", static_cast<unsigned char>(byte));
    return hex;
}

}  // namespace

struct ByteStream::Inflater {
    Inflater() {
        if (inflateInit2(&state, 16 + MAX_WBITS) != Z_OK)
            throw std::bad_alloc();
    }
    ~Inflater() { inflateEnd(&state); }
    Inflater(const Inflater&) = delete;
    Inflater& operator=(const Inflater&) = delete;

    z_stream state{};
};

ByteStream::ByteStream(const std::filesystem::path& file) : packed(packedSize) {
    std::error_code error;
    if (std::filesystem::is_directory(file, error))
        throw Failure(fmt::format("{} is a folder", file.string()));
    input.open(file, std::ios::binary);
    if (!input)
        throw Failure(fmt::format("{} cannot be opened: {}", file.string(), std::generic_category().message(errno)));
    fileSize = std::filesystem::file_size(file, error);
    if (error)
        fileSize = 0;
    checkContent(file);
}

ByteStream::~ByteStream() = default;

void ByteStream::checkContent(const std::filesystem::path& file) {
    if (!refill())
        throw Failure(fmt::format("{} is empty", file.string()));
    const std::string_view bytes(packed.data(), packedEnd);
    if (beginsWith(bytes, "\x1F\x8B")) {
        inflater = std::make_unique<Inflater>();
        return;
    }
    if (isXml(bytes))
        return;
    if (const auto packing = packingOf(bytes); !packing.empty())
        throw Failure(fmt::format("{} is a {} file; plain XML and gzip are read", file.string(), packing));
    throw Failure(fmt::format("{} is not XML: first bytes {}", file.string(), shown(bytes)));
}

bool ByteStream::refill() {
    input.read(packed.data(), static_cast<std::streamsize>(packed.size()));
    packedBegin = 0;
    packedEnd = static_cast<std::size_t>(input.gcount());
    taken += packedEnd;
    if (input.bad())
        damaged("the file cannot be read on");
    return packedEnd > 0;
}

void ByteStream::damaged(const std::string& what) {
    isFinished = true;
    if (reason.empty())
        reason = fmt::format("{} at byte {} of the file", what, taken - (packedEnd - packedBegin));
}

double ByteStream::fraction() const {
    const auto done = static_cast<double>(taken - (packedEnd - packedBegin));
    return fileSize == 0 ? 0.0 : std::min(1.0, done / static_cast<double>(fileSize));
}

std::size_t ByteStream::read(char* target, std::size_t size) {
    if (isFinished || size == 0)
        return 0;
    if (inflater)
        return inflate(target, size);
    if (packedBegin == packedEnd && !refill())
        return 0;
    const std::size_t count = std::min(size, packedEnd - packedBegin);
    std::memcpy(target, packed.data() + packedBegin, count);
    packedBegin += count;
    return count;
}

std::size_t ByteStream::inflate(char* target, std::size_t size) {
    z_stream& state = inflater->state;
    state.next_out = reinterpret_cast<Bytef*>(target);
    state.avail_out = static_cast<uInt>(std::min<std::size_t>(size, 1U << 30));
    const uInt room = state.avail_out;
    while (state.avail_out == room && !isFinished) {
        if (packedBegin == packedEnd && !refill()) {
            damaged("the gzip data end too early");
            break;
        }
        state.next_in = reinterpret_cast<Bytef*>(packed.data() + packedBegin);
        state.avail_in = static_cast<uInt>(packedEnd - packedBegin);
        const int status = ::inflate(&state, Z_NO_FLUSH);
        packedBegin = packedEnd - state.avail_in;
        if (status == Z_STREAM_END && !beginNextMember())
            isFinished = true;
        else if (status != Z_OK && status != Z_STREAM_END && status != Z_BUF_ERROR)
            damaged(
                fmt::format("the gzip data are damaged ({})", state.msg == nullptr ? "no reason known" : state.msg));
    }
    return room - state.avail_out;
}

bool ByteStream::beginNextMember() {
    if (packedBegin == packedEnd && !refill())
        return false;
    // What follows the last member, zeros of a tape for example, is none of the file's content.
    if (packed[packedBegin] != '\x1F')
        return false;
    inflateReset(&inflater->state);
    return true;
}

}  // namespace velmorak::io
