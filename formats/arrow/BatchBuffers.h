#pragma once

#include "arrow/Messages.h"
#include "columnar/PartCache.h"

#include <map>
#include <memory>

namespace velmorak::arrow {

/// An unpacked buffer.
struct UnpackedBuffer {
    columnar::Block block;

    std::size_t bytes() const { return block.size(); }
};

using BufferCache = columnar::PartCache<UnpackedBuffer>;

/// Bytes of a buffer, and what keeps them in memory.
struct Piece {
    std::shared_ptr<const UnpackedBuffer> owner;
    Bytes bytes;
};

/// The buffers of a batch, for the reader of some of its rows. Only the bytes that are asked for are read from a batch
/// that is not compressed; a compressed buffer is unpacked as a whole, and kept until all rows have been read.
/// Threads: one.
class BatchBuffers {
public:
    /// @param number of the batch in the file.
    /// @param rows   that will be read.
    BatchBuffers(const columnar::FileBytes& file, const Batch& batch, std::uint64_t number, std::uint64_t rows,
                 BufferCache& cache)
        : file(file), batch(batch), number(number), rows(rows), cache(cache) {}

    const Batch& contents() const { return batch; }
    /// In the file.
    std::uint64_t bytes() const;
    /// @throws Failure if there is no such buffer, or it is shorter or damaged.
    Piece read(std::size_t buffer, std::uint64_t first, std::uint64_t count) const;
    /// Copies bytes to memory that the caller has taken after check.
    void copy(std::size_t buffer, std::uint64_t first, std::span<std::byte> target) const;
    /// @throws Failure if the buffer does not have these bytes.
    void check(std::size_t buffer, std::uint64_t first, std::uint64_t count) const;

private:
    const Buffer& at(std::size_t buffer) const;
    std::shared_ptr<const UnpackedBuffer> unpacked(std::size_t buffer) const;
    UnpackedBuffer unpack(const Buffer& buffer) const;

    const columnar::FileBytes& file;
    const Batch& batch;
    std::uint64_t number;
    std::uint64_t rows;
    BufferCache& cache;
    mutable std::map<std::size_t, std::shared_ptr<const UnpackedBuffer>> held;  ///< By number of the buffer.
};

}  // namespace velmorak::arrow
