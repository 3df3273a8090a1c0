#include <velmorak/Text.h>

#include <gtest/gtest.h>

namespace velmorak {
namespace {

TEST(Trimmed, removesBlanksFromBothEndsOnly) {
    EXPECT_EQ(trimmed(" \t\r\n two words \n"), "two words");
    EXPECT_EQ(trimmed("plain"), "plain");
    EXPECT_EQ(trimmed(" \t "), "");
    EXPECT_EQ(trimmed(""), "");
}

TEST(Trimmed, isAViewOfTheSameMemory) {
    const std::string text = "  x";
    EXPECT_EQ(trimmed(text).data(), text.data() + 2);
}

TEST(Quoted, putsDoubleQuotesAroundTheText) {
    EXPECT_EQ(velmorak::quoted("a b"), "\"a b\"");
    EXPECT_EQ(velmorak::quoted(""), "\"\"");
}

TEST(EditDistance, countsInsertionsRemovalsAndReplacements) {
    EXPECT_EQ(editDistance("", ""), 0U);
    EXPECT_EQ(editDistance("gaus", "gauss"), 1U);
    EXPECT_EQ(editDistance("gauss", "gaus"), 1U);
    EXPECT_EQ(editDistance("kitten", "sitting"), 3U);
    EXPECT_EQ(editDistance("", "abc"), 3U);
}

TEST(EditDistance, takesLettersOfBothCasesForEqual) {
    EXPECT_EQ(editDistance("SQRT", "sqrt"), 0U);
    EXPECT_EQ(editDistance("Energy[", "energy{"), 1U);
}

TEST(Suggestion, namesTheNearestKnownName) {
    EXPECT_EQ(suggestion("energi", {"time", "energy", "enemy"}), "; did you mean \"energy\"?");
    EXPECT_EQ(suggestion("E", {"e"}), "; did you mean \"e\"?");
}

TEST(Suggestion, isEmptyWhereNoKnownNameIsNear) {
    EXPECT_EQ(suggestion("energy", {"time", "charge"}), "");
    EXPECT_EQ(suggestion("energy", {}), "");
}

TEST(Suggestion, comparesLongNamesByTheirBeginnings) {
    const std::string beginning(200, 'a');
    EXPECT_EQ(suggestion(beginning + "x", {beginning + std::string(100000, 'y')}),
              "; did you mean \"" + beginning + std::string(100000, 'y') + "\"?");
}

TEST(ColumnsThere, areListedTheMostSimilarFirst) {
    EXPECT_EQ(columnsThere("mas", {"pt", "mass", "eta"}), "; the columns are \"mass\", \"pt\", \"eta\"");
    EXPECT_EQ(columnsThere("y", {"x"}), "; the only column is \"x\"");
    EXPECT_EQ(columnsThere("y", {}), "");
}

TEST(ColumnsThere, areAtMostTwenty) {
    const std::vector<std::string> columns(25, "x");
    EXPECT_NE(columnsThere("y", columns).find("\"x\" and 5 more"), std::string::npos);
}

}  // namespace
}  // namespace velmorak
