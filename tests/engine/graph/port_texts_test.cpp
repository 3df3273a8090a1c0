#include "graph/PortTexts.h"

#include <gtest/gtest.h>

namespace velmorak::test {
namespace {

std::string told(const InputSpec& input) {
    return descriptionOf(input, {{input}, {}});
}

TEST(PortTexts, aNumberHasItsLimitsAsAUserWouldWriteThem) {
    EXPECT_EQ(told({.name = "n", .description = "Mass in GeV."}), "Mass in GeV.\nType: number");
    EXPECT_EQ(told({.name = "n", .minimum = 1, .maximum = 1e6, .isInteger = true}),
              "Type: whole number from 1 to 1000000");
    EXPECT_EQ(told({.name = "n", .minimum = 0.5}), "Type: number, at least 0.5");
    EXPECT_EQ(told({.name = "n", .maximum = -3}), "Type: number, at most -3");
    EXPECT_EQ(told({.name = "n", .minimum = 1e-9, .maximum = 1e30}), "Type: number from 1e-09 to 1e+30");
}

TEST(PortTexts, aChoiceListsItsChoices) {
    EXPECT_EQ(told({.name = "c", .description = "How.", .type = ValueType::Choice, .choices = {"x", "y"}}),
              "How.\nType: choice of x, y");
}

TEST(PortTexts, anInputThatNeedsAWireSaysSo) {
    EXPECT_EQ(told({.name = "t", .type = ValueType::Table}), "Type: table, by wire");
    EXPECT_EQ(told({.name = "o", .type = ValueType::Any, .isOptional = true}), "Type: any, by wire; may be left open");
}

TEST(PortTexts, aFileIsToReadWhereNothingElseFeedsThePlugin) {
    const InputSpec file{.name = "file", .type = ValueType::Text};
    const InputSpec header{.name = "header", .type = ValueType::Choice, .choices = {"yes"}};
    const InputSpec table{.name = "table", .type = ValueType::Table};
    EXPECT_EQ(descriptionOf(file, {{file, header}, {}}), "Type: file to read");
    EXPECT_EQ(descriptionOf(file, {{table, file}, {}}), "Type: text");
    EXPECT_EQ(descriptionOf({.name = "filer", .type = ValueType::Text}, {{file}, {}}), "Type: text");
}

TEST(PortTexts, anOutputHasItsType) {
    EXPECT_EQ(descriptionOf(OutputSpec{.name = "p", .description = "Mean.", .type = ValueType::Profile}),
              "Mean.\nType: profile");
}

}  // namespace
}  // namespace velmorak::test
