/// velmorak_bench_root: columns of trees and an RNTuple, as a run reads them, beside decompression of the same records
/// with nothing but the library; a second thread; few columns of many. The files are in the page cache.
#include "KeepFreedMemory.h"
#include "Row.h"
#include "Timing.h"
#include "TreeFile.h"
#include "Unpacking.h"

#include <root/RootFile.h>

#include <algorithm>
#include <cstdlib>
#include <mutex>
#include <thread>

namespace {

using namespace velmorak;
using namespace velmorak::bench;
namespace fs = std::filesystem;

constexpr double minOfUnpacking = 0.8;
constexpr double minSpeedUp = 1.7;
constexpr double maxOfFewColumns = 1.3;
constexpr int rounds = 5;

class Folder {
public:
    Folder() {
        std::string name = (fs::temp_directory_path() / "velmorak-bench-root-XXXXXX").string();
        if (!mkdtemp(name.data())) {
            std::abort();
        }
        path = name;
    }
    ~Folder() { fs::remove_all(path); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    fs::path path;
};

class QuietRun : public RunContext {
public:
    bool isStopping() const override { return false; }
    const std::string& pluginName() const override { return name; }
    fs::path inputFile(const std::string& text) const override { return text; }
    fs::path commandLineAida() const override { return {}; }
    void writeResult(const std::string&, const std::function<void(const fs::path&)>&) override {}
    std::unique_ptr<ResultFile> beginResult(const std::string& fileName) override { throw Failure(fileName); }
    void warn(const std::string&) override {}

private:
    std::string name = "Rows";
};

/// Reads a table as a run does: chunks are cut by one thread at a time and completed by all of them.
class Reading {
public:
    Reading(const fs::path& file, const std::string& object, const std::vector<std::string>& used)
        : reader(openRootTable(file, object, {}, context)) {
        std::vector<bool> needed;
        for (const ColumnInfo& column : reader->schema().columns()) {
            needed.push_back(used.empty() || std::find(used.begin(), used.end(), column.name) != used.end());
        }
        reader->selectColumns(needed);
    }

    void finish(unsigned threads) {
        std::vector<std::jthread> workers;
        for (unsigned i = 0; i < threads; ++i) {
            workers.emplace_back([this] { work(); });
        }
    }

private:
    bool next(Chunk& chunk) {
        const std::lock_guard lock(mutex);
        const bool isThere = reader->next(chunk);
        chunk.number = number++;
        chunk.firstRow = firstRow;
        firstRow += chunk.rows;
        return isThere;
    }
    void work() {
        for (Chunk chunk; next(chunk); chunk = {}) {
            reader->complete(chunk);
        }
    }

    QuietRun context;
    std::unique_ptr<TableReader> reader;
    std::mutex mutex;
    std::uint64_t number = 0;
    std::uint64_t firstRow = 0;
};

void readTable(const fs::path& file, const std::vector<std::string>& used, unsigned threads,
               const std::string& object = {}) {
    Reading(file, object, used).finish(threads);
}

/// Speed beside unpacking alone on one and on two threads, and what a second thread brings.
void compareWithUnpacking(const std::string& work, const fs::path& file, const std::vector<std::string>& used,
                          const std::vector<std::string>& branches) {
    const std::vector<PackedRecord> records = recordsOf(file, branches);
    const std::vector<double> times =
        mediansOf({[&] { readTable(file, used, 1); }, [&] { unpackAll(file, records, 1); },
                   [&] { readTable(file, used, 2); }, [&] { unpackAll(file, records, 2); }},
                  Clock::Wall, rounds);
    printFaster(work + ", 1 thread", "unpacking alone", times[0], times[1], minOfUnpacking);
    printFaster(work + ", 2 threads", "unpacking alone", times[2], times[3], minOfUnpacking);
    printFaster(work + ", 2 threads", "1 thread", times[2], times[0], minSpeedUp);
}

void benchTrees(const fs::path& folder) {
    const std::vector<std::string> used{"c1", "c4", "c8"};
    for (const auto& [packing, name] : {std::pair(root::Packing::Zstd, "zstd"), std::pair(root::Packing::Lz4, "lz4"),
                                        std::pair(root::Packing::Zlib, "zlib")}) {
        const fs::path file = folder / (std::string(name) + ".root");
        writeTree(file, {.rows = 3'000'000, .columns = 10, .listColumns = 0, .packing = packing});
        compareWithUnpacking(std::string(name) + " tree, 3 of 10 columns", file, used, used);
        fs::remove(file);
    }
}

void benchLists(const fs::path& folder) {
    const fs::path file = folder / "lists.root";
    writeTree(file, {.rows = 1'000'000, .columns = 0, .listColumns = 4, .packing = root::Packing::Zstd});
    compareWithUnpacking("zstd tree, 2 of 4 columns of lists", file, {"l1", "l3"}, {"l1", "l3"});
    fs::remove(file);
}

void benchFewOfMany(const fs::path& folder) {
    constexpr std::size_t rows = 300'000;
    const fs::path many = folder / "many.root";
    const fs::path few = folder / "few.root";
    writeTree(many, {.rows = rows, .columns = 900, .listColumns = 0, .packing = root::Packing::Zstd});
    writeTree(few, {.rows = rows, .columns = 5, .listColumns = 0, .packing = root::Packing::Zstd});
    const std::vector<std::string> used{"c0", "c200", "c400", "c600", "c899"};
    const std::vector<double> times =
        mediansOf({[&] { readTable(many, used, 1); }, [&] { readTable(few, {}, 1); }}, Clock::Wall, rounds);
    printNotSlower("5 of 900 columns, 300,000 rows", "a file with 5 columns", times[0], times[1], maxOfFewColumns);
}

}  // namespace

int main() {
    keepFreedMemory();
    const Folder folder;
    benchTrees(folder.path);
    benchLists(folder.path);
    benchFewOfMany(folder.path);
    return 0;
}
