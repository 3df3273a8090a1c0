/// velmorak_bench_groups: 10 million rows of a Parquet file grouped by a key with 1000 values, with five aggregates,
/// and joined with a table of 100,000 rows, by velmorak-run and by DuckDB on the same number of threads. The files are
/// in the page cache; nothing is kept from one run to the next. Ours is the time of the whole program.
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
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace velmorak::bench;
namespace fs = std::filesystem;

constexpr int rounds = 3;

/// The queries that are compared.
struct Comparison {
    std::string query;
    std::string name;
    double maxRatio = 0.0;
};

void writeMaker(const fs::path& folder) {
    std::ofstream(folder / "make.zedra") << R"json({"zedra": 1, "plugins": [
        {"name": "Random", "kind": "RandomTable", "inputs": [{"name": "rows", "value": "10000000"},
            {"name": "columns", "value": "x: gauss(0, 1); y: uniform(0, 1); u: uniform(0, 1000); v: uniform(0, 100000)"}]},
        {"name": "Group", "kind": "Formula", "inputs": [{"name": "table", "from": ["Random", "table"]},
            {"name": "column", "value": "group"}, {"name": "expression", "value": "floor(u)"}]},
        {"name": "Key", "kind": "Formula", "inputs": [{"name": "table", "from": ["Group", "table"]},
            {"name": "column", "value": "k"}, {"name": "expression", "value": "floor(v)"}]},
        {"name": "Rows", "kind": "Select", "inputs": [{"name": "table", "from": ["Key", "table"]},
            {"name": "columns", "value": "group k x y"}]},
        {"name": "File", "kind": "ParquetWriter", "inputs": [{"name": "table", "from": ["Rows", "table"]},
            {"name": "file", "value": "rows.parquet"}]},
        {"name": "Unique", "kind": "GroupBy", "inputs": [{"name": "table", "from": ["Rows", "table"]},
            {"name": "keys", "value": "k"}, {"name": "aggregates", "value": "gain: mean(y)"}]},
        {"name": "Others", "kind": "ParquetWriter", "inputs": [{"name": "table", "from": ["Unique", "table"]},
            {"name": "file", "value": "others.parquet"}]}]
})json";
}

void writeDocuments(const fs::path& folder) {
    const std::string rows = R"({"zedra": 1, "plugins": [
        {"name": "Rows", "kind": "ParquetTable", "inputs": [{"name": "file", "value": "make.results/rows.parquet"}]},)";
    std::ofstream(folder / "group.zedra") << rows << R"json(
        {"name": "Groups", "kind": "GroupBy", "inputs": [{"name": "table", "from": ["Rows", "table"]},
            {"name": "keys", "value": "group"},
            {"name": "aggregates", "value": "count; sum(x); mean(x); spread(x); min(y); max(y)"}]}]})json";
    std::ofstream(folder / "join.zedra") << rows << R"(
        {"name": "Others", "kind": "ParquetTable", "inputs": [{"name": "file", "value": "make.results/others.parquet"}]},
        {"name": "Joined", "kind": "Join", "inputs": [{"name": "table", "from": ["Rows", "table"]},
            {"name": "with", "from": ["Others", "table"]}, {"name": "keys", "value": "k"},
            {"name": "rows", "value": "inner"}, {"name": "columns", "value": "gain"}]},
        {"name": "Sum", "kind": "Statistics", "inputs": [{"name": "data", "from": ["Joined", "table"]},
            {"name": "expression", "value": "x * gain"}]}]})";
}

double timeOf(const fs::path& folder, const std::string& document, const std::string& threads) {
    const fs::path cache = folder / "cache";
    fs::remove_all(cache);
    setenv("XDG_CACHE_HOME", cache.c_str(), 1);
    return run({VELMORAK_RUN, "-j", threads, (folder / document).string()}).wallMs;
}

/// In turn; the first round of each does not count.
void compare(const fs::path& folder, const Comparison& comparison) {
    std::vector<double> ours;
    std::vector<double> others;
    for (int round = 0; round <= rounds; ++round) {
        const double time = timeOf(folder, comparison.query + ".zedra", "2");
        std::istringstream text(velmorak::npm::run(VELMORAK_DUCKDB, {folder.string(), "2", "2", comparison.query}));
        text.imbue(std::locale::classic());
        double first = 0.0;
        double second = 0.0;
        text >> first >> second;
        if (round > 0) {
            ours.push_back(time);
            others.push_back(second);
        }
    }
    print({comparison.name + ", 2 threads", "DuckDB", "ms", medianOf(ours), medianOf(others),
           medianOf(ours) / medianOf(others), Limit{Limit::Sense::AtMost, comparison.maxRatio}});
}

}  // namespace

int main() {
    if (const std::string why = velmorak::npm::missing({"@duckdb/node-api"}); !why.empty()) {
        std::cout << "velmorak_bench_groups is left out: " << why << std::endl;
        return 0;
    }
    const velmorak::TemporaryFolder folder("bench-groups");
    writeMaker(folder.path());
    writeDocuments(folder.path());
    fs::current_path(folder.path());
    timeOf(folder.path(), "make.zedra", "2");
    compare(folder.path(), {"group", "group 10 M rows by 1000 keys, five aggregates", 1.3});
    compare(folder.path(), {"join", "join 10 M rows with 100,000", 1.5});
    return 0;
}
