#include "hdf5/Chunks.h"

#include <velmorak/Failure.h>
#include <velmorak/Tasks.h>

#include <isa-l/igzip_lib.h>

#include <algorithm>
#include <array>
#include <utility>

namespace velmorak::hdf5 {
namespace {

constexpr std::size_t maxChunkBytes = std::size_t{1} << 25U;
constexpr std::size_t maxKeptBytes = std::size_t{1} << 26U;

/// Takes the filters into the layout. @return false for one that is not known here.
bool takeFilters(hid_t list, ChunkLayout& layout) {
    const int count = H5Pget_nfilters(list);
    for (int i = 0; i < count; ++i) {
        unsigned flags = 0;
        std::array<unsigned, 8> values{};
        std::size_t valueCount = values.size();
        const H5Z_filter_t filter =
            H5Pget_filter2(list, static_cast<unsigned>(i), &flags, &valueCount, values.data(), 0, nullptr, nullptr);
        if (filter == H5Z_FILTER_SHUFFLE && !layout.isDeflated && layout.shuffledBytes == 0 && valueCount > 0 &&
            values[0] > 0) {
            layout.shuffledBytes = values[0];
            layout.shufflePosition = static_cast<std::size_t>(i);
        } else if (filter == H5Z_FILTER_DEFLATE && !layout.isDeflated) {
            layout.isDeflated = true;
            layout.deflatePosition = static_cast<std::size_t>(i);
        } else {
            return false;
        }
    }
    return count >= 0;
}

/// @return the element of chunks that were never written; empty if there is none.
std::string fillOf(hid_t dataset, hid_t list) {
    const Handle type(H5Dget_type(dataset), H5Tclose);
    std::string fill(H5Tget_size(type.id()), '\0');
    H5D_fill_value_t kind = H5D_FILL_VALUE_UNDEFINED;
    const bool isGiven = H5Pfill_value_defined(list, &kind) >= 0 && kind == H5D_FILL_VALUE_USER_DEFINED;
    if (isGiven && H5Pget_fill_value(list, type.id(), fill.data()) < 0) {
        return {};
    }
    return fill;
}

/// Reverses the filter that puts the first bytes of all elements first, then the second ones, and so on.
std::string unshuffled(const std::string& bytes, std::size_t width) {
    const std::size_t count = bytes.size() / width;
    std::string result(bytes.size(), '\0');
    for (std::size_t i = 0; i < width; ++i) {
        const char* from = bytes.data() + i * count;
        char* to = result.data() + i;
        for (std::size_t j = 0; j < count; ++j) {
            to[j * width] = from[j];
        }
    }
    std::copy(bytes.begin() + static_cast<std::ptrdiff_t>(count * width), bytes.end(),
              result.begin() + static_cast<std::ptrdiff_t>(count * width));
    return result;
}

/// @return false if the bytes are damaged or unpack to another size.
bool inflate(const std::string& packed, std::string& target) {
    const auto state = std::make_unique<inflate_state>();
    isal_inflate_init(state.get());
    state->crc_flag = ISAL_ZLIB;
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast): the library only reads it.
    state->next_in = reinterpret_cast<std::uint8_t*>(const_cast<char*>(packed.data()));
    state->avail_in = static_cast<std::uint32_t>(packed.size());
    state->next_out = reinterpret_cast<std::uint8_t*>(target.data());
    state->avail_out = static_cast<std::uint32_t>(target.size());
    return isal_inflate(state.get()) == ISAL_DECOMP_OK && state->block_state == ISAL_BLOCK_FINISH &&
           state->avail_out == 0;
}

}  // namespace

