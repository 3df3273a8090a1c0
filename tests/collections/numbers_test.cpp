#include "KindHarness.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using velmorak::test::KindHarness;

TEST(Number, givesWhatWasWritten) {
    KindHarness bench("Number");
    bench.set("value", "-12.75").run();
    EXPECT_EQ(bench.number("number"), -12.75);
}

TEST(Number, beginsWithZero) {
    KindHarness bench("Number");
    bench.run();
    EXPECT_EQ(bench.number("number"), 0.0);
}

TEST(Adder, addsWhatIsWrittenAndWhatIsWired) {
    KindHarness bench("Adder");
    bench.set("a", "1.5").wire("b", 2.25).run();
    EXPECT_EQ(bench.number("sum"), 3.75);
}

TEST(Multiplier, multipliesAndBeginsWithOne) {
    KindHarness bench("Multiplier");
    bench.run();
    EXPECT_EQ(bench.number("product"), 1.0);
    bench.wire("a", 0.5).set("b", "-3").run();
    EXPECT_EQ(bench.number("product"), -1.5);
}

TEST(Adder, nanStaysNan) {
    KindHarness bench("Adder");
    bench.wire("a", std::nan("")).run();
    EXPECT_TRUE(std::isnan(bench.number("sum")));
}

TEST(Text, givesWhatWasWritten) {
    KindHarness bench("Text");
    bench.set("value", " two\nlines \"é\"").run();
    EXPECT_EQ(bench.text("text"), " two\nlines \"é\"");
}

TEST(Subtractor, takesTheSecondFromTheFirst) {
    KindHarness bench("Subtractor");
    bench.wire("a", 1.5).set("b", "4").run();
    EXPECT_EQ(bench.number("difference"), -2.5);
}

TEST(Divider, dividesTheFirstByTheSecond) {
    KindHarness bench("Divider");
    bench.run();
    EXPECT_EQ(bench.number("quotient"), 1.0);
    bench.wire("a", 1.0).set("b", "4").run();
    EXPECT_EQ(bench.number("quotient"), 0.25);
    bench.set("b", "0").run();
    EXPECT_EQ(bench.number("quotient"), std::numeric_limits<double>::infinity());
    bench.wire("a", 0.0).run();
    EXPECT_TRUE(std::isnan(bench.number("quotient")));
}

TEST(Function, hasAnInputForEachName) {
    KindHarness bench("Function");
    bench.set("expression", "passed / all * (1 - passed / all)");
    ASSERT_EQ(bench.ports().inputs.size(), 3U);
    EXPECT_EQ(bench.ports().inputs[1].name, "passed");
    EXPECT_EQ(bench.ports().inputs[2].name, "all");
    bench.wire("passed", 1.0).set("all", "4").run();
    EXPECT_EQ(bench.number("value"), 0.1875);
}

TEST(Function, givesANumberForWholesAndTruths) {
    KindHarness bench("Function");
    bench.set("expression", "7 % 4").run();
    EXPECT_EQ(bench.number("value"), 3.0);
    bench.set("expression", "pi > 3").run();
    EXPECT_EQ(bench.number("value"), 1.0);
    bench.set("expression", "a / 0").set("a", "-1").run();
    EXPECT_EQ(bench.number("value"), -std::numeric_limits<double>::infinity());
}

TEST(Function, saysWhatIsMissingOrNoNumber) {
    KindHarness bench("Function");
    EXPECT_TRUE(bench.failure().starts_with("expression: ")) << bench.failure();
    EXPECT_EQ(bench.set("expression", "1 + a").failure(),
              "expression: there is no number \"a\" at an input of that name\n  1 + a\n      ^");
    EXPECT_NE(bench.set("expression", "expression + 1").failure().find("no number can have the name"),
              std::string::npos);
    EXPECT_NE(bench.set("expression", "'text'").failure().find("is a text"), std::string::npos);
    EXPECT_NE(bench.set("expression", "9223372036854775807 + 1").failure().find("no integer can hold"),
              std::string::npos);
    EXPECT_NE(bench.kind().refusal("expression", "1 +"), "");
}

}  // namespace
