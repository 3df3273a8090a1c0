#include "summary.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

Summary read(const std::string& text) {
    std::istringstream stream(text);
    return readSummary(stream);
}

TEST(Summary, aWholeFileGivesTheCollectionAndItsKinds) {
    const Summary summary = read(
        "==== Arithmetic ====\n"
        "Simple arithmetic plug-ins.\n"
        "\n"
        "---- Adder ----\n"
        "Adds two numbers.\n"
        "The sum is exact.\n"
        "Inputs:\n"
        "a first number\n"
        "Outputs:\n"
        "sum\n");
    EXPECT_EQ(summary.collection, "Simple arithmetic plug-ins.");
    EXPECT_THAT(summary.kinds, ElementsAre(Pair("Adder", "Adds two numbers.\n")));
}

TEST(Summary, anEmptyFileSaysNothing) {
    const Summary summary = read("");
    EXPECT_FALSE(summary.collection.has_value());
    EXPECT_THAT(summary.kinds, IsEmpty());
}

TEST(Summary, linesBeforeTheFirstHeadingAreIgnored) {
    const Summary summary = read("Inputs:\nnothing\n\n---- Adder ----\nAdds.\n");
    EXPECT_FALSE(summary.collection.has_value());
    EXPECT_THAT(summary.kinds, ElementsAre(Pair("Adder", "Adds.")));
}

TEST(Summary, ofALongDescriptionTheFirstLineStaysAndEachFurtherOneIsABreak) {
    EXPECT_THAT(read("---- Adder ----\none\ntwo\nthree\n\n").kinds, ElementsAre(Pair("Adder", "one\n\n")));
}

TEST(Summary, aNameLosesAllDashesAndBlanksAroundItButNotThoseInside) {
    EXPECT_THAT(read("- - ----Half- life fit -- -\nFits.\n\n").kinds, ElementsAre(Pair("Half- life fit", "Fits.")));
}

TEST(Summary, anEqualsHeadingKeepsThePendingName) {
    EXPECT_THAT(read("---- Adder ----\n==== x ====\nAdds.\n\n").kinds, ElementsAre(Pair("Adder", "Adds.")));
}

TEST(Summary, equalsSignsWinOverDashesInTheSameLine) {
    const Summary summary = read("---- ==== ----\nText.\n\n");
    EXPECT_EQ(summary.collection, "Text.");
    EXPECT_THAT(summary.kinds, IsEmpty());
}

TEST(Summary, aDescriptionLineWithDashesIsAHeading) {
    EXPECT_THAT(read("---- Adder ----\nAdds ---- exactly\n\n").kinds, ElementsAre(Pair("Adds ---- exactly", "")));
}

TEST(Summary, aDescriptionLineWithEqualsSignsIsAHeading) {
    EXPECT_THAT(read("---- Adder ----\na ==== b\nAdds.\n\n").kinds, ElementsAre(Pair("Adder", "Adds.")));
}

TEST(Summary, ofTwoHeadingsWithoutAnEndBetweenThemTheSecondTakesTheText) {
    EXPECT_THAT(read("---- Adder ----\n---- Divider ----\nDivides.\n\n").kinds,
                ElementsAre(Pair("Divider", "Divides.")));
}

TEST(Summary, aTextThatWasNotClosedRunsOnIntoTheNextKind) {
    EXPECT_THAT(read("---- Adder ----\nAdds.\n---- Divider ----\nDivides.\n\n").kinds,
                ElementsAre(Pair("Divider", "Adds.\n")));
}

TEST(Summary, ofTwoDescriptionsOfAKindTheLastHolds) {
    EXPECT_THAT(read("---- Adder ----\none\n\n---- Adder ----\ntwo\n\n").kinds, ElementsAre(Pair("Adder", "two")));
}

TEST(Summary, eachOfTheThreeEndLinesClosesABlock) {
    for (const std::string end : {"", "Inputs:", "Outputs:"}) {
        EXPECT_THAT(read("---- Adder ----\nAdds.\n" + end + "\nno more\n").kinds, ElementsAre(Pair("Adder", "Adds.")))
            << end;
    }
}

TEST(Summary, anEndLineWithABlankBehindItIsText) {
    EXPECT_THAT(read("---- Adder ----\nAdds.\nInputs: \n\n").kinds, ElementsAre(Pair("Adder", "Adds.\n")));
}

TEST(Summary, aCollectionWithoutTextHasAnEmptyDescription) {
    EXPECT_EQ(read("==== Arithmetic ====\n\n").collection, "");
}

TEST(Summary, aSecondCollectionHeadingReplacesTheDescription) {
    EXPECT_EQ(read("==== A ====\none\n\n==== B ====\ntwo\n\n").collection, "two");
}

TEST(Summary, theLastBlockIsStoredWithoutAnEmptyLineBehindIt) {
    EXPECT_THAT(read("---- Adder ----\nAdds.\n").kinds, ElementsAre(Pair("Adder", "Adds.")));
}

TEST(Summary, withoutItsLineEndTheLastLineLeavesTheBlockOpen) {
    EXPECT_THAT(read("---- Adder ----\nAdds.").kinds, IsEmpty());
}

TEST(Summary, windowsLineEndsCloseNothingAndSpoilTheNames) {
    const Summary summary = read("==== A ====\r\nText.\r\n\r\n---- Adder ----\r\nAdds.\r\nInputs:\r\n\r\n");
    EXPECT_FALSE(summary.collection.has_value());
    EXPECT_THAT(summary.kinds, ElementsAre(Pair("Adder ----\r", "Text.\r\n\n\n\n")));
}

TEST(Summary, aLineOf511CharactersIsReadWhole) {
    const std::string line(511, 'x');
    EXPECT_THAT(read("---- Adder ----\n" + line + "\n\n---- Divider ----\nDivides.\n").kinds,
                ElementsAre(Pair("Adder", line), Pair("Divider", "Divides.")));
}

TEST(Summary, aLongerLineIsCutAndEndsTheReading) {
    EXPECT_THAT(read("---- A ----\nfirst\n\n---- B ----\n" + std::string(512, 'x') + "\n\n---- C ----\nthird\n").kinds,
                ElementsAre(Pair("A", "first")));
}

TEST(Summary, theFirst511CharactersOfALongerLineStillCount) {
    EXPECT_THAT(read("---- Adder ----\nAdds.\n\n---- " + std::string(600, 'x') + "\n").kinds,
                ElementsAre(Pair("Adder", "Adds.")));
    EXPECT_EQ(read("==== A ====\nText.\n\n====" + std::string(600, 'x') + "\n").collection, "Text.");
}

TEST(Summary, aHeadingWithoutANameIsPassedOver) {
    for (const std::string line : {"----", "-----", "- ---- -"}) {
        const Summary summary = read("==== A ====\n" + line + "\nText.\n\n" + line + "\n---- Adder ----\n" + line +
                                     "\nAdds.\n\n" + line + "\nno more\n");
        EXPECT_EQ(summary.collection, "Text.") << line;
        EXPECT_THAT(summary.kinds, ElementsAre(Pair("Adder", "Adds."))) << line;
    }
}

}  // namespace
