#include "run/messages/Visible.h"

#include <gtest/gtest.h>

namespace velmorak {
namespace {

TEST(Visible, writesControlCharactersOut) {
    EXPECT_EQ(visible("one\ntwo\r\tthree"), "one\\ntwo\\r\\tthree");
    EXPECT_EQ(visible("\x1B[2J"), "\\x1B[2J");
    EXPECT_EQ(visible(std::string("a\0b\x7F", 4)), "a\\x00b\\x7F");
    EXPECT_EQ(visible("\xC2\x9B"
                      "2J"),
              "\\u009B2J")
        << "the one character that begins a sequence as well";
}

TEST(Visible, writesOutWhatTurnsTheDirectionOrEndsTheLine) {
    EXPECT_EQ(visible("a\u202Eb\u2066c\u2028d"), "a\\u202Eb\\u2066c\\u2028d");
}

TEST(Visible, leavesTextInAnyScriptAlone) {
    const std::string text = "χ² = 1 µm, 日本, 𝛼, \"é\"";
    EXPECT_EQ(visible(text), text);
    EXPECT_FALSE(hasControlCharacter(text));
}

TEST(Visible, writesOutBytesThatAreNoText) {
    EXPECT_EQ(visible("caf\xE9!"), "caf\\xE9!");
    EXPECT_EQ(visible("\xE2\x82"), "\\xE2\\x82");
    EXPECT_EQ(visible("\xC0\xAE \xE0\x80\xAE"), "\\xC0\\xAE \\xE0\\x80\\xAE") << "longer than necessary";
    EXPECT_EQ(visible("\xED\xA0\x80"), "\\xED\\xA0\\x80") << "half of a pair of UTF-16";
    EXPECT_FALSE(hasControlCharacter("caf\xE9"));
    EXPECT_TRUE(hasControlCharacter("a\nb"));
}

TEST(Visible, keepsIndentedLinesOfAMessageAndNoOthers) {
    EXPECT_EQ(visibleMessage("no column \"mas\"\n  mas > 3\n  ^"), "no column \"mas\"\n  mas > 3\n  ^");
    EXPECT_EQ(visibleMessage("a\nSum \"b\" failed\n c\n  \x1B"), "a\\nSum \"b\" failed\\n c\n  \\x1B");
}

TEST(Visible, keepsTheLinesOfATextThatHasSome) {
    EXPECT_EQ(visibleLines("a\tb\nc\x1B"), "a\tb\nc\\x1B");
}

TEST(Visible, shortensANameBetweenCharacters) {
    EXPECT_EQ(shortened("mass"), "mass");
    const std::string name = "x" + std::string(59, '-') + "é";
    const std::string longer = name + name + name;
    EXPECT_EQ(shortened(longer).size(), shortened(longer).find("...") + 3);
    EXPECT_LE(shortened(longer).size(), 123U);
    EXPECT_EQ(visible(shortened(longer)), shortened(longer));
}

}  // namespace
}  // namespace velmorak
