#include "LargeFile.h"

#include "store/FileHashes.h"

#include <gtest/gtest.h>

#include <future>
#include <latch>
#include <vector>

namespace velmorak::test {
namespace {

namespace fs = std::filesystem;

class FileHashesTest : public testing::Test {
protected:
    ~FileHashesTest() override { fs::remove(copy); }

    const LargeFile file;
    const fs::path copy = file.path.string() + ".copy";
    FileHashes hashes;
    const std::atomic<bool> never = false;
};

TEST_F(FileHashesTest, areTheSameForAllThatAskAtOnce) {
    constexpr int askers = 4;
    std::latch begin(askers);
    std::vector<std::future<std::optional<Digest>>> answers;
    for (int i = 0; i < askers; ++i) {
        answers.push_back(std::async(std::launch::async, [&] {
            begin.arrive_and_wait();
            return hashes.of(file.path, never);
        }));
    }
    for (auto& answer : answers) {
        EXPECT_EQ(answer.get(), file.digest);
    }
}

TEST_F(FileHashesTest, areComputedByTheNextAskerWhenTheReaderIsStopped) {
    std::atomic<bool> isStopped = false;
    auto first = std::async(std::launch::async, [&] { return hashes.of(file.path, isStopped); });
    auto second = std::async(std::launch::async, [&] { return hashes.of(file.path, never); });
    isStopped = true;
    const std::optional<Digest> found = first.get();
    EXPECT_TRUE(!found || found == file.digest);
    EXPECT_EQ(second.get(), file.digest);
}

TEST_F(FileHashesTest, areNotWaitedForByAStoppedAsker) {
    auto first = std::async(std::launch::async, [&] { return hashes.of(file.path, never); });
    const std::atomic<bool> isStopped = true;
    const std::optional<Digest> found = hashes.of(file.path, isStopped);
    EXPECT_TRUE(!found || found == file.digest);
    EXPECT_EQ(first.get(), file.digest);
}

TEST_F(FileHashesTest, areEmptyForWhatIsNotARegularFile) {
    EXPECT_EQ(hashes.of(file.path.string() + ".absent", never), std::nullopt);
    EXPECT_EQ(hashes.of(file.path.parent_path(), never), std::nullopt);
}

TEST_F(FileHashesTest, surviveTheProgram) {
    hashes.of(file.path, never);
    const std::optional<std::string> bytes = hashes.changes();
    ASSERT_TRUE(bytes);
    EXPECT_FALSE(hashes.changes()) << "nothing was added since";
    FileHashes later;
    later.restore(*bytes);
    EXPECT_FALSE(later.changes()) << "what was restored is no change";
    EXPECT_EQ(later.of(file.path, never), file.digest);
}

/// Many files of one size must not be hashed one after the other because the first of them are known by now.
TEST_F(FileHashesTest, areAskedForOnlyWhereTheContentWasKnownBefore) {
    fs::copy_file(file.path, copy);
    const std::int64_t before = nowNs();
    ASSERT_EQ(hashes.of(file.path, never), file.digest);
    EXPECT_EQ(hashes.ofKnown(copy, *stampOf(copy), before, never), std::nullopt);
    EXPECT_EQ(hashes.ofKnown(copy, *stampOf(copy), nowNs(), never), file.digest);
    EXPECT_EQ(hashes.ofKnown(copy, *stampOf(copy), before, never), file.digest) << "by its own name";
}

TEST_F(FileHashesTest, areNotAskedForWhereNoFileHadTheSize) {
    ASSERT_EQ(hashes.of(file.path, never), file.digest);
    fs::resize_file(file.path, 1);
    EXPECT_EQ(hashes.ofKnown(file.path, *stampOf(file.path), nowNs(), never), std::nullopt);
}

}  // namespace
}  // namespace velmorak::test
