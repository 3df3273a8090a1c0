/// velmorak_bench_handwritten FILE THREADS: the pipeline of benchmarks/pipeline/pipeline.zedra as one would write it
/// for this one purpose: unpack with ISA-L, look for the quotes, read numbers with std::from_chars, and fill arrays. It
/// knows that all rows have four plain numbers, checks nothing, and keeps counts alone. On two threads one of them
/// unpacks. Prints the entries in range of the three histograms.
#include <immintrin.h>
#include <isa-l/igzip_lib.h>

#include <array>
#include <charconv>
#include <cmath>
#include <condition_variable>
#include <cstdint>
#include <cstring>
#include <deque>
#include <fstream>
#include <iostream>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace {

constexpr std::size_t packedSize = std::size_t{1} << 16;
constexpr std::size_t pieceSize = std::size_t{1} << 19;
constexpr std::size_t maxPieces = 8;

struct Counts {
    Counts(std::size_t bins, double from, double to)
        : low(from), scale(static_cast<double>(bins) / (to - from)), counts(bins) {}

    void fill(double value) {
        const double place = (value - low) * scale;
        if (place >= 0.0 && place < static_cast<double>(counts.size())) {
            ++counts[static_cast<std::size_t>(place)];
        }
    }

    std::uint64_t entries() const {
        std::uint64_t sum = 0;
        for (const std::uint64_t count : counts) {
            sum += count;
        }
        return sum;
    }

    double low;
    double scale;
    std::vector<std::uint64_t> counts;
};

class Loop {
public:
    /// Takes the numbers out of a piece of the text. An entry that is cut is kept for the next one.
    void add(std::string_view piece) {
        constexpr std::string_view mark = R"(<entry value=")";
        text.append(piece);
        const char* position = text.data();
        const char* const end = position + text.size();
        for (;;) {
            const void* found = memmem(position, static_cast<std::size_t>(end - position), mark.data(), mark.size());
            if (!found) {
                break;
            }
            const char* const number = static_cast<const char*>(found) + mark.size();
            if (end - number < 40) {
                break;
            }
            double value = 0.0;
            position = std::from_chars(number, end, value).ptr;
            put(value);
        }
        text.erase(0, static_cast<std::size_t>(position - text.data()));
    }

    /// The text's end, which may be short.
    void finish() { add(std::string(64, ' ')); }

    std::array<Counts, 3> histograms{Counts{50, 0, 5}, Counts{100, -4, 4}, Counts{60, -3, 3}};

private:
    void put(double value) {
        row[count++] = value;
        if (count < row.size()) {
            return;
        }
        count = 0;
        const auto [c0, c1, c2, c3] = row;
        if (!(c1 > 0.2 && c3 < 0.9)) {
            return;
        }
        histograms[0].fill(std::sqrt(c0 * c0 + c2 * c2) * c1 + std::exp(-c1));
        histograms[1].fill(c0 * c3 - c2 * c1);
        histograms[2].fill(c0);
    }

    std::string text;
    std::array<double, 4> row{};
    std::size_t count = 0;
};

[[gnu::target("avx")]] void zeroUpperParts() {
    _mm256_zeroupper();
}

class Decompressor {
public:
    explicit Decompressor(const char* file) : input(file, std::ios::binary), packed(packedSize) {
        isal_inflate_init(&state);
        state.crc_flag = ISAL_GZIP;
    }

    /// @return bytes put into the piece; 0 at the end.
    std::size_t read(std::vector<char>& piece) {
        state.next_out = reinterpret_cast<std::uint8_t*>(piece.data());
        state.avail_out = static_cast<std::uint32_t>(piece.size());
        while (state.avail_out > 0 && state.block_state != ISAL_BLOCK_FINISH) {
            if (state.avail_in == 0) {
                input.read(packed.data(), static_cast<std::streamsize>(packed.size()));
                state.next_in = reinterpret_cast<std::uint8_t*>(packed.data());
                state.avail_in = static_cast<std::uint32_t>(input.gcount());
            }
            if (isal_inflate(&state) != ISAL_DECOMP_OK) {
                std::exit(2);
            }
            // Else the library's use of wide registers slows down what follows.
            zeroUpperParts();
        }
        return piece.size() - state.avail_out;
    }

private:
    std::ifstream input;
    std::vector<char> packed;
    inflate_state state{};
};

/// Hands pieces from the thread that unpacks to the other.
class Pieces {
public:
    void put(std::vector<char> piece) {
        std::unique_lock lock(mutex);
        changed.wait(lock, [this] { return all.size() < maxPieces; });
        all.push_back(std::move(piece));
        changed.notify_all();
    }

    std::vector<char> take() {
        std::unique_lock lock(mutex);
        changed.wait(lock, [this] { return !all.empty(); });
        std::vector<char> piece = std::move(all.front());
        all.pop_front();
        changed.notify_all();
        return piece;
    }

private:
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<std::vector<char>> all;
};

void runOnOne(const char* file, Loop& loop) {
    Decompressor unpacker(file);
    std::vector<char> piece(pieceSize);
    for (std::size_t size = unpacker.read(piece); size > 0; size = unpacker.read(piece)) {
        loop.add({piece.data(), size});
    }
}

void runOnTwo(const char* file, Loop& loop) {
    Pieces pieces;
    const std::jthread unpacking([&] {
        Decompressor unpacker(file);
        for (std::size_t size = 1; size > 0;) {
            std::vector<char> piece(pieceSize);
            size = unpacker.read(piece);
            piece.resize(size);
            pieces.put(std::move(piece));
        }
    });
    for (std::vector<char> piece = pieces.take(); !piece.empty(); piece = pieces.take()) {
        loop.add({piece.data(), piece.size()});
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        return 1;
    }
    Loop loop;
    if (std::string_view(argv[2]) == "1") {
        runOnOne(argv[1], loop);
    } else {
        runOnTwo(argv[1], loop);
    }
    loop.finish();
    for (const Counts& histogram : loop.histograms) {
        std::cout << histogram.entries() << ' ';
    }
    std::cout << std::endl;
    return 0;
}
