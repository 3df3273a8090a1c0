/// velmorak_bench_isolation: 20 million rows of doubles through a user's own row-wise kind and accumulator, in helper
/// processes and inside the program. The rows are in the page cache; nothing is kept from one run to the next. Times
/// are those of the whole program.
#include "Process.h"
#include "Row.h"
#include "Timing.h"

#include <velmorak/TemporaryFolder.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

namespace {

using namespace velmorak::bench;
namespace fs = std::filesystem;

constexpr int rounds = 5;
constexpr double maxRatio = 1.3;

void writeDocument(const fs::path& file) {
    std::ofstream(file) << R"json({"zedra": 1, "plugins": [
        {"name": "Random", "kind": "RandomTable", "inputs": [{"name": "rows", "value": "20000000"},
            {"name": "columns", "value": "x: gauss(0, 1); y: gauss(0, 1)"}]
},
        {"name": "Polar", "kind": "Polar", "inputs": [{"name": "table", "from": ["Random", "table"]},
            {"name": "x", "value": "x"}, {"name": "y", "value": "y"}]},
        {"name": "Radius", "kind": "Histogram1D", "inputs": [{"name": "table", "from": ["Polar", "table"]},
            {"name": "expression", "value": "r"}, {"name": "high", "value": "5"}]},
        {"name": "Sum", "kind": "OwnSum", "inputs": [{"name": "table", "from": ["Polar", "table"]},
            {"name": "x", "value": "phi"}]}]
})json";
}

double timeOf(const fs::path& folder, const char* isolate, const std::string& threads) {
    fs::remove_all(folder / "cache");
    setenv("XDG_CACHE_HOME", (folder / "cache").c_str(), 1);
    setenv("VELMORAK_ISOLATE", isolate, 1);
    return run({VELMORAK_RUN, "-j", threads, (folder / "polar.zedra").string()}).wallMs;
}

/// In turn; the first round of each does not count.
void compare(const fs::path& folder, const std::string& threads) {
    std::vector<double> isolated;
    std::vector<double> inside;
    for (int round = 0; round <= rounds; ++round) {
        const double own = timeOf(folder, "", threads);
        const double other = timeOf(folder, "0", threads);
        if (round > 0) {
            isolated.push_back(own);
            inside.push_back(other);
        }
    }
    printNotSlower("kinds in helper processes, 20 million rows of doubles, " + threads + " threads",
                   "the same kinds inside the program", medianOf(isolated), medianOf(inside), maxRatio);
}

}  // namespace

int main() {
    const velmorak::TemporaryFolder folder("isolation");
    setenv("VELMORAK_COLLECTIONS", VELMORAK_OWN_COLLECTIONS, 1);
    writeDocument(folder.path() / "polar.zedra");
    for (const char* const threads : {"1", "2"}) {
        compare(folder.path(), threads);
    }
}
