#include "Program.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace {

namespace fs = std::filesystem;

class Memory : public ::testing::Test {
protected:
    Memory() : folder(fs::temp_directory_path() / ("velmorak-memory-" + std::to_string(getpid()))) {
        fs::create_directories(folder);
        setenv("VELMORAK_CACHE_LIMIT", "0", 1);
        // A sanitizer holds freed memory back; that would be measured too.
        const char* const options = std::getenv("ASAN_OPTIONS");
        setenv("ASAN_OPTIONS", ((options ? std::string(options) + ":" : "") + "quarantine_size_mb=1").c_str(), 1);
    }
    ~Memory() override {
        unsetenv("VELMORAK_CACHE_LIMIT");
        std::error_code ignored;
        fs::remove_all(folder, ignored);
    }

    /// A plug-in fed by the table of another, or by none, with one value.
    static std::string plugin(const std::string& name, const std::string& kind, const std::string& source,
                              const std::string& input, const std::string& value) {
        const std::string wire = R"({"name": "table", "from": [")" + source + R"(", "table"]}, )";
        return R"({"name": ")" + name + R"(", "kind": ")" + kind + R"(", "inputs": [)" + (source.empty() ? "" : wire) +
               R"({"name": ")" + input + R"(", "value": ")" + value + R"("}]})";
    }

    /// A table of so many rows through a formula and a filter into two histograms.
    std::string document(std::size_t rows) const {
        const fs::path file = folder / ("rows" + std::to_string(rows) + ".zedra");
        std::ofstream(file) << R"({"zedra": 1, "plugins": [)"
                            << plugin("Numbers", "RandomTable", "", "rows", std::to_string(rows)) << ','
                            << plugin("Square", "Formula", "Numbers", "expression", "x*x") << ','
                            << plugin("Cut", "Filter", "Square", "condition", "result > 0.2") << ','
                            << plugin("Squares", "Histogram1D", "Cut", "expression", "result") << ','
                            << plugin("Roots", "Histogram1D", "Cut", "expression", "x") << "]}\n";
        return file.string();
    }

    double peakWith(std::size_t rows) const {
        const Ended ended = runProgram({VELMORAK_RUN, "-j", "2", document(rows)});
        EXPECT_EQ(ended.status, 0) << ended.errors;
        EXPECT_NE(ended.errors.find(std::to_string(rows) + " rows"), std::string::npos) << ended.errors;
        return static_cast<double>(ended.peakKilobytes);
    }

    fs::path folder;
};

TEST_F(Memory, ofARunDoesNotGrowWithTheRowsOfItsTables) {
    const double little = peakWith(2'000'000);
    EXPECT_LT(peakWith(8'000'000), 1.2 * little);
    EXPECT_LT(little, 300e3);
}

}  // namespace
