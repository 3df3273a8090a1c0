#include "store/DiskStore.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace velmorak::test {
namespace {

namespace fs = std::filesystem;

Digest keyOf(std::uint64_t number) {
    Sha256 digester;
    digester.addNumber(number);
    return digester.finish();
}

class OnDisk : public ::testing::Test {
protected:
    OnDisk() { fs::remove_all(folder); }
    ~OnDisk() override { fs::remove_all(folder); }

    DiskStore storeFor(std::uint64_t limit = 1 << 20) {
        return {{folder, limit}, [this](const std::string& sentence) { said.push_back(sentence); }};
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
    std::vector<std::string> said;
    DiskStore store = storeFor();
};

TEST_F(OnDisk, takesWhatComesInPieces) {
    DiskStore store = storeFor();
    store.write(keyOf(1), 6, [](const ByteSink& sink) {
        sink("one");
        sink("");
        sink("two");
    });
    EXPECT_EQ(store.read(keyOf(1)), "onetwo");
}

TEST_F(OnDisk, leavesNothingOfWhatCouldNotBeMade) {
    DiskStore store = storeFor();
    const auto half = [](const ByteSink& sink) {
        sink("one");
        throw std::bad_alloc();
    };
    EXPECT_THROW(store.write(keyOf(1), 6, half), std::bad_alloc);
    EXPECT_TRUE(files().empty());
    EXPECT_TRUE(said.empty());
}

TEST_F(OnDisk, whatWasWrittenIsReadByALaterProgram) {
    EXPECT_EQ(store.read(keyOf(1)), std::nullopt);
    store.write(keyOf(1), "one");
    store.write(keyOf(2), std::string("\0two", 4));
    DiskStore later = storeFor();
    EXPECT_EQ(later.read(keyOf(1)), "one");
    EXPECT_EQ(later.read(keyOf(2)), std::string("\0two", 4));
    later.write(keyOf(1), "another");
    EXPECT_EQ(store.read(keyOf(1)), "another");
}

TEST_F(OnDisk, anEntryOfAnyOtherLengthIsNone) {
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

TEST_F(OnDisk, anEntryWithAFlippedBitIsNone) {
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
    EXPECT_EQ(store.read(keyOf(1)), "content") << "what was damaged is written anew";
}

TEST_F(OnDisk, whatWasUsedLongestAgoGoesFirst) {
    DiskStore small = storeFor(10000);
    const std::string kilobyte(1000, 'x');
    const auto now = fs::file_time_type::clock::now();
    for (std::uint64_t i = 0; i < 9; ++i) {
        small.write(keyOf(i), kilobyte);
        for (const fs::path& file : files()) {
            fs::last_write_time(file, fs::last_write_time(file) - std::chrono::hours(1));
        }
    }
    EXPECT_EQ(small.read(keyOf(0)), kilobyte);  // which uses it
    small.write(keyOf(9), kilobyte);
    EXPECT_EQ(small.read(keyOf(0)), kilobyte);
    EXPECT_EQ(small.read(keyOf(1)), std::nullopt);
    EXPECT_EQ(small.read(keyOf(8)), kilobyte);
    EXPECT_EQ(small.read(keyOf(9)), kilobyte);
    EXPECT_LT(fs::last_write_time(files().at(0)), now + std::chrono::hours(1));
}

TEST_F(OnDisk, neverMoreThanTheLimitIsKept) {
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
    EXPECT_EQ(small.read(keyOf(1000)), std::nullopt) << "larger than all that may be kept";
    EXPECT_NE(small.read(keyOf(199)), std::nullopt);
}

TEST_F(OnDisk, clearRemovesEntriesAndNothingElse) {
    store.write(keyOf(1), "one");
    std::ofstream(folder / "note.txt") << "mine";
    store.clear();
    EXPECT_EQ(store.read(keyOf(1)), std::nullopt);
    EXPECT_EQ(files(), std::vector<fs::path>{folder / "note.txt"});
}

TEST_F(OnDisk, aFolderThatCannotBeWrittenIsSaidOnce) {
    std::ofstream(folder) << "a file";
    store.write(keyOf(1), "one");
    store.write(keyOf(2), "two");
    EXPECT_EQ(store.read(keyOf(1)), std::nullopt);
    store.clear();
    ASSERT_EQ(said.size(), 1U);
    EXPECT_EQ(said[0], "Results are not kept for later: " + folder.string() + " cannot be written: Not a directory");
}

TEST_F(OnDisk, withoutAFolderNothingIsKept) {
    DiskStore none({}, [this](const std::string& sentence) { said.push_back(sentence); });
    none.write(keyOf(1), "one");
    EXPECT_EQ(none.read(keyOf(1)), std::nullopt);
    none.clear();
    EXPECT_TRUE(said.empty());
}

TEST_F(OnDisk, whatAKilledProgramLeftIsRemoved) {
    store.write(keyOf(1), "one");
    const fs::path leftover = files().at(0).parent_path() / ".new-1-1";
    std::ofstream(leftover) << std::string(1000, 'x');
    fs::last_write_time(leftover, fs::file_time_type::clock::now() - std::chrono::hours(2));
    store.clear();
    EXPECT_TRUE(files().empty());
}

/// Writes and reads the same few entries as others do. @return the number of entries that held something wrong.
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

TEST_F(OnDisk, twoProgramsMayUseItAtOnce) {
    constexpr int programs = 2;
    std::vector<pid_t> others;
    for (unsigned seed = 1; seed <= programs; ++seed) {
        const pid_t id = fork();
        if (id == 0) {
            DiskStore own = storeFor(50000);
            const int wrong = hammer(own, seed);
            _exit(wrong > 0 || !said.empty() ? 1 : 0);
        }
        others.push_back(id);
    }
    DiskStore own = storeFor(50000);
    EXPECT_EQ(hammer(own, 3), 0);
    EXPECT_TRUE(said.empty()) << said.front();
    for (const pid_t id : others) {
        int status = -1;
        ASSERT_EQ(waitpid(id, &status, 0), id);
        EXPECT_EQ(status, 0);
    }
}

class PlaceOfEnvironment : public ::testing::Test {
protected:
    ~PlaceOfEnvironment() override { unsetenv("VELMORAK_CACHE_LIMIT"); }
};

TEST_F(PlaceOfEnvironment, isBelowTheCacheFolder) {
    setenv("XDG_CACHE_HOME", "/somewhere", 1);
    EXPECT_EQ(cacheConfigFromEnvironment().folder, "/somewhere/velmorak");
    EXPECT_EQ(cacheConfigFromEnvironment().limitBytes, std::uint64_t{2048} << 20);
    setenv("XDG_CACHE_HOME", "relative", 1);
    setenv("HOME", "/home/me", 1);
    EXPECT_EQ(cacheConfigFromEnvironment().folder, "/home/me/.cache/velmorak");
}

TEST_F(PlaceOfEnvironment, hasTheLimitThatIsAskedFor) {
    setenv("VELMORAK_CACHE_LIMIT", "3", 1);
    EXPECT_EQ(cacheConfigFromEnvironment().limitBytes, 3U << 20);
    setenv("VELMORAK_CACHE_LIMIT", "0", 1);
    EXPECT_TRUE(cacheConfigFromEnvironment().folder.empty());
    setenv("VELMORAK_CACHE_LIMIT", "much", 1);
    EXPECT_EQ(cacheConfigFromEnvironment().limitBytes, std::uint64_t{2048} << 20);
    EXPECT_EQ(cacheConfigFromEnvironment().complaint, "VELMORAK_CACHE_LIMIT=much is no number of MiB; 2048 is taken");
}

}  // namespace
}  // namespace velmorak::test
