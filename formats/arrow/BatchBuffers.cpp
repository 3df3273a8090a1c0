#include "arrow/BatchBuffers.h"

#include <lz4frame.h>
#include <zstd.h>

#include <limits>
#include <numeric>
#include <string>

namespace velmorak::arrow {
namespace {

using columnar::Block;

constexpr std::size_t lengthBytes = 8;

bool unpackLz4(Bytes packed, Block& target) {
    LZ4F_dctx* context = nullptr;
    if (LZ4F_isError(LZ4F_createDecompressionContext(&context, LZ4F_VERSION)) != 0U) {
        return false;
    }
    std::size_t done = 0;
    std::size_t status = 1;
    while (status != 0 && LZ4F_isError(status) == 0U && !packed.empty()) {
        std::size_t to = target.size() - done;
        std::size_t from = packed.size();
        status = LZ4F_decompress(context, target.data() + done, &to, packed.data(), &from, nullptr);
        if (to == 0 && from == 0) {
            break;
        }
        done += to;
        packed = packed.subspan(from);
    }
    LZ4F_freeDecompressionContext(context);
    return status == 0 && done == target.size();
}

bool unpackZstd(Bytes packed, Block& target) {
    return ZSTD_decompress(target.data(), target.size(), packed.data(), packed.size()) == target.size();
}

}  // namespace

std::uint64_t BatchBuffers::bytes() const {
    return std::accumulate(batch.buffers.begin(), batch.buffers.end(), std::uint64_t{0},
                           [](std::uint64_t sum, const Buffer& buffer) { return sum + buffer.bytes; });
}

const Buffer& BatchBuffers::at(std::size_t buffer) const {
    if (buffer >= batch.buffers.size()) {
        throw Failure("a batch has fewer buffers than its schema needs");
    }
    return batch.buffers[buffer];
}

UnpackedBuffer BatchBuffers::unpack(const Buffer& buffer) const {
    constexpr std::int64_t maxBytes = std::int64_t{1} << 30U;  // It is in memory as a whole.
    const Block packed = file.read(buffer.position, buffer.bytes);
    if (packed.size() < lengthBytes) {
        throw Failure("a compressed buffer is too short");
    }
    const auto length = columnar::littleEndian<std::int64_t>(packed.bytes().data());
    const Bytes rest = packed.bytes().subspan(lengthBytes);
    const bool isPlain = length == -1;
    if (!isPlain && length < 0) {
        throw Failure("a compressed buffer has a negative length");
    }
    if (!isPlain && length > maxBytes) {
        throw Failure("a compressed buffer has " + std::to_string(length) +
                      " bytes when it is unpacked, and 2^30 are the most; write the file with smaller batches");
    }
    Block block(isPlain ? rest.size() : static_cast<std::size_t>(length));
    if (isPlain) {
        std::copy(rest.begin(), rest.end(), block.data());
    } else if (length > 0 && !(batch.codec == Codec::Lz4 ? unpackLz4(rest, block) : unpackZstd(rest, block))) {
        throw Failure("a compressed buffer is damaged");
    }
    return {std::move(block)};
}

/// The cache counts the rows that each reader uses once.
std::shared_ptr<const UnpackedBuffer> BatchBuffers::unpacked(std::size_t buffer) const {
    std::shared_ptr<const UnpackedBuffer>& slot = held[buffer];
    if (!slot) {
        const Buffer& place = at(buffer);
        slot = cache.get({number, buffer, 0}, batch.rows, rows, [&] { return unpack(place); });
    }
    return slot;
}

void BatchBuffers::check(std::size_t buffer, std::uint64_t first, std::uint64_t count) const {
    const std::uint64_t bytes = batch.codec == Codec::None ? at(buffer).bytes
                                : count > 0                ? unpacked(buffer)->block.size()
                                                           : first;
    if (first > bytes || count > bytes - first) {
        throw Failure("a buffer has fewer values than its batch");
    }
}

Piece BatchBuffers::read(std::size_t buffer, std::uint64_t first, std::uint64_t count) const {
    if (count == 0) {
        return {};
    }
    check(buffer, first, count);
    if (batch.codec != Codec::None) {
        std::shared_ptr<const UnpackedBuffer> owner = unpacked(buffer);
        return {owner, owner->block.bytes().subspan(first, count)};
    }
    const Buffer& place = at(buffer);
    auto owner = std::make_shared<const UnpackedBuffer>(UnpackedBuffer{file.read(place.position + first, count)});
    return {owner, owner->block.bytes()};
}

void BatchBuffers::copy(std::size_t buffer, std::uint64_t first, std::span<std::byte> target) const {
    if (batch.codec != Codec::None) {
        const Bytes from = read(buffer, first, target.size()).bytes;
        std::copy(from.begin(), from.end(), reinterpret_cast<std::uint8_t*>(target.data()));
    } else {
        file.read(at(buffer).position + first, {reinterpret_cast<std::uint8_t*>(target.data()), target.size()});
    }
}

}  // namespace velmorak::arrow
