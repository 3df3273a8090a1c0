#include "SampleRows.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace velmorak {
namespace {

/// The refusal without the list of columns that there are.
std::string mistakeIn(std::string_view text) {
    std::string refusal = refusalOf(text);
    const std::size_t begin = refusal.find("; the columns are ");
    if (begin != std::string::npos) {
        const std::size_t end = std::min(refusal.find("; did you", begin), refusal.find('\n', begin));
        refusal.erase(begin, end - begin);
    }
    return refusal;
}

TEST(ExpressionMistake, listsTheColumnsTheMostSimilarFirst) {
    EXPECT_NE(refusalOf("x + tagg").find("there is no column \"tagg\"; the columns are \"tag\", "), std::string::npos)
        << refusalOf("x + tagg");
}

TEST(ExpressionMistake, isShownWithACaretUnderThePlace) {
    EXPECT_EQ(mistakeIn("x + enrgy"), "there is no column \"enrgy\"\n  x + enrgy\n      ^");
    EXPECT_EQ(mistakeIn("x + tagg"), "there is no column \"tagg\"; did you mean \"tag\"?\n  x + tagg\n      ^");
    EXPECT_EQ(mistakeIn("é + 1"), "there is no column \"é\"\n  é + 1\n  ^");
    EXPECT_EQ(refusalOf("'é' == 1"), "a text and a number cannot be combined here\n  'é' == 1\n      ^");
    EXPECT_EQ(refusalOf("x +\n)"), "a value is missing before \")\"\n  x + )\n      ^");
}

TEST(ExpressionMistake, hasAReason) {
    const std::vector<std::pair<const char*, const char*>> mistakes{
        {"", "the expression is empty"},
        {"x +", "ends too early"},
        {"(x", "never closed"},
        {"x)", "an operator is missing before this"},
        {"x y", "an operator is missing"},
        {"0 < x < 1", "do not chain"},
        {"x = 1", "use =="},
        {"x & flag", "write &&"},
        {"x # 1", "unexpected character"},
        {"sqr(x)", "did you mean \"sqrt\""},
        {"sqrt(x, y)", "takes one value"},
        {"atan2(x)", "takes two values"},
        {"min()", "takes two values or more"},
        {"sqrt(tag)", "does not take a value of type text"},
        {"-tag", "\"-\" does not take a value of type text"},
        {"x && flag", "expected a condition"},
        {"if(x, 1, 2)", "expected a condition"},
        {"if(flag, 1, tag)", "cannot be combined"},
        {"tag == 1", "cannot be combined"},
        {"trk.tag * 2", "does not take a list of type text"},
        {"x[0]", "only a list can be indexed, but this is a value of type real"},
        {"trk.px[0", "this bracket is never closed"},
        {"trk.px[0)", "expected ]"},
        {"trk.px[]", "a value is missing"},
        {"trk.px[tag]", "a position in a list must be a number"},
        {"trk.px[trk.tag]", "a position in a list must be a number, but this is a list of type text"},
        {"if(trk.px, 1, 2)", "expected a condition, but this is a list of type real"},
        {"sum(x)", "needs a list column"},
        {"sum(x, y)", "takes one list column"},
        {"any(trk.px)", "does not take a list of type real"},
        {"\"abc", "never closed"},
        {"`abc", "never closed"},
        {"1.5.2", "does not end"},
        {"3x", "does not end"},
        {"0x10", "does not end"},
        {"x ? 1", "a choice is written"},
        {"1 + not flag", "between parentheses"},
        {"sqrt(x", "closed by a parenthesis"}};
    for (const auto& [text, reason] : mistakes) {
        EXPECT_NE(refusalOf(text).find(reason), std::string::npos) << text << ": " << refusalOf(text);
    }
}

TEST(ExpressionMistake, ofAnyDepthIsRefusedAndNoCrash) {
    for (const char* opening : {"(", "-", "!", "not ", "sqrt(", "2^", "flag ? ", "flag ? 1 : ", "if(flag, x, "}) {
        EXPECT_NE(refusalOf(repeated(opening, 1300) + "x").find("too deeply"), std::string::npos) << opening;
    }
    EXPECT_NE(refusalOf(repeated("(", 100'000)).find("at most 16384 characters"), std::string::npos);
    EXPECT_EQ(real(repeated("(", 150) + "x" + repeated(")", 150)), 1.5);
}

TEST(ExpressionMistake, nestsAsDeepAsThePageSays) {
    EXPECT_EQ(real(repeated("(", 200) + "x" + repeated(")", 200)), 1.5);
    EXPECT_EQ(real(repeated("sqrt(", 200) + "1" + repeated(")", 200)), 1.0);
    EXPECT_NE(refusalOf(repeated("(", 201) + "x" + repeated(")", 201))
                  .find("nested too deeply; at most 200 nested parentheses are allowed"),
              std::string::npos);
}

TEST(ExpressionMistake, showsBytesThatAreNoCharacterAsReplacements) {
    EXPECT_EQ(mistakeIn("x + \xE9nergy"), "there is no column \"\uFFFDnergy\"\n  x + \uFFFDnergy\n      ^");
    EXPECT_NE(refusalOf("'\xED\xA0\x80\x7F' == 1").find("  '\uFFFD\uFFFD\uFFFD ' == 1\n         ^"), std::string::npos);
}

TEST(ExpressionMistake, isShownInALongTextWithoutACharacter) {
    for (const char* byte : {"\x80", "\xC3", "\xE2\x82", "\xC3\xA9"}) {
        for (const std::string& text : {repeated(byte, 500) + " ! " + repeated(byte, 300), repeated(byte, 20'000)}) {
            const std::string refusal = refusalOf(text);
            const std::string caret = refusal.substr(refusal.rfind('\n') + 1);
            EXPECT_LT(refusal.size(), 2400U);
            EXPECT_EQ(caret.find_first_not_of(' '), caret.size() - 1);
        }
    }
}

}  // namespace
}  // namespace velmorak
