/// velmorak_bench_csv: a weighted histogram of the rows of a text file that pass a cut, by velmorak-run and by DuckDB
/// on the same number of threads. The file is in the page cache; nothing is kept from one run to the next. Ours is the
/// time of the whole program, DuckDB's that of the query.
#include "Npm.h"
#include "Process.h"
#include "Row.h"
#include "Timing.h"

#include <velmorak/TemporaryFolder.h>

#include <array>
#include <cstdint>
#include <cstdio>
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

constexpr std::size_t rows = 3'000'000;
constexpr int rounds = 5;
constexpr double maxRatio = 0.8;

double uniform(std::uint64_t& state) {
    state = state * 6364136223846793005U + 1442695040888963407U;
    return static_cast<double>(state >> 11U) * 0x1p-53;
}

/// Four columns of reals with six digits and one of integers, the same in every run.
void writeRows(const fs::path& file) {
    std::ofstream out(file, std::ios::binary);
    std::uint64_t state = 1;
    std::string text = "x,y,z,w,n\n";
    for (std::size_t row = 0; row < rows; ++row) {
        std::array<char, 128> line{};
        const double y = 50.0 + 30.0 * (uniform(state) + uniform(state) - 1.0);
        const int length =
            std::snprintf(line.data(), line.size(), "%.6g,%.6g,%.6g,%.6g,%d\n", uniform(state) - 0.5, y,
                          100.0 * uniform(state), uniform(state), static_cast<int>(100.0 * uniform(state)));
        text.append(line.data(), static_cast<std::size_t>(length));
        if (row % 10'000 == 0 || row + 1 == rows) {
            out << text;
            text.clear();
        }
    }
}

void writeDocument(const fs::path& document) {
    std::ofstream(document) << R"({"zedra": 1, "plugins": [
        {"name": "Rows", "kind": "CsvTable", "inputs": [{"name": "file", "value": "rows.csv"}]},
        {"name": "Cut", "kind": "Filter", "inputs": [{"name": "table", "from": ["Rows", "table"]},
            {"name": "condition", "value": "y > 45"}]},
        {"name": "Bars", "kind": "Histogram1D", "inputs": [{"name": "table", "from": ["Cut", "table"]},
            {"name": "expression", "value": "z"}, {"name": "bins", "value": "100"}, {"name": "low", "value": "0"},
            {"name": "high", "value": "100"}, {"name": "weight", "value": "w"}]}]})";
}

double timeOfOurs(const fs::path& folder, const std::string& threads) {
    const fs::path cache = folder / "cache";
    fs::remove_all(cache);
    setenv("XDG_CACHE_HOME", cache.c_str(), 1);
    return run({VELMORAK_RUN, "-j", threads, (folder / "rows.zedra").string()}).wallMs;
}

/// In turn; the first round of each does not count.
void compare(const fs::path& folder, const std::string& threads) {
    std::vector<double> ours;
    std::vector<double> others;
    for (int round = 0; round <= rounds; ++round) {
        const double time = timeOfOurs(folder, threads);
        std::istringstream text(
            velmorak::npm::run(VELMORAK_DUCKDB, {(folder / "rows.csv").string(), threads, std::to_string(2)}));
        text.imbue(std::locale::classic());
        double first = 0.0;
        double second = 0.0;
        text >> first >> second;
        if (round > 0) {
            ours.push_back(time);
            others.push_back(second);
        }
    }
    const bool hasLimit = threads == "2";
    const std::string work = "text file, 3 M x 5, cut, weighted histogram, " + threads + " threads";
    const double ratio = medianOf(ours) / medianOf(others);
    print({work, "DuckDB", "ms", medianOf(ours), medianOf(others), ratio,
           hasLimit ? std::optional<Limit>(Limit{Limit::Sense::AtMost, maxRatio}) : std::nullopt});
}

}  // namespace

int main() {
    if (const std::string why = velmorak::npm::missing({"@duckdb/node-api"}); !why.empty()) {
        std::cout << "velmorak_bench_csv is left out: " << why << std::endl;
        return 0;
    }
    const velmorak::TemporaryFolder folder("bench-csv");
    writeRows(folder.path() / "rows.csv");
    writeDocument(folder.path() / "rows.zedra");
    compare(folder.path(), "1");
    compare(folder.path(), "2");
    return 0;
}
