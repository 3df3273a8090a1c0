/// velmorak_bench_sorting: 10 million rows of a Parquet file sorted by one real number, by velmorak-run and by DuckDB
/// on the same number of threads. The file is in the page cache; nothing is kept from one run to the next. Ours is the
/// time of the whole program, which also counts the sorted rows; DuckDB's that of making a table of them.
#include "Npm.h"
#include "Process.h"
#include "Row.h"
#include "Timing.h"

#include <velmorak/TemporaryFolder.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <locale>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace velmorak::bench;
namespace fs = std::filesystem;

constexpr int rounds = 3;
constexpr double maxRatio = 1.5;

/// Random numbers become the rows of a Parquet file, which the other document sorts.
void writeDocuments(const fs::path& folder) {
    std::ofstream(folder / "make.zedra") << R"json({"zedra": 1, "plugins": [
        {"name": "Rows", "kind": "RandomTable", "inputs": [{"name": "rows", "value": "10000000"},
            {"name": "columns", "value": "x: gauss(0, 1); y: uniform(0, 1); n: poisson(100)"}]},
        {"name": "File", "kind": "ParquetWriter", "inputs": [{"name": "table", "from": ["Rows", "table"]},
            {"name": "file", "value": "rows.parquet"}]}]
})json";
    std::ofstream(folder / "sort.zedra") << R"({"zedra": 1, "plugins": [
        {"name": "Rows", "kind": "ParquetTable", "inputs": [{"name": "file", "value": "make.results/rows.parquet"}]},
        {"name": "Sorted", "kind": "Sort", "inputs": [{"name": "table", "from": ["Rows", "table"]},
            {"name": "by", "value": "x"}]},
        {"name": "Mean", "kind": "Statistics", "inputs": [{"name": "data", "from": ["Sorted", "table"]},
            {"name": "expression", "value": "x + y + n"}]}]})";
}

double timeOf(const fs::path& folder, const std::string& document, const std::string& threads) {
    const fs::path cache = folder / "cache";
    fs::remove_all(cache);
    setenv("XDG_CACHE_HOME", cache.c_str(), 1);
    return run({VELMORAK_RUN, "-j", threads, (folder / document).string()}).wallMs;
}

/// In turn; the first round of each does not count.
void compare(const fs::path& folder, const std::string& memory, std::optional<Limit> limit) {
    setenv("VELMORAK_MEMORY_LIMIT", memory.c_str(), 1);
    std::vector<double> ours;
    std::vector<double> others;
    for (int round = 0; round <= rounds; ++round) {
        const double time = timeOf(folder, "sort.zedra", "2");
        std::istringstream text(velmorak::npm::run(
            VELMORAK_DUCKDB, {(folder / "make.results" / "rows.parquet").string(), "2", "2", memory}));
        text.imbue(std::locale::classic());
        double first = 0.0;
        double second = 0.0;
        text >> first >> second;
        if (round > 0) {
            ours.push_back(time);
            others.push_back(second);
        }
    }
    print({"sort 10 M x 3 by a real, 2 threads, " + memory, "DuckDB", "ms", medianOf(ours), medianOf(others),
           medianOf(ours) / medianOf(others), limit});
}

}  // namespace

int main() {
    if (const std::string why = velmorak::npm::missing({"@duckdb/node-api"}); !why.empty()) {
        std::cout << "velmorak_bench_sorting is left out: " << why << std::endl;
        return 0;
    }
    const velmorak::TemporaryFolder folder("bench-sorting");
    writeDocuments(folder.path());
    fs::current_path(folder.path());
    timeOf(folder.path(), "make.zedra", "2");
    compare(folder.path(), "4GB", Limit{Limit::Sense::AtMost, maxRatio});
    compare(folder.path(), "512MB", std::nullopt);
    return 0;
}
