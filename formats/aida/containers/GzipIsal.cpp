#include "aida/containers/Decompressor.h"
#include "aida/containers/VectorState.h"

#include <isa-l/igzip_lib.h>

#include <algorithm>
#include <vector>

namespace velmorak::io {

namespace {

constexpr std::size_t packedSize = std::size_t{1} << 16;

/// gzip by ISA-L, which is several times faster than zlib. If it finds damage, zlib decompresses the file again from
/// the beginning, so that data and error message are those of zlib.
class FastGzip : public Decompressor {
public:
    explicit FastGzip(const std::filesystem::path& file);

    std::uint64_t position() const override;

    std::size_t read(char* target, std::size_t size) override;

private:
    int inflateMore();

    void step();

    bool refill();

    bool beginNextMember();

    void beginAgain();

    std::size_t readCarefully(char* target, std::size_t size);

    std::filesystem::path file;
    std::unique_ptr<Decompressor> input;
    std::vector<char> packed;
    inflate_state state{};
    std::uint64_t given = 0;
    bool isFinished = false;
    bool isRefused = false;
    std::unique_ptr<Decompressor> careful;
};

FastGzip::FastGzip(const std::filesystem::path& file)
    : file(file), input(openPacked(file, Packing::Plain)), packed(packedSize) {
    isal_inflate_init(&state);
    state.crc_flag = ISAL_GZIP;
}

std::uint64_t FastGzip::position() const {
    return careful ? careful->position() : input->position() - state.avail_in;
}

std::size_t FastGzip::read(char* target, std::size_t size) {
    if (careful) {
        return readCarefully(target, size);
    }
    state.next_out = reinterpret_cast<std::uint8_t*>(target);
    state.avail_out = static_cast<std::uint32_t>(std::min<std::size_t>(size, 1U << 30U));
    const std::uint32_t room = state.avail_out;
    while (state.avail_out == room && !isFinished && !isRefused) {
        step();
    }
    const std::size_t count = room - state.avail_out;
    given += count;
    if (count > 0 || !isRefused) {
        return count;
    }
    beginAgain();
    return readCarefully(target, size);
}

int FastGzip::inflateMore() {
    const int status = isal_inflate(&state);
    clearVectorState();
    return status;
}

void FastGzip::step() {
    if (state.avail_in == 0 && !refill()) {
        // The last bytes may still have to be output; if there are none, the data are truncated.
        const std::uint32_t before = state.avail_out;
        isRefused =
            inflateMore() != ISAL_DECOMP_OK || (state.avail_out == before && state.block_state != ISAL_BLOCK_FINISH);
    } else {
        isRefused = inflateMore() != ISAL_DECOMP_OK;
    }
    if (!isRefused && state.block_state == ISAL_BLOCK_FINISH) {
        isFinished = !beginNextMember();
    }
}

bool FastGzip::refill() {
    state.next_in = reinterpret_cast<std::uint8_t*>(packed.data());
    state.avail_in = static_cast<std::uint32_t>(input->read(packed.data(), packed.size()));
    return state.avail_in > 0;
}

bool FastGzip::beginNextMember() {
    // Bytes after the last member, for example a tape's padding with zeros, are ignored.
    if ((state.avail_in == 0 && !refill()) || *state.next_in != 0x1F) {
        return false;
    }
    isal_inflate_reset(&state);
    state.crc_flag = ISAL_GZIP;
    return true;
}

void FastGzip::beginAgain() {
    careful = openDeflated(file, Packing::Gzip);
    std::vector<char> known(packedSize);
    for (std::uint64_t left = given; left > 0;) {
        const std::size_t count = careful->read(known.data(), std::min<std::uint64_t>(left, known.size()));
        if (count == 0) {
            return;
        }
        left -= count;
    }
}

std::size_t FastGzip::readCarefully(char* target, std::size_t size) {
    const std::size_t count = careful->read(target, size);
    if (count == 0 && !careful->damage().empty()) {
        isDamaged(careful->damage());
    }
    return count;
}

}  // namespace

std::unique_ptr<Decompressor> openGzip(const std::filesystem::path& file) {
    return std::make_unique<FastGzip>(file);
}

}  // namespace velmorak::io
