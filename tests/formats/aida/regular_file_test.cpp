#include <velmorak/Failure.h>
#include <velmorak/RegularFile.h>
#include <velmorak/TemporaryFolder.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace velmorak {
namespace {

namespace fs = std::filesystem;

class RegularFile : public ::testing::Test {
protected:
    TemporaryFolder ownFolder{"test"};
    const fs::path& folder = ownFolder.path();
};

TEST_F(RegularFile, isReadAlsoByALink) {
    std::ofstream(folder / "rows.csv") << "x\n";
    fs::create_symlink(folder / "rows.csv", folder / "link.csv");
    EXPECT_EQ(whyNotRegular(folder / "rows.csv"), "");
    EXPECT_EQ(whyNotRegular(folder / "link.csv"), "");
    EXPECT_NO_THROW(requireRegular(folder / "rows.csv"));
}

TEST_F(RegularFile, thatIsMissingIsLeftToItsOpening) {
    EXPECT_EQ(whyNotRegular(folder / "missing.csv"), "");
}

TEST_F(RegularFile, isNoPipeDeviceOrFolder) {
    const fs::path fifo = folder / "rows.fifo";
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    EXPECT_EQ(whyNotRegular(fifo), fifo.string() + " is not a regular file (a FIFO)");
    EXPECT_EQ(whyNotRegular("/dev/zero"), "/dev/zero is not a regular file (a character device)");
    EXPECT_EQ(whyNotRegular(folder), folder.string() + " is a folder");
}

TEST_F(RegularFile, isRequiredBySentence) {
    EXPECT_THAT([] { requireRegular("/dev/zero"); },
                ::testing::ThrowsMessage<Failure>("/dev/zero is not a regular file (a character device)"));
}

}  // namespace
}  // namespace velmorak
