#pragma once

#include "run/pass/MergeTree.h"

#include <velmorak/Parts.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <optional>

namespace velmorak {

/// Consecutive chunks of a pass: those from begin up to, but not including, end. Files are counted over all sources of
/// the pass, which follow each other.
struct PassRange {
    static constexpr std::uint64_t unlimited = std::numeric_limits<std::uint64_t>::max();

    ChunkPlace begin{};
    ChunkPlace end{unlimited, 0};
    std::optional<ChunkStart> start{};  ///< Of begin in its file, for a reader that need not read what comes before.

    bool isWhole() const { return begin == ChunkPlace{} && end.file == unlimited; }
    /// File after the last one of which the range holds a chunk.
    std::uint64_t endFile() const { return end.chunk > 0 ? end.file + 1 : end.file; }
    bool holdsChunksOf(std::uint64_t file) const { return file >= begin.file && file < endFile(); }
    /// The same range for whoever counts files from the given one on.
    PassRange from(std::uint64_t file) const {
        const auto moved = [file](ChunkPlace place) {
            return place.file < file ? ChunkPlace{} : ChunkPlace{place.file - file, place.chunk};
        };
        return {moved(begin), end.file == unlimited ? end : moved(end), {}};
    }
};

}  // namespace velmorak
