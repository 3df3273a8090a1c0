/// velmorak_bench_cells: a histogram of 4000 x 4000 cells in a run of velmorak-run, beside one of 100 x 100 of the same
/// rows: how many rows a second its plug-in takes, and the memory of the program.
#include "Process.h"
#include "Row.h"
#include "Timing.h"
#include "TupleFile.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

namespace {

using namespace velmorak::bench;
using Json = nlohmann::json;

constexpr int manyBins = 4000;
constexpr int fewBins = 100;
constexpr int rounds = 5;
constexpr const char* plugin = "Plane";
constexpr double minRate = 0.25;
constexpr double maxMemory = 2.0;
/// Fills, and sums of w, w squared, w x, w x squared, w y, w y squared and w x y of one cell, with its pivot.
constexpr double bytesOfSums = 80.0;

struct Fill {
    double ms = 0.0;
    double peakMegabytes = 0.0;
};

/// @return time of the histogram's plug-in as the record of the run says, without making and writing the rest.
double timeIn(const std::filesystem::path& record) {
    const Json all = Json::parse(std::ifstream(record));
    for (const Json& each : all.at("plugins")) {
        if (each.at("name") == plugin) {
            return each.at("seconds").get<double>() * 1e3;
        }
    }
    std::cerr << record << " does not name " << plugin << std::endl;
    std::exit(2);
}

Fill fill(const Folder& folder, int bins) {
    Json document = Json::parse(std::ifstream(VELMORAK_CELLS "/cells.zedra"));
    for (Json& input : document["plugins"][1]["inputs"]) {
        if (input["name"] == "xbins" || input["name"] == "ybins") {
            input["value"] = std::to_string(bins);
        }
    }
    std::filesystem::remove_all(folder / "cache");
    setenv("XDG_CACHE_HOME", (folder / "cache").c_str(), 1);
    std::ofstream(folder / "cells.zedra") << document;
    const std::string results = (folder / "results").string();
    const ProcessRun done = run({VELMORAK_RUN, "-j", "2", "--results", results, (folder / "cells.zedra").string()});
    return {timeIn(results + "/run.json"), done.peakMegabytes};
}

}  // namespace

int main() {
    const Folder folder;
    std::vector<double> many;
    std::vector<double> few;
    double peak = 0.0;
    for (int round = 0; round < rounds; ++round) {
        const Fill sparse = fill(folder, manyBins);
        many.push_back(sparse.ms);
        peak = std::max(peak, sparse.peakMegabytes);
        few.push_back(fill(folder, fewBins).ms);
    }
    printFaster("2D fill in a run, 4000 x 4000, 3 M rows, 2 threads", "100 x 100", medianOf(many), medianOf(few),
                minRate);
    const double sums = 1.0 * manyBins * manyBins * bytesOfSums / 1e6;
    print({"the same: peak of the program's memory", "its sums", "MB", peak, sums, peak / sums,
           Limit{Limit::Sense::AtMost, maxMemory}});
    return 0;
}
