/// velmorak_bench_columnar: a weighted histogram after a cut from Parquet files, run by velmorak-run, beside the same
/// query in DuckDB; and the rate at which an uncompressed Arrow file is read, beside copying memory.
#include "KeepFreedMemory.h"
#include "Npm.h"
#include "Process.h"
#include "Row.h"
#include "Timing.h"
#include "TupleFile.h"

#include <arrow/ArrowFile.h>

#include "QuietContext.h"

#include <charconv>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <memory>

namespace {

using namespace velmorak;
using namespace velmorak::bench;

constexpr int rows = 3'000'000;
constexpr int columns = 5;
constexpr int rounds = 5;

/// Nothing is kept from one run to the next.
double fillOurs(const Folder& folder) {
    std::filesystem::remove_all(folder / "cache");
    setenv("XDG_CACHE_HOME", (folder / "cache").c_str(), 1);
    return run({VELMORAK_RUN, "-j", "2", (folder / "fill.zedra").string()}).wallMs;
}

double fillDuckDb(const std::filesystem::path& file) {
    const std::string text = npm::run(VELMORAK_COLUMNAR "/duckdb.mjs", {"fill", file.string(), "1"});
    double ms = 0.0;
    std::from_chars(text.data(), text.data() + text.size(), ms);
    return ms;
}

void compareParquet(const Folder& folder) {
    npm::run(VELMORAK_COLUMNAR "/duckdb.mjs", {"make", (folder / ".").string(), std::to_string(rows)});
    std::filesystem::copy_file(VELMORAK_COLUMNAR "/fill.zedra", folder / "fill.zedra");
    for (const std::string codec : {"snappy", "zstd"}) {
        const std::filesystem::path file = folder / ("numbers." + codec + ".parquet");
        std::filesystem::remove(folder / "numbers.parquet");
        std::filesystem::create_hard_link(file, folder / "numbers.parquet");
        std::vector<double> ours;
        std::vector<double> theirs;
        for (int round = 0; round < rounds; ++round) {
            ours.push_back(fillOurs(folder));
            theirs.push_back(fillDuckDb(file));
        }
        printNotSlower("Parquet with " + codec + ", cut, weighted histogram, 3 M x 5, 2 threads", "DuckDB",
                       medianOf(ours), medianOf(theirs), 1.0);
    }
}

double readArrow(const std::filesystem::path& file) {
    QuietContext context;
    const double begin = now(Clock::Wall);
    const std::unique_ptr<TableReader> reader = openArrow(file, {}, nullptr, context);
    Chunk chunk;
    for (std::uint64_t row = 0; reader->next(chunk); row += chunk.rows) {
        chunk.firstRow = row;
        reader->complete(chunk);
        chunk.columns.clear();
    }
    return now(Clock::Wall) - begin;
}

double copyMemory() {
    const std::size_t bytes = std::size_t{rows} * columns * sizeof(double);
    const auto from = std::make_unique<char[]>(bytes);
    const auto to = std::make_unique<char[]>(bytes);
    std::memset(from.get(), 1, bytes);
    std::memset(to.get(), 2, bytes);
    // By a pointer that the compiler cannot see through: else it makes the copy of the one byte that is looked at.
    void* (*const volatile copy)(void*, const void*, std::size_t) = std::memcpy;
    const double begin = now(Clock::Wall);
    copy(to.get(), from.get(), bytes);
    return now(Clock::Wall) - begin;
}

void measureArrow(const Folder& folder) {
    const std::filesystem::path file = folder / "numbers.arrow";
    npm::run(VELMORAK_COLUMNAR "/arrow.mjs", {file.string(), std::to_string(rows)});
    constexpr double bytes = static_cast<double>(rows) * columns * sizeof(double);
    std::vector<double> ours;
    std::vector<double> copies;
    for (int round = 0; round < rounds; ++round) {
        ours.push_back(bytes / readArrow(file) / 1e3);
        copies.push_back(bytes / copyMemory() / 1e3);
    }
    const double rate = medianOf(ours);
    const double copied = medianOf(copies);
    print({"Arrow, uncompressed, 3 M x 5, one thread", "memcpy", "MB/s", rate, copied, rate / copied,
           Limit{Limit::Sense::AtLeast, 0.6}});
}

}  // namespace

int main() {
    keepFreedMemory();
    if (const std::string reason = npm::missing({"@duckdb/node-api", "apache-arrow"}); !reason.empty()) {
        std::cout << reason << std::endl;
        return 0;
    }
    const Folder folder;
    compareParquet(folder);
    measureArrow(folder);
    return 0;
}
