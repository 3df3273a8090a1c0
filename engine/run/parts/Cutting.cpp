#include "run/parts/Cutting.h"

#include <algorithm>
#include <numeric>

namespace velmorak {

namespace {

/// Rows that are not cut.
struct Piece {
    ChunkPlace begin;
    double size = 0.0;
};

/// Of the chunks of a table that comes from no file.
constexpr double bytesOfChunk = 1e6;
/// A file that makes a range so much larger than its share is cut.
constexpr double maxShare = 1.25;

class Pieces {
public:
    Pieces(const std::vector<std::uint64_t>& bytes, std::size_t parts,
           const std::function<std::uint64_t(std::uint64_t file)>& chunksOf);

    const std::vector<Piece>& list() const { return all; }

private:
    void addChunks(std::uint64_t file, double size, std::uint64_t chunks);

    std::vector<Piece> all;
};

Pieces::Pieces(const std::vector<std::uint64_t>& bytes, std::size_t parts,
               const std::function<std::uint64_t(std::uint64_t file)>& chunksOf) {
    const double total = std::accumulate(bytes.begin(), bytes.end(), 0.0);
    for (std::uint64_t file = 0; file < bytes.size(); ++file) {
        const auto size = static_cast<double>(bytes[file]);
        const bool isLarge = size == 0.0 || size > maxShare * total / static_cast<double>(parts);
        if (parts > 1 && isLarge) {
            addChunks(file, size, chunksOf(file));
        } else {
            all.push_back({{file, 0}, size});
        }
    }
}

void Pieces::addChunks(std::uint64_t file, double size, std::uint64_t chunks) {
    const double each = size == 0.0 ? bytesOfChunk : size / static_cast<double>(std::max<std::uint64_t>(1, chunks));
    for (std::uint64_t chunk = 0; chunk < std::max<std::uint64_t>(1, chunks); ++chunk) {
        all.push_back({{file, chunk}, each});
    }
}

}  // namespace

std::vector<PassRange> cutPass(const std::vector<std::uint64_t>& bytes, std::size_t parts,
                               const std::function<std::uint64_t(std::uint64_t file)>& chunksOf) {
    const std::vector<Piece> pieces = Pieces(bytes, parts, chunksOf).list();
    const double total = std::accumulate(pieces.begin(), pieces.end(), 0.0,
                                         [](double sum, const Piece& piece) { return sum + piece.size; });
    const std::size_t count = std::clamp<std::size_t>(parts, 1, std::max<std::size_t>(1, pieces.size()));
    std::vector<PassRange> ranges;
    double done = 0.0;
    std::size_t next = 0;
    for (std::size_t part = 0; part < count; ++part) {
        const std::size_t leftForOthers = count - part - 1;
        const double wanted = total * static_cast<double>(part + 1) / static_cast<double>(count);
        ranges.push_back({next < pieces.size() ? pieces[next].begin : ChunkPlace{}, {bytes.size(), 0}});
        const std::size_t first = next;
        while (next + leftForOthers < pieces.size() &&
               (next == first || leftForOthers == 0 || done + pieces[next].size / 2 < wanted)) {
            done += pieces[next++].size;
        }
        if (part > 0) {
            ranges[part - 1].end = ranges[part].begin;
        }
    }
    return ranges;
}

}  // namespace velmorak
