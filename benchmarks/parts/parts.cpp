/// velmorak_bench_parts: one run beside the same in 16 parts on the same number of threads, and merging 10,000 parts.
#include "Process.h"
#include "Row.h"
#include "Timing.h"

#include "run/parts/JobFolder.h"

#include <velmorak/TemporaryFolder.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace {

namespace fs = std::filesystem;
using namespace velmorak;
using namespace velmorak::bench;

constexpr int files = 16;
constexpr int rowsInFile = 6'000'000;
constexpr std::size_t manyParts = 10'000;
constexpr int rounds = 3;

std::string plugin(const std::string& name, const std::string& kind, const std::string& inputs) {
    return R"({"name": ")" + name + R"(", "kind": ")" + kind + R"(", "inputs": [)" + inputs + "]}";
}

/// Ten histograms of a table.
void writeDocument(const fs::path& file, const std::string& source) {
    std::string plugins = source;
    for (int i = 0; i < 10; ++i) {
        plugins +=
            "," +
            plugin("h" + std::to_string(i), "Histogram1D",
                   R"({"name": "table", "from": ["rows", "table"]}, {"name": "expression", "value": "x + )" +
                       std::to_string(i) + R"("}, {"name": "low", "value": "0"}, {"name": "high", "value": "20"})");
    }
    std::ofstream(file) << R"({"zedra": 1, "plugins": [)" << plugins << "]}\n";
}

void writeFiles(const fs::path& folder) {
    std::mt19937 random(1);
    for (int number = 0; number < files; ++number) {
        std::ofstream file(folder / ("run_" + std::to_string(10 + number) + ".csv"));
        file << "x,y,z\n";
        for (int row = 0; row < rowsInFile; ++row) {
            file << static_cast<double>(random() % 1000000) / 1e5 << ',' << random() % 1000 << ',' << random() % 1000
                 << '\n';
        }
    }
}

double runOnce(const fs::path& folder) {
    return run({VELMORAK_RUN, "-j", "2", "--results", (folder / "plain").string(), (folder / "files.zedra").string()})
        .wallMs;
}

/// Two processes at a time, of one thread each.
double runInParts(const fs::path& folder) {
    const std::string job = (folder / "job").string();
    fs::remove_all(job);
    return timeOf(
        [&] {
            run({VELMORAK_RUN, "--plan", job, "--parts", "16", "-j", "2", (folder / "files.zedra").string()});
            std::vector<std::thread> workers;
            for (int worker = 0; worker < 2; ++worker) {
                workers.emplace_back([&job, worker] {
                    for (int part = 1 + worker; part <= 16; part += 2) {
                        run({VELMORAK_RUN, "--part", std::to_string(part), "-j", "1", job});
                    }
                });
            }
            for (std::thread& worker : workers) {
                worker.join();
            }
            run({VELMORAK_RUN, "--merge", "-j", "2", "--results", (folder / "merged").string(), job});
        },
        Clock::Wall);
}

void compareWithOneRun(const fs::path& folder) {
    writeFiles(folder);
    writeDocument(folder / "files.zedra", plugin("rows", "CsvTable", R"({"name": "file", "value": "run_*.csv"})"));
    std::vector<double> ours;
    std::vector<double> plain;
    for (int round = 0; round <= rounds; ++round) {
        plain.push_back(runOnce(folder));
        ours.push_back(runInParts(folder));
    }
    printNotSlower("16 parts and a merge, 96 M rows in 16 files, 2 threads", "one run", medianOf(ours), medianOf(plain),
                   1.15);
}

/// Writes all parts like the first one, which a process has done, since only the time of merging counts.
void writeParts(const fs::path& folder) {
    const JobFolder job(folder);
    const JobPlan plan = readPlan(job.planFile());
    for (std::size_t part = 1; part < plan.parts.size(); ++part) {
        PartReader first(job.partFile(0));
        PartIdentity identity = first.identity();
        identity.number = part + 1;
        PartWriter writer(job.partFile(part), identity);
        while (std::optional<PartRecord> record = first.next()) {
            record->piece.first = plan.parts[part].range.begin.chunk;
            writer.add(*record);
        }
        writer.commit(first.summary());
    }
}

void mergeMany(const fs::path& folder) {
    writeDocument(folder / "many.zedra",
                  plugin("rows", "RandomTable",
                         R"({"name": "rows", "value": ")" + std::to_string(manyParts * 32768) +
                             R"json("}, {"name": "columns", "value": "x: uniform(0, 10)"})json"));
    const std::string job = (folder / "many").string();
    run({VELMORAK_RUN, "--plan", job, "--parts", std::to_string(manyParts), (folder / "many.zedra").string()});
    run({VELMORAK_RUN, "--part", "1", "-j", "1", job});
    writeParts(job);
    const ProcessRun merged = run({VELMORAK_RUN, "--merge", "-j", "1", "--results", (folder / "merged").string(), job});
    const std::string work = "merging 10,000 parts of ten histograms with 100 bins";
    print({work, "none", "ms", merged.wallMs, 0.0, 0.0});
    print({work + ", peak memory", "none", "MB", merged.peakMegabytes, 0.0, 0.0});
}

}  // namespace

int main() {
    setenv("VELMORAK_CACHE_LIMIT", "0", 1);
    const TemporaryFolder folder("bench-parts");
    compareWithOneRun(folder.path());
    mergeMany(folder.path());
    return 0;
}
