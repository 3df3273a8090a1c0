/// velmorak_bench_files: a histogram of the rows in 1000 text files of 1 MB, beside that of the same rows in one file;
/// and adding a file to 1000.
/// Each run is a process of its own, without cached results; the files are in the page cache.
/// usage: velmorak_bench_files [FILES]
#include "Process.h"
#include "Row.h"
#include "Timing.h"

#include <charconv>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace {

using namespace velmorak::bench;
namespace fs = std::filesystem;

constexpr std::size_t fileBytes = 1'000'000;
constexpr std::string_view header = "a,b,c,d\n";
constexpr int rounds = 3;
constexpr double maxRatio = 1.1;
constexpr double maxScalingRatio = 1.1;
/// Adding a file, beside the run over all of them.
constexpr double maxAddingRatio = 0.03;
/// With so many logarithms of the gamma function, 1 MB takes as long as 12 MB do otherwise: what takes less than 10 ms
/// is not kept.
constexpr int termsOfLongExpression = 60;

class Folder {
public:
    Folder() {
        std::string name = (fs::temp_directory_path() / "velmorak-bench-files-XXXXXX").string();
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

/// Four columns of numbers that are the same in every run.
std::string rowsOf(std::size_t file) {
    std::uint64_t state = 0x9E3779B97F4A7C15U + file;
    std::string text;
    text.reserve(fileBytes + 100);
    while (text.size() < fileBytes) {
        for (int column = 0; column < 4; ++column) {
            state = state * 6364136223846793005U + 1442695040888963407U;
            text += std::to_string(static_cast<double>(state >> 11U) * 0x1p-53 * 100.0);
            text += column < 3 ? ',' : '\n';
        }
    }
    return text;
}

void writeFiles(const fs::path& folder, std::size_t count) {
    fs::create_directory(folder / "many");
    std::ofstream whole(folder / "one.csv", std::ios::binary);
    whole << header;
    for (std::size_t i = 0; i < count; ++i) {
        const std::string rows = rowsOf(i);
        std::ofstream(folder / "many" / (std::to_string(i) + ".csv"), std::ios::binary) << header << rows;
        whole << rows;
    }
}

std::string longExpression() {
    std::string text = "0";
    for (int i = 1; i <= termsOfLongExpression; ++i) {
        text += std::string(" + lgamma(") + "abc"[i % 3] + " + " + std::to_string(i) + ")";
    }
    return text;
}

void writeDocument(const fs::path& document, const std::string& files,
                   const std::string& expression = "sqrt(a * b) + c") {
    std::ofstream(document) << R"({"zedra": 1, "plugins": [
        {"name": "Rows", "kind": "CsvTable", "inputs": [{"name": "file", "value": ")"
                            << files << R"("}]},
        {"name": "Bars", "kind": "Histogram1D", "inputs": [{"name": "table", "from": ["Rows", "table"]},
            {"name": "expression", "value": ")"
                            << expression << R"("}, {"name": "bins", "value": "100"},
            {"name": "low", "value": "0"}, {"name": "high", "value": "200"}, {"name": "weight", "value": "d"}]}]})";
}

double timeOf(const fs::path& document, const std::string& threads) {
    const fs::path cache = document.parent_path() / "cache";
    fs::remove_all(cache);
    setenv("XDG_CACHE_HOME", cache.c_str(), 1);
    return run({VELMORAK_RUN, "-j", threads, document.string()}).wallMs;
}

struct Pair {
    double many = 0.0;
    double one = 0.0;
};

/// In turn; the first round, which fills the page cache, does not count.
Pair mediansOn(const fs::path& folder, const std::string& threads) {
    std::vector<double> many;
    std::vector<double> one;
    for (int round = 0; round <= rounds; ++round) {
        const double timeOfMany = timeOf(folder / "many.zedra", threads);
        const double timeOfOne = timeOf(folder / "one.zedra", threads);
        if (round > 0) {
            many.push_back(timeOfMany);
            one.push_back(timeOfOne);
        }
    }
    return {medianOf(many), medianOf(one)};
}

/// A run over files that take long enough to add up, and another one after a file was added.
void addOneFile(const fs::path& folder, std::size_t count) {
    writeDocument(folder / "long.zedra", "many", longExpression());
    const double whole = timeOf(folder / "long.zedra", "2");
    std::ofstream(folder / "many" / "added.csv", std::ios::binary) << header << rowsOf(count);
    const double added = run({VELMORAK_RUN, "-j", "2", (folder / "long.zedra").string()}).wallMs;
    printNotSlower("adding one file of 1 MB to " + std::to_string(count) + ", long expression, 2 threads",
                   "the run over all of them", added, whole, maxAddingRatio);
}

}  // namespace

int main(int count, char** arguments) {
    std::size_t files = 1000;
    if (count > 1) {
        const std::string_view text = arguments[1];
        std::from_chars(text.data(), text.data() + text.size(), files);
    }
    const Folder folder;
    writeFiles(folder.path, files);
    writeDocument(folder.path / "many.zedra", "many");
    writeDocument(folder.path / "one.zedra", "one.csv");
    // Digests of younger files are not trusted, and are computed twice.
    std::this_thread::sleep_for(std::chrono::seconds(3));
    const std::string work = std::to_string(files) + " text files of 1 MB";
    const Pair onOne = mediansOn(folder.path, "1");
    printNotSlower(work + ", 1 thread", "one file, same rows", onOne.many, onOne.one, maxRatio);
    const Pair onTwo = mediansOn(folder.path, "2");
    printNotSlower(work + ", 2 threads", "one file, same rows", onTwo.many, onTwo.one, maxRatio);
    const double speedUp = onOne.many / onTwo.many;
    const double others = onOne.one / onTwo.one;
    print({work + ", speed-up by a second thread", "one file, same rows", "x", speedUp, others, others / speedUp,
           Limit{Limit::Sense::AtMost, maxScalingRatio}});
    addOneFile(folder.path, files);
    return 0;
}
