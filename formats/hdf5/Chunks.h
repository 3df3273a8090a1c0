#pragma once

#include "hdf5/Library.h"

#include <velmorak/Mutex.h>

#include <cstddef>
#include <cstdint>
#include <deque>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velmorak::hdf5 {

/// How the rows of a dataset are packed in chunks, if their bytes can be unpacked without the library.
struct ChunkLayout {
    std::uint64_t rows = 0;      ///< Of the dataset in a chunk; all its other dimensions are whole.
    std::size_t bytes = 0;       ///< Of a chunk, unpacked.
    std::size_t dimensions = 1;  ///< Of the dataset.
    bool isDeflated = false;
    std::size_t deflatePosition = 0;  ///< Of the filter in the dataset's list.
    std::size_t shuffledBytes = 0;    ///< Of the elements whose bytes are shuffled; 0 for none.
    std::size_t shufflePosition = 0;
    std::string fill{};  ///< The element that a chunk holds which was never written.
};

/// @return nothing if the library must read the dataset. Called under the lock.
std::optional<ChunkLayout> chunkLayoutOf(hid_t dataset, std::uint64_t rowBytes);

/// The chunks of a dataset, unpacked on the threads that ask for them. The last ones are kept, because a chunk may
/// belong to several chunks of the table.
/// Threads: any number at once.
class Chunks {
public:
    using Bytes = std::shared_ptr<const std::string>;

    /// @param name for messages.
    Chunks(hid_t dataset, ChunkLayout shape, std::string name)
        : dataset(dataset), shape(std::move(shape)), name(std::move(name)) {}

    const ChunkLayout& layout() const { return shape; }
    /// @throws Failure if the chunk is damaged.
    Bytes chunk(std::uint64_t number);

private:
    struct Kept {
        std::uint64_t number;
        std::shared_future<Bytes> bytes;
    };

    std::string packed(std::uint64_t number, unsigned& skippedFilters) const;
    Bytes unpacked(std::uint64_t number) const;
    Bytes filled() const;
    [[noreturn]] void fail(std::uint64_t number, const std::string& reason) const;

    const hid_t dataset;
    const ChunkLayout shape;
    const std::string name;
    Mutex mutex;
    std::deque<Kept> kept VELMORAK_GUARDED_BY(mutex);
};

}  // namespace velmorak::hdf5
