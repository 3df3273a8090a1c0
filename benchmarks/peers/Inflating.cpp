#include "ExpatTuple.h"

#include <isa-l/igzip_lib.h>
#include <zlib.h>

#include <cstdint>
#include <fstream>
#include <stdexcept>

namespace velmorak::bench {

namespace {

constexpr std::size_t packedSize = std::size_t{1} << 16;
constexpr std::size_t unpackedSize = std::size_t{1} << 19;

/// Gives each piece of a file to the work, which says how many bytes it made of it.
template <typename Work>
std::size_t inflate(const std::filesystem::path& file, Work work) {
    std::ifstream input(file, std::ios::binary);
    std::vector<char> packed(packedSize);
    std::size_t count = 0;
    while (input) {
        input.read(packed.data(), static_cast<std::streamsize>(packed.size()));
        count += work(packed.data(), static_cast<std::uint32_t>(input.gcount()));
    }
    if (count == 0) {
        throw std::runtime_error("nothing was unpacked");
    }
    return count;
}

}  // namespace

std::size_t inflateWithZlib(const std::filesystem::path& file) {
    std::vector<char> target(unpackedSize);
    z_stream state{};
    inflateInit2(&state, 16 + MAX_WBITS);
    const std::size_t all = inflate(file, [&](char* packed, std::uint32_t size) {
        std::size_t count = 0;
        state.next_in = reinterpret_cast<Bytef*>(packed);
        state.avail_in = size;
        do {
            state.next_out = reinterpret_cast<Bytef*>(target.data());
            state.avail_out = static_cast<uInt>(target.size());
            ::inflate(&state, Z_NO_FLUSH);
            count += target.size() - state.avail_out;
        } while (state.avail_out == 0);
        return count;
    });
    inflateEnd(&state);
    return all;
}

std::size_t inflateWithIsal(const std::filesystem::path& file) {
    std::vector<char> target(unpackedSize);
    inflate_state state{};
    isal_inflate_init(&state);
    state.crc_flag = ISAL_GZIP;
    return inflate(file, [&](char* packed, std::uint32_t size) {
        std::size_t count = 0;
        state.next_in = reinterpret_cast<std::uint8_t*>(packed);
        state.avail_in = size;
        do {
            state.next_out = reinterpret_cast<std::uint8_t*>(target.data());
            state.avail_out = static_cast<std::uint32_t>(target.size());
            isal_inflate(&state);
            count += target.size() - state.avail_out;
        } while (state.avail_out == 0);
        return count;
    });
}

}  // namespace velmorak::bench