std::optional<ChunkLayout> chunkLayoutOf(hid_t dataset, std::uint64_t rowBytes) {
    const Handle list(H5Dget_create_plist(dataset), H5Pclose);
    const Handle space(H5Dget_space(dataset), H5Sclose);
    std::array<hsize_t, 2> chunk{};
    std::array<hsize_t, 2> whole{};
    const int dimensions = H5Sget_simple_extent_ndims(space.id());
    if (dimensions < 1 || dimensions > 2 || H5Pget_layout(list.id()) != H5D_CHUNKED ||
        H5Pget_chunk(list.id(), dimensions, chunk.data()) != dimensions ||
        H5Sget_simple_extent_dims(space.id(), whole.data(), nullptr) != dimensions) {
        return std::nullopt;
    }
    ChunkLayout layout{.rows = chunk[0], .dimensions = static_cast<std::size_t>(dimensions)};
    const bool isSmall = rowBytes > 0 && chunk[0] > 0 && chunk[0] <= maxChunkBytes / rowBytes;
    if (!isSmall || chunk[1] != whole[1] || !takeFilters(list.id(), layout)) {
        return std::nullopt;
    }
    layout.bytes = static_cast<std::size_t>(chunk[0] * rowBytes);
    layout.fill = fillOf(dataset, list.id());
    return layout.fill.empty() ? std::nullopt : std::optional<ChunkLayout>(std::move(layout));
}

void Chunks::fail(std::uint64_t number, const std::string& reason) const {
    throw Failure(name + ", rows from " + std::to_string(number * shape.rows) + ": " + reason);
}

/// @return the bytes in the file; empty for a chunk that was never written.
std::string Chunks::packed(std::uint64_t number, unsigned& skippedFilters) const {
    const std::array<hsize_t, 2> position = {number * shape.rows, 0};
    const LibraryLock lock;
    hsize_t size = 0;
    haddr_t address = HADDR_UNDEF;
    if (H5Dget_chunk_info_by_coord(dataset, position.data(), &skippedFilters, &address, &size) < 0) {
        fail(number, lastError());
    }
    if (address == HADDR_UNDEF) {
        return {};
    }
    if (size == 0 || size > 2 * maxChunkBytes) {
        fail(number, "its chunk has an impossible size of " + std::to_string(size) + " bytes");
    }
    std::string bytes(static_cast<std::size_t>(size), '\0');
    if (H5Dread_chunk(dataset, H5P_DEFAULT, position.data(), &skippedFilters, bytes.data()) < 0) {
        fail(number, lastError());
    }
    return bytes;
}

Chunks::Bytes Chunks::filled() const {
    auto bytes = std::make_shared<std::string>();
    bytes->reserve(shape.bytes);
    while (bytes->size() < shape.bytes) {
        *bytes += shape.fill;
    }
    return bytes;
}

Chunks::Bytes Chunks::unpacked(std::uint64_t number) const {
    unsigned skipped = 0;
    std::string bytes = packed(number, skipped);
    if (bytes.empty()) {
        return filled();
    }
    if (shape.isDeflated && (skipped >> shape.deflatePosition & 1U) == 0) {
        std::string result(shape.bytes, '\0');
        if (!inflate(bytes, result)) {
            fail(number, "its packed bytes are damaged");
        }
        bytes = std::move(result);
    }
    if (bytes.size() != shape.bytes) {
        fail(number, "it has " + std::to_string(bytes.size()) + " bytes instead of " + std::to_string(shape.bytes));
    }
    if (shape.shuffledBytes > 1 && (skipped >> shape.shufflePosition & 1U) == 0) {
        bytes = unshuffled(bytes, shape.shuffledBytes);
    }
    return std::make_shared<const std::string>(std::move(bytes));
}

Chunks::Bytes Chunks::chunk(std::uint64_t number) {
    std::promise<Bytes> promise;
    std::shared_future<Bytes> known;
    {
        const MutexLock lock(mutex);
        const auto found = std::ranges::find(kept, number, &Kept::number);
        if (found != kept.end()) {
            known = found->bytes;
        } else {
            const std::size_t room = std::max<std::size_t>(maxKeptBytes / shape.bytes, runThreads() + 1);
            while (kept.size() >= std::min<std::size_t>(room, 2 * runThreads() + 2)) {
                kept.pop_front();
            }
            kept.push_back({number, promise.get_future().share()});
        }
    }
    if (known.valid()) {
        return known.get();
    }
    try {
        Bytes bytes = unpacked(number);
        promise.set_value(bytes);
        return bytes;
    } catch (...) {
        promise.set_exception(std::current_exception());
        throw;
    }
}

}  // namespace velmorak::hdf5
