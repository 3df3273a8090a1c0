#include "store/DiskStore.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace velmorak::test {
namespace {

namespace fs = std::filesystem;

Digest keyOf(std::uint64_t number) {
    Sha256 hash;
    hash.addNumber(number);
    return hash.finish();
}

class DiskStoreTest : public ::testing::Test {
protected:
    DiskStoreTest() { fs::remove_all(folder); }
    ~DiskStoreTest() override { fs::remove_all(folder); }

    DiskStore storeFor(std::uint64_t limit = 1 << 20) {
        return {{folder, limit}, [this](const std::string& message) { warnings.push_back(message); }};
    }

    std::vector<fs::path> files() const {
        std::vector<fs::path> all;
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
            if (entry.is_regular_file() && entry.path().filename() != "lock") {
                all.push_back(entry.path());
            }
        }
        return all;
    }

    static std::string bytesOf(const fs::path& file) {
        std::ifstream stream(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    static void replace(const fs::path& file, const std::string& bytes) {
        std::ofstream(file, std::ios::binary | std::ios::trunc) << bytes;
    }

    fs::path folder = fs::temp_directory_path() / ("velmorak-disk-store-" + std::to_string(getpid()));
    std::vector<std::string> warnings;
    DiskStore store = storeFor();
};

TEST_F(DiskStoreTest, acceptsContentInPieces) {
    DiskStore store = storeFor();
    store.write(keyOf(1), 6, [](const ByteSink& sink) {
        sink("one");
        sink("");
        sink("two");
    });
    EXPECT_EQ(store.read(keyOf(1)), "onetwo");
}

TEST_F(DiskStoreTest, leavesNothingBehindWhenMakingTheContentFails) {
    DiskStore store = storeFor();
    const auto half = [](const ByteSink& sink) {
        sink("one");
        throw std::bad_alloc();
    };
    EXPECT_THROW(store.write(keyOf(1), 6, half), std::bad_alloc);
    EXPECT_TRUE(files().empty());
    EXPECT_TRUE(warnings.empty());
}

TEST_F(DiskStoreTest, readsWhatAnEarlierProgramWrote) {
    EXPECT_EQ(store.read(keyOf(1)), std::nullopt);
    store.write(keyOf(1), "one");
    store.write(keyOf(2), std::string("\0two", 4));
    DiskStore later = storeFor();
    EXPECT_EQ(later.read(keyOf(1)), "one");
    EXPECT_EQ(later.read(keyOf(2)), std::string("\0two", 4));
    later.write(keyOf(1), "another");
    EXPECT_EQ(store.read(keyOf(1)), "another");
}

TEST_F(DiskStoreTest, takesAnEntryOfAnotherLengthForMissing) {
    store.write(keyOf(1), "content");
    const fs::path file = files().at(0);
    const std::string whole = bytesOf(file);
    for (std::size_t length = 0; length < whole.size(); ++length) {
        replace(file, whole.substr(0, length));
        EXPECT_EQ(store.read(keyOf(1)), std::nullopt) << length;
        fs::create_directories(file.parent_path());
    }
    replace(file, whole + "x");
    EXPECT_EQ(store.read(keyOf(1)), std::nullopt);
    replace(file, whole);
    EXPECT_EQ(store.read(keyOf(1)), "content");
}

TEST_F(DiskStoreTest, takesAnEntryWithAFlippedBitForMissing) {
    store.write(keyOf(1), "content");
    const fs::path file = files().at(0);
    const std::string whole = bytesOf(file);
    for (std::size_t bit = 0; bit < 8 * whole.size(); ++bit) {
        std::string damaged = whole;
        damaged[bit / 8] = static_cast<char>(damaged[bit / 8] ^ (1 << (bit % 8)));
        replace(file, damaged);
        EXPECT_EQ(store.read(keyOf(1)), std::nullopt) << bit;
    }
    store.write(keyOf(1), "content");
    EXPECT_EQ(store.read(keyOf(1)), "content") << "a damaged entry can be replaced";
}

TEST_F(DiskStoreTest, removesTheLeastRecentlyUsedFirst) {
    DiskStore small = storeFor(10000);
    const std::string kilobyte(1000, 'x');
    const auto now = fs::file_time_type::clock::now();
    for (std::uint64_t i = 0; i < 9; ++i) {
        small.write(keyOf(i), kilobyte);
        for (const fs::path& file : files()) {
            fs::last_write_time(file, fs::last_write_time(file) - std::chrono::hours(1));
        }
    }
    EXPECT_EQ(small.read(keyOf(0)), kilobyte);  // Marks it as used.
    small.write(keyOf(9), kilobyte);
    EXPECT_EQ(small.read(keyOf(0)), kilobyte);
    EXPECT_EQ(small.read(keyOf(1)), std::nullopt);
    EXPECT_EQ(small.read(keyOf(8)), kilobyte);
    EXPECT_EQ(small.read(keyOf(9)), kilobyte);
    EXPECT_LT(fs::last_write_time(files().at(0)), now + std::chrono::hours(1));
}

TEST_F(DiskStoreTest, neverExceedsItsLimit) {
    constexpr std::uint64_t limit = 100000;
    DiskStore small = storeFor(limit);
    for (std::uint64_t i = 0; i < 200; ++i) {
        small.write(keyOf(i), std::string(1000 + i, 'x'));
        std::uint64_t sum = 0;
        for (const fs::path& file : files()) {
            sum += fs::file_size(file);
        }
        ASSERT_LE(sum, limit) << i;
    }
    small.write(keyOf(1000), std::string(limit, 'x'));
    EXPECT_EQ(small.read(keyOf(1000)), std::nullopt) << "larger than the limit";
    EXPECT_NE(small.read(keyOf(199)), std::nullopt);
}

TEST_F(DiskStoreTest, clearRemovesEntriesAndNothingElse) {
    store.write(keyOf(1), "one");
    std::ofstream(folder / "note.txt") << "mine";
    store.clear();
    EXPECT_EQ(store.read(keyOf(1)), std::nullopt);
    EXPECT_EQ(files(), std::vector<fs::path>{folder / "note.txt"});
}

TEST_F(DiskStoreTest, warnsOnceOfAFolderThatCannotBeWritten) {
    std::ofstream(folder) << "a file";
    store.write(keyOf(1), "one");
    store.write(keyOf(2), "two");
    EXPECT_EQ(store.read(keyOf(1)), std::nullopt);
    store.clear();
    ASSERT_EQ(warnings.size(), 1U);
    EXPECT_EQ(warnings[0], "Results are not cached: cannot write to " + folder.string() + ": Not a directory");
}

TEST_F(DiskStoreTest, storesNothingWithoutAFolder) {
    DiskStore none({}, [this](const std::string& message) { warnings.push_back(message); });
    none.write(keyOf(1), "one");
    EXPECT_EQ(none.read(keyOf(1)), std::nullopt);
    none.clear();
    EXPECT_TRUE(warnings.empty());
}

TEST_F(DiskStoreTest, removesWhatAKilledProgramLeft) {
    store.write(keyOf(1), "one");
    const fs::path leftover = files().at(0).parent_path() / ".new-1-1";
    std::ofstream(leftover) << std::string(1000, 'x');
    fs::last_write_time(leftover, fs::file_time_type::clock::now() - std::chrono::hours(2));
    store.clear();
    EXPECT_TRUE(files().empty());
}

/// Writes and reads few entries, the same as others do. @return the number of reads that found wrong content.
int hammer(DiskStore& store, unsigned seed) {
    int wrong = 0;
    for (std::uint64_t i = 0; i < 3000; ++i) {
        const std::uint64_t number = (i * 7919 + seed) % 50;
        const std::string content(100 * number + 1, static_cast<char>('a' + number % 26));
        store.write(keyOf(number), content);
        const std::optional<std::string> found = store.read(keyOf((number + seed) % 50));
        const std::uint64_t other = (number + seed) % 50;
        const std::string expected(100 * other + 1, static_cast<char>('a' + other % 26));
        wrong += found && *found != expected ? 1 : 0;
        if (i % 1000 == 999) {
            store.clear();
        }
    }
    return wrong;
}

TEST_F(DiskStoreTest, isSharedByProgramsThatRunAtOnce) {
    constexpr int programs = 2;
    std::vector<pid_t> others;
    for (unsigned seed = 1; seed <= programs; ++seed) {
        const pid_t id = fork();
        if (id == 0) {
            DiskStore own = storeFor(50000);
            const int wrong = hammer(own, seed);
            _exit(wrong > 0 || !warnings.empty() ? 1 : 0);
        }
        others.push_back(id);
    }
    DiskStore own = storeFor(50000);
    EXPECT_EQ(hammer(own, 3), 0);
    EXPECT_TRUE(warnings.empty()) << warnings.front();
    for (const pid_t id : others) {
        int status = -1;
        ASSERT_EQ(waitpid(id, &status, 0), id);
        EXPECT_EQ(status, 0);
    }
}

}  // namespace
}  // namespace velmorak::test
