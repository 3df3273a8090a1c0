#include "LargeFile.h"

#include "executor/ThreadPool.h"
#include "store/FilePrefetchHasher.h"

#include <gtest/gtest.h>

#include <future>
#include <optional>

namespace velmorak::test {
namespace {

class FilePrefetchHasherTest : public testing::Test {
protected:
    const LargeFile file;
    FileHashes hashes;
    const std::atomic<bool> never = false;
};

TEST_F(FilePrefetchHasherTest, computesTheDigestOnAnotherThread) {
    std::promise<void> isHashed;
    ThreadPool pool(2);
    FilePrefetchHasher hasher(hashes);
    EXPECT_TRUE(hasher.begin(file.path, file.oldStamp));
    pool.submit([&] { isHashed.set_value(); });  // After the task of the hasher: one thread runs both.
    isHashed.get_future().wait();
    EXPECT_TRUE(hashes.changes()) << "nobody else asked for it";
    EXPECT_EQ(hashes.of(file.path, never), file.digest);
}

TEST_F(FilePrefetchHasherTest, cancelsItsTasksWithTheRun) {
    for (int i = 0; i < 200; ++i) {
        const ThreadPool pool(2);
        FileHashes ofRun;
        FilePrefetchHasher hasher(ofRun);
        hasher.begin(file.path, file.oldStamp);
        hasher.begin(file.path, file.oldStamp);
    }
    EXPECT_EQ(hashes.of(file.path, never), file.digest);
}

TEST_F(FilePrefetchHasherTest, beginsOnlyWhereItPays) {
    FileStamp small = file.oldStamp;
    small.size = 1000;
    FileStamp young = file.oldStamp;
    young.changedNs = nowNs();
    FilePrefetchHasher hasher(hashes);
    EXPECT_FALSE(hasher.begin(file.path, file.oldStamp)) << "there is no other thread";
    const ThreadPool pool(2);
    EXPECT_FALSE(hasher.begin(file.path, small));
    EXPECT_FALSE(hasher.begin(file.path, young));
}

}  // namespace
}  // namespace velmorak::test
