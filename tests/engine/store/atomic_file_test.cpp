#include "store/AtomicFile.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>
#include <fstream>
#include <iterator>
#include <system_error>
#include <vector>

namespace velmorak::test {
namespace {

namespace fs = std::filesystem;

class AtomicFileTest : public testing::Test {
protected:
    AtomicFileTest() { fs::create_directories(folder); }
    ~AtomicFileTest() override { fs::remove_all(folder); }

    std::vector<std::string> names() const {
        std::vector<std::string> all;
        for (const auto& entry : fs::directory_iterator(folder)) {
            all.push_back(entry.path().filename());
        }
        return all;
    }
    std::string content() const {
        std::ifstream stream(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    const fs::path folder = fs::temp_directory_path() / ("velmorak-atomic-file-" + std::to_string(getpid()));
    const fs::path path = folder / "result.txt";
};

TEST_F(AtomicFileTest, takesItsNameWhenItIsCommitted) {
    AtomicFile file(path, ".new-");
    EXPECT_TRUE(names().empty());
    file.write("one");
    file.write("two");
    EXPECT_FALSE(fs::exists(path));
    ASSERT_EQ(names().size(), 1U);
    EXPECT_TRUE(names()[0].starts_with(".new-")) << names()[0];
    EXPECT_TRUE(names()[0].ends_with(".txt")) << names()[0];
    file.writeAt(1, "NE");
    file.commit();
    EXPECT_EQ(names(), std::vector<std::string>{"result.txt"});
    EXPECT_EQ(content(), "oNEtwo");
}

TEST_F(AtomicFileTest, replacesAFileOfItsName) {
    std::ofstream(path) << "old and long";
    AtomicFile file(path, ".new-");
    file.write("new");
    EXPECT_EQ(content(), "old and long");
    file.commitUnsynced();
    EXPECT_EQ(content(), "new");
}

TEST_F(AtomicFileTest, leavesNothingBehindWithoutCommit) {
    {
        AtomicFile file(path, ".new-");
        file.write("half");
    }
    EXPECT_TRUE(names().empty());
}

TEST_F(AtomicFileTest, takesWhatAnotherWriterPutUnderItsTemporaryName) {
    AtomicFile file(path, ".new-");
    std::ofstream(file.temporary()) << "from elsewhere";
    file.commit();
    EXPECT_EQ(content(), "from elsewhere");
    EXPECT_EQ(names().size(), 1U);
}

TEST_F(AtomicFileTest, refusesToCommitWhatWasNeverWritten) {
    AtomicFile file(path, ".new-");
    EXPECT_THROW(file.commit(), std::system_error);
    EXPECT_THROW(file.commitUnsynced(), std::system_error);
    EXPECT_TRUE(names().empty());
}

TEST_F(AtomicFileTest, neverOverwritesAFileUnderItsTemporaryName) {
    fs::path taken;
    {
        AtomicFile file(path, ".new-");
        taken = file.temporary();
        std::ofstream(taken) << "of another program";
        file.write("mine");
        EXPECT_NE(file.temporary(), taken);
        file.commit();
    }
    EXPECT_EQ(content(), "mine");
    EXPECT_TRUE(fs::exists(taken));
}

TEST_F(AtomicFileTest, reportsWhyItCannotBeWritten) {
    AtomicFile file(folder / "absent" / "result.txt", ".new-");
    try {
        file.write("text");
        FAIL() << "the folder does not exist";
    } catch (const std::system_error& error) {
        EXPECT_EQ(error.code().value(), ENOENT);
    }
}

TEST_F(AtomicFileTest, hasThePermissionsThatItIsGiven) {
    AtomicFile file(path, ".new-", 0600);
    file.write("private");
    file.commit();
    struct stat status {};
    ASSERT_EQ(stat(path.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
}

}  // namespace
}  // namespace velmorak::test
