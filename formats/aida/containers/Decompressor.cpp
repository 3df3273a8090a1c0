#include "aida/containers/Decompressor.h"

#include <velmorak/Failure.h>
#include <velmorak/RegularFile.h>

#include <fmt/format.h>
#include <zlib.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <new>
#include <system_error>
#include <vector>

namespace velmorak::io {

namespace {

constexpr std::size_t packedSize = std::size_t{1} << 16;

class PlainFile : public Decompressor {
public:
    explicit PlainFile(const std::filesystem::path& file);

    std::size_t read(char* target, std::size_t size) override;
    std::uint64_t position() const override { return taken; }
    bool seek(std::uint64_t byte) override;

private:
    std::ifstream input;
    std::uint64_t taken = 0;
};

/// Without a buffer of its own: all who read from it have one.
PlainFile::PlainFile(const std::filesystem::path& file) {
    input.rdbuf()->pubsetbuf(nullptr, 0);
    input.open(file, std::ios::binary);
    if (!input) {
        throw Failure(fmt::format("{} cannot be opened: {}", file.string(), std::generic_category().message(errno)));
    }
}

std::size_t PlainFile::read(char* target, std::size_t size) {
    input.read(target, static_cast<std::streamsize>(size));
    const auto count = static_cast<std::size_t>(input.gcount());
    taken += count;
    if (input.bad()) {
        damaged("reading the file failed");
    }
    return count;
}

bool PlainFile::seek(std::uint64_t byte) {
    input.clear();
    input.seekg(static_cast<std::streamoff>(byte));
    taken = byte;
    return !input.fail();
}

/// gzip of one member or several, zlib, and raw deflate.
class Deflated : public Decompressor {
public:
    Deflated(const std::filesystem::path& input, Packing packing);
    ~Deflated() override { inflateEnd(&state); }
    Deflated(const Deflated&) = delete;
    Deflated& operator=(const Deflated&) = delete;

    std::uint64_t position() const override { return input.position() - (packedEnd - packedBegin); }

    std::size_t read(char* target, std::size_t size) override;

private:
    std::string_view packingName() const;

    void step();

    void end(const std::string& what);

    bool refill();

    bool beginNextMember();

    PlainFile input;
    Packing packing;
    std::vector<char> packed;
    std::size_t packedBegin = 0;
    std::size_t packedEnd = 0;
    z_stream state{};
    bool isFinished = false;
};

Deflated::Deflated(const std::filesystem::path& input, Packing packing)
    : input(input), packing(packing), packed(packedSize) {
    const int bits = packing == Packing::Gzip ? 16 + MAX_WBITS : packing == Packing::Zlib ? MAX_WBITS : -MAX_WBITS;
    if (inflateInit2(&state, bits) != Z_OK) {
        throw std::bad_alloc();
    }
}

std::size_t Deflated::read(char* target, std::size_t size) {
    state.next_out = reinterpret_cast<Bytef*>(target);
    state.avail_out = static_cast<uInt>(std::min<std::size_t>(size, 1U << 30U));
    const uInt room = state.avail_out;
    while (state.avail_out == room && !isFinished) {
        step();
    }
    return room - state.avail_out;
}

std::string_view Deflated::packingName() const {
    return packing == Packing::Gzip ? "gzip" : packing == Packing::Zlib ? "zlib" : "deflate";
}

void Deflated::step() {
    const bool hasMore = packedBegin != packedEnd || refill();
    state.next_in = reinterpret_cast<Bytef*>(packed.data() + packedBegin);
    state.avail_in = static_cast<uInt>(packedEnd - packedBegin);
    const int status = ::inflate(&state, Z_NO_FLUSH);
    packedBegin = packedEnd - state.avail_in;
    // The last bytes may still have to be output.
    if (status == Z_BUF_ERROR && !hasMore) {
        end(fmt::format("the {} data end too early", packingName()));
    } else if (status == Z_STREAM_END) {
        isFinished = !beginNextMember();
    } else if (status != Z_OK && status != Z_BUF_ERROR) {
        end(fmt::format("the {} data are damaged ({})", packingName(), state.msg ? state.msg : "unknown reason"));
    }
}

void Deflated::end(const std::string& what) {
    isFinished = true;
    damaged(what);
}

bool Deflated::refill() {
    packedBegin = 0;
    packedEnd = input.read(packed.data(), packed.size());
    return packedEnd > 0;
}

bool Deflated::beginNextMember() {
    if (packing != Packing::Gzip || (packedBegin == packedEnd && !refill())) {
        return false;
    }
    // Bytes after the last member, for example a tape's padding with zeros, are ignored.
    if (packed[packedBegin] != '\x1F') {
        return false;
    }
    inflateReset(&state);
    return true;
}

}  // namespace

void Decompressor::damaged(std::string_view what) {
    if (reason.empty()) {
        reason = fmt::format("{} at byte {} of the file", what, position());
    }
}

void Decompressor::isDamaged(const std::string& sentence) {
    if (reason.empty()) {
        reason = sentence;
    }
}

std::unique_ptr<Decompressor> openDeflated(const std::filesystem::path& file, Packing packing) {
    return std::make_unique<Deflated>(file, packing);
}

std::unique_ptr<Decompressor> openPacked(const std::filesystem::path& file, Packing packing) {
    requireRegular(file);
    switch (packing) {
        case Packing::Plain:
            return std::make_unique<PlainFile>(file);
        case Packing::Bzip2:
        case Packing::Zip:
            return openArchive(file, packing);
        case Packing::Gzip:
            return openGzip(file);
        default:
            return openDeflated(file, packing);
    }
}

}  // namespace velmorak::io
