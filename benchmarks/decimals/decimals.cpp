/// velmorak_bench_decimals: complete pipelines that read tuples, run by velmorak-run with our own reader of decimal
/// numbers and with std::from_chars. Each is a process of its own.
#include "Process.h"
#include "Row.h"
#include "Timing.h"
#include "TupleFile.h"

#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

namespace {

using namespace velmorak::bench;

constexpr std::size_t rows = 2'000'000;
constexpr std::size_t columns = 4;
constexpr int rounds = 7;
constexpr double minGain = 1.1;  ///< Our own reader is kept as long as a pipeline loses 10 % without it.

/// Nothing is kept from one run to the next.
/// @param libraries folder of a library to use in place of the one beside the program; empty for that.
ProcessRun runWith(const std::string& libraries, const Folder& folder, const std::string& threads) {
    std::filesystem::remove_all(folder / "cache");
    setenv("XDG_CACHE_HOME", (folder / "cache").c_str(), 1);
    setenv("LD_LIBRARY_PATH", libraries.c_str(), 1);
    return run({VELMORAK_RUN, "-j", threads, (folder / "pipeline.zedra").string()});
}

struct Medians {
    double ours;
    double standard;
};

Medians medians(const Folder& folder, const std::string& threads, double ProcessRun::*time) {
    std::vector<double> ours;
    std::vector<double> standard;
    for (int round = 0; round < rounds; ++round) {
        ours.push_back(runWith("", folder, threads).*time);
        standard.push_back(runWith(VELMORAK_FROM_CHARS, folder, threads).*time);
    }
    return {medianOf(ours), medianOf(standard)};
}

void compare(const Folder& folder, const std::string& file, std::optional<Limit> limit) {
    const std::string work = file + ", filter, 2 formulas, 3 histograms, 2 M rows, ";
    const std::string peer = "with std::from_chars";
    const Medians onOne = medians(folder, "1", &ProcessRun::processorMs);
    print({work + "processor time", peer, "ms", onOne.ours, onOne.standard, onOne.standard / onOne.ours, limit});
    const Medians onTwo = medians(folder, "2", &ProcessRun::wallMs);
    print({work + "2 threads", peer, "ms", onTwo.ours, onTwo.standard, onTwo.standard / onTwo.ours});
}

}  // namespace

int main() {
    const Folder folder;
    std::filesystem::copy_file(VELMORAK_PIPELINE "/pipeline.zedra", folder / "pipeline.zedra");
    writeTuple(folder / "numbers.aida", rows, columns);
    const std::filesystem::path packed = gzip(folder / "numbers.aida");
    compare(folder, "gzipped tuple", {});
    // The pipeline reads this file, whatever its name says of packing.
    std::filesystem::rename(folder / "numbers.aida", packed);
    compare(folder, "plain tuple", Limit{Limit::Sense::AtLeast, minGain});
    return 0;
}
