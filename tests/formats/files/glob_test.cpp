#include "FilesFixture.h"

#include "files/Glob.h"

#include <velmorak/FolderNames.h>

#include <gmock/gmock.h>

namespace velmorak {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(NamePattern, starsAndQuestionMarksStandForCharacters) {
    EXPECT_TRUE(matchesPattern("run_1.csv", "run_*.csv"));
    EXPECT_TRUE(matchesPattern("run_.csv", "run_*.csv"));
    EXPECT_TRUE(matchesPattern("aXbXc", "a*b*c"));
    EXPECT_TRUE(matchesPattern("abab", "*ab"));
    EXPECT_TRUE(matchesPattern("a", "a**"));
    EXPECT_FALSE(matchesPattern("run_1.csv.gz", "run_*.csv"));
    EXPECT_FALSE(matchesPattern("", "?"));
    EXPECT_TRUE(matchesPattern("", "*"));
}

TEST(NamePattern, aQuestionMarkIsOneCharacterOfUtf8) {
    EXPECT_TRUE(matchesPattern("ä", "?"));
    EXPECT_TRUE(matchesPattern("x\U0001F600y", "x?y"));
    EXPECT_FALSE(matchesPattern("ab", "?"));
    EXPECT_TRUE(matchesPattern("\xFF", "?"));
    EXPECT_TRUE(matchesPattern("\xC3", "?"));
    EXPECT_FALSE(matchesPattern("ä", "??"));
}

TEST(NamePattern, setsHoldCharactersAndRanges) {
    EXPECT_TRUE(matchesPattern("b", "[a-c]"));
    EXPECT_FALSE(matchesPattern("B", "[a-c]"));
    EXPECT_TRUE(matchesPattern("d", "[!a-c]"));
    EXPECT_FALSE(matchesPattern("b", "[^a-c]"));
    EXPECT_TRUE(matchesPattern("]", "[]a]"));
    EXPECT_FALSE(matchesPattern("]", "[!]a]"));
    EXPECT_TRUE(matchesPattern("-", "[a-]"));
    EXPECT_TRUE(matchesPattern("*", "[*]"));
    EXPECT_FALSE(matchesPattern("x", "[*]"));
    EXPECT_TRUE(matchesPattern("ö", "[ä-ü]"));
    EXPECT_FALSE(matchesPattern("a", "[]"));
}

TEST(NamePattern, aSetThatIsNotClosedIsText) {
    EXPECT_TRUE(matchesPattern("[ab", "[ab"));
    EXPECT_FALSE(matchesPattern("a", "[ab"));
    EXPECT_TRUE(matchesPattern("x[", "*["));
    EXPECT_TRUE(matchesPattern("[!", "[!"));
}

TEST(NamePattern, hiddenNamesNeedADot) {
    EXPECT_FALSE(matchesPattern(".a", "*"));
    EXPECT_FALSE(matchesPattern(".a", "?a"));
    EXPECT_FALSE(matchesPattern(".a", "[.]a"));
    EXPECT_TRUE(matchesPattern(".a", ".*"));
}

TEST(NamePattern, manyStarsTakeNoLongTime) {
    std::string pattern;
    for (int i = 0; i < 50; ++i) {
        pattern += "a*";
    }
    EXPECT_FALSE(matchesPattern(std::string(5000, 'a'), pattern + "b"));
}

class GlobTest : public FilesFixture {};

TEST_F(GlobTest, twoStarsAtTheEndMatchEveryFileBelow) {
    write("d/a", "");
    write("d/x/b", "");
    EXPECT_THAT(glob("", "d/**", context), ElementsAre("d/a", "d/x/b"));
    EXPECT_THAT(glob("d", "**/**/*", context), ElementsAre("a", "x/b"));
}

TEST_F(GlobTest, looksIntoParentFolders) {
    write("d/a", "");
    std::filesystem::create_directory(folder.path() / "e");
    EXPECT_THAT(glob("e", "../d/?", context), ElementsAre("../d/a"));
}

TEST_F(GlobTest, absolutePatternsGiveAbsoluteNames) {
    write("a.csv", "");
    const std::string file = (folder.path() / "a.csv").string();
    EXPECT_THAT(glob("nowhere", (folder.path() / "*.csv").string(), context), ElementsAre(file));
}

TEST_F(GlobTest, leavesOutFoldersButNoBrokenLinks) {
    write("a/b", "");
    write("c", "");
    std::filesystem::create_symlink("gone", folder.path() / "d");
    std::filesystem::create_symlink("e", folder.path() / "e");
    EXPECT_THAT(glob("", "*", context), ElementsAre("c", "d", "e"));
}

TEST_F(GlobTest, entersALinkOnlyWhereThePatternNamesALevel) {
    write("d/x/a", "");
    std::filesystem::create_directory_symlink("x", folder.path() / "d/y");
    std::filesystem::create_directory_symlink("..", folder.path() / "d/x/up");
    EXPECT_THAT(glob("", "d/*/a", context), ElementsAre("d/x/a", "d/y/a"));
    EXPECT_THAT(glob("", "d/**/a", context), ElementsAre("d/x/a"));
}

TEST_F(GlobTest, recordsFoldersThatDoNotExistYet) {
    std::filesystem::create_directories(folder.path() / "d/x");
    EXPECT_THAT(glob("", "d/*/raw/*.csv", context), IsEmpty());
    EXPECT_THAT(context.listings, ElementsAre("d:*", "d/x/raw:*.csv"));
    context.listings.clear();
    EXPECT_THAT(glob("", "d/*/a.csv", context), IsEmpty());
    EXPECT_THAT(context.listings, ElementsAre("d:*", "d/x:a.csv"));
}

}  // namespace
}  // namespace velmorak
