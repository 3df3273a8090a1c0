/// velmorak_bench_tuple: how fast a tuple of plain rows is read, next to a reader written on expat, and how much
/// reading adds to unpacking.
#include "ExpatTuple.h"
#include "Row.h"
#include "Timing.h"
#include "TupleFile.h"

#include "executor/ThreadPool.h"

#include <velmorak/Aida.h>

#include <cstdlib>
#include <iostream>
#include <utility>

namespace {

using namespace velmorak;
using namespace velmorak::bench;

constexpr std::size_t rows = 250'000;
constexpr std::size_t columns = 8;

/// @return the sum of all values, so that nothing is left out.
double readTable(const std::filesystem::path& file) {
    IdleRun run;
    const auto table = openAidaTable(file, "/numbers", run);
    double sum = 0.0;
    for (Chunk chunk; table->next(chunk); chunk = {}) {
        for (const ColumnPtr& column : chunk.columns) {
            sum += column->reals().front() + column->reals().back();
        }
    }
    return sum;
}

double megabytes(const std::filesystem::path& file) {
    return static_cast<double>(std::filesystem::file_size(file)) / 1e6;
}

void requireSameValues(const std::filesystem::path& plain) {
    IdleRun run;
    const auto table = openAidaTable(plain, "/numbers", run);
    const auto expected = readWithExpat(plain, columns);
    std::size_t row = 0;
    for (Chunk chunk; table->next(chunk); chunk = {}) {
        for (std::size_t i = 0; i < chunk.rows; ++i, ++row) {
            for (std::size_t column = 0; column < columns; ++column) {
                if (chunk.columns[column]->reals()[i] != expected[column][row]) {
                    std::exit(2);
                }
            }
        }
    }
    if (row != rows) {
        std::exit(2);
    }
}

void readOnTwoThreads(const std::filesystem::path& file) {
    const velmorak::ThreadPool pool(2);
    readTable(file);
}

void comparePlain(const std::filesystem::path& plain) {
    const auto times = mediansOf({[&] { readTable(plain); }, [&] { readWithExpat(plain, columns); }}, Clock::Processor);
    printFaster("plain tuple rows, 250,000 x 8, one core", "expat, from_chars", times[0], times[1], 5.0);
    const double speed = megabytes(plain) / times[0] * 1e3;
    print({"plain tuple rows, 250,000 x 8, one core", "limit", "MB/s", speed, 700.0, speed / 700.0,
           Limit{Limit::Sense::AtLeast, 1.0}});
}

void comparePacked(const std::filesystem::path& packed) {
    const auto oneCore =
        mediansOf({[&] { readTable(packed); }, [&] { inflateWithZlib(packed); }, [&] { inflateWithIsal(packed); }},
                  Clock::Processor);
    printFaster("the same gzipped, one core", "zlib inflating alone", oneCore[0], oneCore[1], 0.8);
    print(
        {"the same gzipped, one core", "ISA-L inflating alone", "ms", oneCore[0], oneCore[2], oneCore[2] / oneCore[0]});
    const auto twoCores = mediansOf({[&] { readOnTwoThreads(packed); }, [&] { inflateWithIsal(packed); }}, Clock::Wall);
    printFaster("the same gzipped, inflating on a thread of its own", "ISA-L inflating alone", twoCores[0], twoCores[1],
                0.8);
}

}  // namespace

int main() {
    const Folder folder;
    const std::filesystem::path plain = folder / "numbers.aida";
    writeTuple(plain, rows, columns);
    requireSameValues(plain);
    comparePlain(plain);
    comparePacked(gzip(plain));
    return 0;
}
