/// velmorak_bench_pipeline: a pipeline from a packed file to three histograms, run by velmorak-run, beside the same in
/// Python and beside a loop written by hand. Each is a process of its own.
#include "Process.h"
#include "Row.h"
#include "Timing.h"
#include "TupleFile.h"

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sstream>

namespace {

using namespace velmorak::bench;

constexpr std::size_t rows = 2'000'000;
constexpr std::size_t columns = 4;
constexpr int rounds = 5;
constexpr const char* work = "gzipped tuple, filter, 2 formulas, 3 histograms, 2 M rows";

struct Times {
    std::vector<double> wall;
    std::vector<double> processor;

    void add(const ProcessRun& run) {
        wall.push_back(run.wallMs);
        processor.push_back(run.processorMs);
    }
};

/// Nothing is kept from one run to the next.
ProcessRun runOurs(const Folder& folder, const std::string& threads) {
    std::filesystem::remove_all(folder / "cache");
    setenv("XDG_CACHE_HOME", (folder / "cache").c_str(), 1);
    return run({VELMORAK_RUN, "-j", threads, (folder / "pipeline.zedra").string()});
}

ProcessRun runByHand(const std::filesystem::path& packed, const std::string& threads) {
    return run({VELMORAK_BY_HAND, packed.string(), threads});
}

/// The time that the script says, without that of its imports.
ProcessRun runPython(const std::filesystem::path& csv, const std::string& precision) {
    ProcessRun result = run({"/usr/bin/python3", VELMORAK_PYTHON_PEER, csv.string(), precision});
    std::istringstream text(result.output);
    text.imbue(std::locale::classic());
    text >> result.wallMs;
    return result;
}

void compare(const Folder& folder) {
    writeTuple(folder / "numbers.aida", rows, columns);
    const std::filesystem::path packed = gzip(folder / "numbers.aida");
    writeCsv(folder / "numbers.csv", rows, columns);
    const std::filesystem::path csv = gzip(folder / "numbers.csv");
    std::filesystem::copy_file(VELMORAK_PIPELINE "/pipeline.zedra", folder / "pipeline.zedra");

    Times oursOnOne;
    Times oursOnTwo;
    Times handOnOne;
    Times handOnTwo;
    Times python;
    Times quickPython;
    for (int round = 0; round < rounds; ++round) {
        oursOnOne.add(runOurs(folder, "1"));
        oursOnTwo.add(runOurs(folder, "2"));
        handOnOne.add(runByHand(packed, "1"));
        handOnTwo.add(runByHand(packed, "2"));
        python.add(runPython(csv, "round_trip"));
        quickPython.add(runPython(csv, "high"));
    }
    const std::string onTwo = std::string(work) + ", 2 threads";
    const double ours = medianOf(oursOnTwo.wall);
    printFaster(onTwo, "Python, the same numbers", ours, medianOf(python.wall), 8.0);
    const double quick = medianOf(quickPython.wall);
    print({onTwo, "Python, inexact numbers", "ms", ours, quick, quick / ours});
    printNotSlower(onTwo, "by hand, 2 threads", ours, medianOf(handOnTwo.wall), 1.3);
    printNotSlower("the same on one thread, processor time", "by hand, one thread", medianOf(oursOnOne.processor),
                   medianOf(handOnOne.processor), 1.3);
    printFaster("the same, two threads beside one", "ours on one thread", ours, medianOf(oursOnOne.wall), 1.7);
}

std::string textIn(const std::filesystem::path& file) {
    std::ostringstream text;
    text << std::ifstream(file, std::ios::binary).rdbuf();
    return text.str();
}

/// @return peak of memory with so many rows, in MB.
double peakWith(const std::string& count, const Folder& folder) {
    std::string document = textIn(VELMORAK_PIPELINE "/memory.zedra");
    document.replace(document.find("100000000"), 9, count);
    std::ofstream(folder / "memory.zedra") << document;
    setenv("XDG_CACHE_HOME", (folder / ("cache" + count)).c_str(), 1);
    return run({VELMORAK_RUN, "-j", "2", (folder / "memory.zedra").string()}).peakMegabytes;
}

void printMemory(const std::string& what, double ours, const std::string& peer, double most) {
    print({what, peer, "MB", ours, most, ours / most, Limit{Limit::Sense::AtMost, 1.0}});
}

}  // namespace

int main() {
    const Folder folder;
    compare(folder);
    const double small = peakWith("2000000", folder);
    printMemory("formula, filter, 2 histograms, 8 M rows: peak", peakWith("8000000", folder), "2 M rows, and a fifth",
                1.2 * small);
    printMemory("formula, filter, 2 histograms, 100 M rows: peak", peakWith("100000000", folder), "limit", 300.0);
    return 0;
}
