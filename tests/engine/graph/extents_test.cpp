#include "GraphFixture.h"

#include "graph/NodeExtent.h"

#include <algorithm>

namespace velmorak::test {
namespace {

class Extents : public Graph {
protected:
    /// Width and height.
    using Size = std::pair<float, float>;

    Size full(const std::string& name) {
        Size size;
        node(name).GetExtent(size.first, size.second);
        return size;
    }
    Size outer(const std::string& name) {
        Size size;
        node(name).GetOuterExtent(size.first, size.second);
        return size;
    }
    Size drawn(const std::string& name) {
        Size size;
        node(name).GetDrawnExtent(size.first, size.second);
        return size;
    }
};

TEST_F(Extents, eachRowOfTheLongerListIsTwentyHigh) {
    add("Pair", "A");
    add("Drain", "D");
    add("Waiter", "W");
    EXPECT_EQ(full("A").second, 100.0F);
    EXPECT_EQ(full("D").second, 40.0F);
    EXPECT_EQ(full("W").second, 20.0F);
    EXPECT_EQ(drawn("A"), full("A"));
}

TEST_F(Extents, aCollapsedBoxIsDrawnAsHighAsItsWiredPorts) {
    add("Pair", "A");
    add("Pair", "B");
    node("A").SetExpanded(false);
    node("B").SetExpanded(false);
    EXPECT_EQ(drawn("A").second, 0.0F);
    wire("A", "sum", "B", "a");
    wire("A", "sum", "B", "b");
    EXPECT_EQ(drawn("A").second, 20.0F);
    EXPECT_EQ(drawn("B").second, 40.0F);
}

TEST_F(Extents, aCollapsedBoxIsDrawnAsWideAsItsWiredPortsNeed) {
    add("Pair", "A");
    add("Pair", "B");
    wire("A", "sum", "B", "a");
    EXPECT_EQ(drawn("B").first, full("B").first);
    node("B").SetExpanded(false);
    EXPECT_LT(drawn("B").first, full("B").first);
    EXPECT_GT(drawn("B").first, 5 + textWidth("a", 8) + 5);
    EXPECT_GT(drawn("B").first, textWidth("Pair", 8));
    EXPECT_EQ(outer("B").first, full("B").first);
}

TEST_F(Extents, theOuterHeightIsAlwaysTheFullOneWithTheHeader) {
    add("Pair", "A");
    EXPECT_EQ(outer("A"), Size(full("A").first, 130.0F));
    node("A").SetExpanded(false);
    EXPECT_EQ(full("A").second, 100.0F);
    EXPECT_EQ(outer("A").second, 130.0F);
}

TEST_F(Extents, aLongNameMakesTheBoxWider) {
    add("Pair", "A");
    add("Pair", "A name that is much longer than any of the ports");
    EXPECT_GT(full(manager.plugins[1]->name).first, full("A").first);
    EXPECT_GT(full(manager.plugins[1]->name).first, textWidth(manager.plugins[1]->name, 8));
}

TEST_F(Extents, largerLettersMakeTheBoxWider) {
    add("Pair", "A");
    const float before = full("A").first;
    manager.SetFontSize(18, 22);
    EXPECT_GT(full("A").first, before);
    manager.SetFontSize(9, 11);
    EXPECT_EQ(full("A").first, before);
}

TEST_F(Extents, anyInputFitsBesideAnyOutput) {
    QzBase& made = add("Pair", "A");
    for (const QzBase::Input& left : made.Inputs()) {
        for (const QzBase::Output& right : made.Outputs()) {
            EXPECT_GT(full("A").first, 5 + textWidth(left.name, 8) + textWidth(right.name, 8) + 5);
        }
    }
}

/// What Pango needs for a line in DejaVu Sans of 8 points at 96 dots an inch, with its letters set to whole pixels.
TEST(TextWidth, isNotBelowWhatTheToolkitNeeds) {
    struct Measured {
        const char* text;
        float width;
    };
    for (const auto& [text, width] : {Measured{"iiiiiiiiii", 30},
                                      {"mmmmmmmm", 80},
                                      {"table", 28},
                                      {"expression", 59},
                                      {"histogram", 55},
                                      {"AidaTable", 53},
                                      {"Histogram1D", 71},
                                      {"Multiplier1", 57},
                                      {"weight", 37},
                                      {"lllllll.....", 36},
                                      {"WWWWWW", 66},
                                      {"fffffff", 25},
                                      {"rrrrrrr", 28},
                                      {"invariant mass (GeV)", 113},
                                      {"\xCE\xB1\xCE\xB2\xCE\xB3 \xCE\xA9\xC2\xB5", 38}}) {
        EXPECT_GE(textWidth(text, 8), width) << text;
        EXPECT_LE(textWidth(text, 8), 1.2F * width + 30.0F) << text;
    }
}

}  // namespace
}  // namespace velmorak::test
