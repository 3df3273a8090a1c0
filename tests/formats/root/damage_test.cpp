#include <root/RootFile.h>

#include "QuietContext.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <random>

namespace velmorak {
namespace {

namespace fs = std::filesystem;

std::string contentOf(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

/// Reads all tables of a file. @return why that failed; empty if it did not.
std::string failureOf(const fs::path& file);

bool isReadable(const fs::path& file) {
    return failureOf(file).empty();
}

std::string failureOf(const fs::path& file) {
    try {
        for (const RootEntry& entry : listRoot(file)) {
            if (!entry.isTable) {
                continue;
            }
            QuietContext context;
            const std::unique_ptr<TableReader> reader = openRootTable(file, entry.path, {}, context);
            Chunk chunk;
            while (reader->next(chunk)) {
                reader->complete(chunk);
                chunk = {};
            }
        }
        return "";
    } catch (const Failure& failure) {
        EXPECT_FALSE(std::string(failure.what()).empty());
        return failure.what();
    }
}

class RootDamage : public testing::TestWithParam<const char*> {
protected:
    RootDamage() : content(contentOf(fs::path(ROOT_FILES) / GetParam())) {}
    ~RootDamage() override { fs::remove(file); }

    void write(const std::string& bytes) const { std::ofstream(file, std::ios::binary) << bytes; }

    std::string content;
    fs::path file = fs::temp_directory_path() / ("velmorak-damage-" + std::to_string(getpid()) + ".root");
};

TEST_P(RootDamage, ofAnyByteFailsWithASentenceOrIsHarmless) {
    std::mt19937 random(7);
    int failed = 0;
    for (int round = 0; round < 300; ++round) {
        std::string damaged = content;
        for (int change = 0; change < 3; ++change) {
            damaged[random() % damaged.size()] = static_cast<char>(random());
        }
        write(damaged);
        failed += isReadable(file) ? 0 : 1;
    }
    EXPECT_GT(failed, 0);
}

TEST_P(RootDamage, byCuttingTheFileOffFails) {
    ASSERT_FALSE(content.empty());
    for (std::size_t size = 0; size < content.size(); size += content.size() / 40 + 1) {
        write(content.substr(0, size));
        isReadable(file);
    }
    write(content.substr(0, 30));
    EXPECT_FALSE(isReadable(file));
}

TEST(RootBasket, namesFileTreeBranchAndEntriesWhereItIsDamaged) {
    const std::string content = contentOf(fs::path(ROOT_FILES) / "uproot-sample-6.20.04-lz4.root");
    const fs::path file = fs::temp_directory_path() / ("velmorak-basket-" + std::to_string(getpid()) + ".root");
    std::string damaged = content;
    const std::size_t frame = damaged.find("L4", damaged.find("TBasket"));
    ASSERT_NE(frame, std::string::npos);
    damaged[frame + 30] = static_cast<char>(damaged[frame + 30] ^ 0x55);
    std::ofstream(file, std::ios::binary) << damaged;
    const std::string failure = failureOf(file);
    fs::remove(file);
    EXPECT_NE(failure.find(file.string() + ": the branch "), std::string::npos) << failure;
    EXPECT_NE(failure.find(" of sample is damaged: the basket of entries "), std::string::npos) << failure;
}

INSTANTIATE_TEST_SUITE_P(Files, RootDamage,
                         testing::Values("uproot-issue-60.root", "uproot-double32-float16.root",
                                         "uproot-vectorVectorDouble.root", "test_stl_containers_rntuple_v1-0-0-0.root",
                                         "test_float_types_rntuple_v1-0-0-0.root", "uproot-issue57.root",
                                         "uproot-small-evnt-tree-nosplit.root", "uproot-stl_containers.root"),
                         [](const testing::TestParamInfo<const char*>& file) {
                             std::string name = file.param;
                             std::erase_if(name, [](char letter) { return std::isalnum(letter) == 0; });
                             return name;
                         });

}  // namespace
}  // namespace velmorak
