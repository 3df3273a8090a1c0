#include <arrow/ArrowFile.h>

#include "ExpectedColumns.h"
#include "Npm.h"
#include "ReadTable.h"

#include <gtest/gtest.h>

#include <unistd.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <fstream>
#include <sstream>

namespace velmorak {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;

ReadTable readFile(const fs::path& file) {
    QuietContext context;
    return readTable(*openArrow(file, {}, nullptr, context));
}

std::string contentOf(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

/// A file that the npm package apache-arrow writes.
struct Written {
    std::string form;
    std::string compression;
    int batches = 0;
};

class ArrowFiles : public testing::TestWithParam<Written> {
protected:
    void SetUp() override {
        if (const std::string reason = npm::missing({"apache-arrow"}); !reason.empty()) {
            GTEST_SKIP() << reason;
        }
        const Written& written = GetParam();
        file = fs::path(testing::TempDir()) / ("written" + std::to_string(getpid()) + ".arrow");
        values =
            Json::parse(npm::run(fs::path(SCRIPTS) / "write.mjs",
                                 {file.string(), written.form, written.compression, std::to_string(written.batches)}));
    }
    void TearDown() override { fs::remove(file); }

    fs::path file;
    Json values;
};

TEST_P(ArrowFiles, haveTheValuesThatApacheArrowWrote) {
    const ReadTable table = readFile(file);
    EXPECT_EQ(table.rows, static_cast<std::uint64_t>(40 * GetParam().batches));
    EXPECT_EQ(table.schema.size(), values.size());
    for (const auto& [name, column] : table.columns) {
        SCOPED_TRACE(name);
        compareColumn(column, values.at(name));
    }
}

TEST_P(ArrowFiles, haveReadableSummaries) {
    const columnar::TableSummary summary = summariseArrow(file);
    EXPECT_EQ(summary.rows, static_cast<std::uint64_t>(40 * GetParam().batches));
    for (const auto& column : summary.columns) {
        EXPECT_EQ(column.complaint, "") << column.info.name;
    }
}

/// Every byte in turn is wrong, or the last one: the file is read or refused with a sentence that names it.
TEST_P(ArrowFiles, thatAreDamagedAreReadOrRefusedWithASentence) {
    const std::string bytes = contentOf(file);
    const fs::path damaged = file.string() + ".damaged";
    int refused = 0;
    for (std::size_t i = 0; i < bytes.size(); i += 37) {
        std::string other = i % 2 == 0 ? bytes.substr(0, i) : bytes;
        if (i < other.size()) {
            other[i] = static_cast<char>(~other[i]);
        }
        std::ofstream(damaged, std::ios::binary) << other;
        try {
            readFile(damaged);
        } catch (const Failure& failure) {
            EXPECT_NE(std::string(failure.what()).find(".damaged"), std::string::npos) << failure.what();
            ++refused;
        }
    }
    EXPECT_GT(refused, 10);
    fs::remove(damaged);
}

INSTANTIATE_TEST_SUITE_P(OfEveryForm, ArrowFiles,
                         testing::Values(Written{"file", "none", 3}, Written{"file", "lz4", 2},
                                         Written{"file", "zstd", 3}, Written{"stream", "none", 2},
                                         Written{"stream", "zstd", 1}, Written{"file", "none", 0}),
                         [](const auto& instance) {
                             const Written& written = instance.param;
                             return written.form + "_" + written.compression + "_" + std::to_string(written.batches);
                         });

/// A file that claims that its first buffer has 2^31 bytes when it is unpacked.
TEST_P(ArrowFiles, areRefusedWhereABufferGrowsTooLarge) {
    if (GetParam().compression != "zstd") {
        return;
    }
    std::string bytes = contentOf(file);
    const std::size_t packed = bytes.find("\x28\xB5\x2F\xFD");
    ASSERT_NE(packed, std::string::npos);
    bytes.replace(packed - 8, 8, std::string("\0\0\0\x80\0\0\0\0", 8));
    std::ofstream(file, std::ios::binary) << bytes;
    try {
        readFile(file);
        FAIL() << "it was read";
    } catch (const Failure& failure) {
        EXPECT_NE(std::string(failure.what()).find("2147483648 bytes when it is unpacked"), std::string::npos)
            << failure.what();
    }
}

TEST(ArrowTable, refusesOtherFilesWithASentence) {
    const fs::path file = fs::path(testing::TempDir()) / ("no" + std::to_string(getpid()) + ".arrow");
    std::ofstream(file) << "x,y\n1,2\n3,4\n";
    try {
        readFile(file);
        ADD_FAILURE();
    } catch (const Failure& failure) {
        EXPECT_NE(std::string(failure.what()).find(".arrow: it is neither an Arrow file"), std::string::npos);
    }
    fs::remove(file);
}

}  // namespace
}  // namespace velmorak
