#include "store/FilePrefetchHasher.h"

#include <gtest/gtest.h>
#include <oneapi/tbb/task_arena.h>

#include <unistd.h>
#include <fstream>
#include <future>
#include <latch>
#include <string>
#include <thread>

namespace velmorak {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

/// A file that is large enough to be read for a while, and was there for an hour.
class Digests : public testing::Test {
protected:
    Digests() {
        const std::string content(bytes, 'v');
        std::ofstream(file, std::ios::binary) << content;
        Sha256 digester;
        digester.add(content.data(), content.size());
        expected = digester.finish();
        grown = *stampOf(file);
        grown.changedNs -= std::chrono::nanoseconds(1h).count();
    }
    ~Digests() override { fs::remove(file); }

    static constexpr std::size_t bytes = std::size_t{24} << 20;
    fs::path file = fs::temp_directory_path() / ("velmorak-digests-" + std::to_string(getpid()));
    Digest expected{};
    FileStamp grown;
    FileHashes digests;
    const std::atomic<bool> never = false;
};

TEST_F(Digests, areTheSameForAllThatAskAtOnce) {
    constexpr int askers = 4;
    std::latch begin(askers);
    std::vector<std::future<std::optional<Digest>>> answers;
    for (int i = 0; i < askers; ++i) {
        answers.push_back(std::async(std::launch::async, [&] {
            begin.arrive_and_wait();
            return digests.of(file, never);
        }));
    }
    for (auto& answer : answers) {
        EXPECT_EQ(answer.get(), expected);
    }
}

TEST_F(Digests, areMadeByTheNextWhenTheReaderIsStopped) {
    std::atomic<bool> isStopped = false;
    auto first = std::async(std::launch::async, [&] { return digests.of(file, isStopped); });
    auto second = std::async(std::launch::async, [&] { return digests.of(file, never); });
    isStopped = true;
    const std::optional<Digest> found = first.get();
    EXPECT_TRUE(!found || found == expected);
    EXPECT_EQ(second.get(), expected);
}

TEST_F(Digests, areNotWaitedForByOneWhoIsStopped) {
    auto first = std::async(std::launch::async, [&] { return digests.of(file, never); });
    const std::atomic<bool> isStopped = true;
    const std::optional<Digest> found = digests.of(file, isStopped);
    EXPECT_TRUE(!found || found == expected);
    EXPECT_EQ(first.get(), expected);
}

TEST_F(Digests, madeAheadAreThere) {
    oneapi::tbb::task_arena arena(2);
    arena.execute([&] {
        FilePrefetchHasher ahead(digests);
        EXPECT_TRUE(ahead.begin(file, grown));
        // Made by another thread, or else they would not be anybody's.
        while (!digests.changes()) {
            std::this_thread::yield();
        }
    });
    EXPECT_EQ(digests.of(file, never), expected);
}

TEST_F(Digests, madeAheadAreGivenUpWithTheRun) {
    oneapi::tbb::task_arena arena(2);
    for (int i = 0; i < 200; ++i) {
        arena.execute([&] {
            FileHashes ofRun;
            FilePrefetchHasher ahead(ofRun);
            ahead.begin(file, grown);
            ahead.begin(file, grown);
        });
    }
    EXPECT_EQ(digests.of(file, never), expected);
}

TEST_F(Digests, areMadeAheadOnlyWhereItPays) {
    oneapi::tbb::task_arena arena(2);
    FileStamp small = grown;
    small.size = 1000;
    FileStamp young = grown;
    young.changedNs = nowNs();
    arena.execute([&] {
        FilePrefetchHasher ahead(digests);
        EXPECT_FALSE(ahead.begin(file, small));
        EXPECT_FALSE(ahead.begin(file, young));
    });
    oneapi::tbb::task_arena(1).execute([&] {
        FilePrefetchHasher ahead(digests);
        EXPECT_FALSE(ahead.begin(file, grown));
    });
}

TEST_F(Digests, ofAnAbsentFileAreNone) {
    EXPECT_EQ(digests.of(file.string() + ".absent", never), std::nullopt);
    EXPECT_EQ(digests.of(fs::temp_directory_path(), never), std::nullopt);
}

}  // namespace
}  // namespace velmorak
