#include "Output/plots/text/LabelText.h"
#include "Output/plots/text/PlotText.h"

#include <gtest/gtest.h>

namespace {

using namespace velmorak;
using Level = LabelRun::Level;
using Runs = std::vector<LabelRun>;

Runs plain(const std::string& text) {
    return {{.level = Level::Normal, .text = text}};
}

std::string allText(const std::string& label) {
    std::string text;
    for (const LabelRun& run : labelRuns(label)) {
        text += run.text;
    }
    return text;
}

TEST(LabelText, hasSubscriptsSuperscriptsAndGreek) {
    EXPECT_EQ(labelRuns("p_{T}(\\mu^{+}) [GeV]"), (Runs{{Level::Normal, "p"},
                                                        {Level::Subscript, "T"},
                                                        {Level::Normal, "(μ"},
                                                        {Level::Superscript, "+"},
                                                        {Level::Normal, ") [GeV]"}}));
    EXPECT_EQ(labelRuns("\\mu"), plain("μ"));
    EXPECT_EQ(labelRuns("Z \\to \\mu\\mu \\pm 1"), plain("Z → μμ ± 1"));
    EXPECT_EQ(labelRuns("\\mu{}m"), plain("μm"));
    EXPECT_EQ(labelRuns("x_{\\mathrm{max}}"), (Runs{{Level::Normal, "x"}, {Level::Subscript, "max"}}));
    EXPECT_EQ(labelRuns("\\bar{p} \\sqrt{s} = 13\\,TeV"), plain("p\u0304 √s = 13\u2009TeV"));
    EXPECT_EQ(labelRuns("\\frac{a}{b + c}"), plain("a/(b + c)"));
}

TEST(LabelText, raisedHyphensAreMinusSigns) {
    EXPECT_EQ(labelRuns("fb^{-1}"), (Runs{{Level::Normal, "fb"}, {Level::Superscript, "−1"}}));
    EXPECT_EQ(labelRuns("two-jet events"), plain("two-jet events"));
}

TEST(LabelText, dollarsAreMarkupAroundMarkupOnly) {
    EXPECT_EQ(labelRuns("$p_T$ [GeV]"),
              (Runs{{Level::Normal, "p"}, {Level::Subscript, "T"}, {Level::Normal, " [GeV]"}}));
    EXPECT_EQ(labelRuns("$m_{\\mu\\mu}$"), (Runs{{Level::Normal, "m"}, {Level::Subscript, "μμ"}}));
    EXPECT_EQ(labelRuns("5 $ to 7 $"), plain("5 $ to 7 $"));
    EXPECT_EQ(labelRuns("$(touch x)"), plain("$(touch x)"));
    EXPECT_EQ(labelRuns("$p_T"), plain("$p_T"));
}

TEST(LabelText, columnNamesAndOtherTextStayAsTheyAre) {
    for (const std::string text : {"muon_pt", "a_1 and b^2", "{a}_b^c", "\\n %s", "C:\\home\\unknown{x}", "", "_", "^",
                                   "\\", "$", "{}", "x_", "m(μ⁺μ⁻)"}) {
        EXPECT_EQ(allText(text), text) << text;
    }
    EXPECT_EQ(allText("100\\% \\_ \\{x\\}"), "100% _ {x}");
}

TEST(LabelText, unbalancedBracesAreShownLetterForLetter) {
    for (const std::string text :
         {"p_{T", "p_{T {x}", "x^{", "}{", "\\sqrt{s", "\\frac{a}{b", "\\bar{", "_{_{_{", "a}b"}) {
        EXPECT_EQ(allText(text), text) << text;
    }
    EXPECT_EQ(allText("\\mu^{"), "μ^{");
}

TEST(LabelText, deepAndLongMarkupTakesLittleTime) {
    std::string deep;
    for (int i = 0; i < 2000; ++i) {
        deep += "\\sqrt{\\frac{a}{";
    }
    EXPECT_EQ(allText(deep), deep);
    for (int i = 0; i < 2000; ++i) {
        deep += "}}";
    }
    EXPECT_FALSE(allText(deep).empty());
    std::string wide;
    for (int i = 0; i < 20000; ++i) {
        wide += "$x_{";
    }
    EXPECT_FALSE(allText(wide).empty());
}

TEST(LabelText, gnuplotReadsNoMarkupInIt) {
    EXPECT_EQ(quotedLabel("p_{T} a_b"), "'p_{T}\u00A0a\\_b'");
    EXPECT_EQ(quotedLabel("{/Bold x} @y &z ~q \\"), "'\\{/Bold x\\} \\@y \\&z \\~q \\\\'");
    EXPECT_EQ(quotedLabel("it's"), R"('it'."\047".'s')");
    EXPECT_EQ(quotedPlain("p_{T}"), "'p\\_\\{T\\}'");
    EXPECT_EQ(quotedTic("100%"), "'100%%'");
    EXPECT_EQ(quotedLabel("a\n!touch x"), "'a !touch x'");
    EXPECT_EQ(quotedLabel("x_{a'}"), R"('x_{a'."\047".'}')");
}

TEST(LabelText, smallCharactersNeedLessRoom) {
    EXPECT_DOUBLE_EQ(labelWidth("abc"), 3.0);
    EXPECT_LT(labelWidth("a_{bc}"), 3.0);
    EXPECT_DOUBLE_EQ(labelWidth("\\mu"), 1.0);
}

TEST(NumberLabel, hasRealMinusSignsAndPowersOfTen) {
    EXPECT_EQ(numberLabel("-1.5 ± 0.2"), "−1.5 ± 0.2");
    EXPECT_EQ(numberLabel("(1.234 ± 0.012)e+06"), "(1.234 ± 0.012)×10^{6}");
    EXPECT_EQ(numberLabel("3e-07"), "3×10^{-7}");
    EXPECT_EQ(numberLabel("(-1, 2)"), "(−1, 2)");
    EXPECT_EQ(numberLabel("-Infinity"), "−Infinity");
    EXPECT_EQ(numberLabel("two-jet e+ e-"), "two-jet e+ e-");
}

}  // namespace
