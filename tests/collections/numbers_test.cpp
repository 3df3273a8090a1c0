#include "Bench.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using velmorak::test::Bench;

TEST(Number, givesWhatWasWritten) {
    Bench bench("Number");
    bench.set("value", "-12.75").run();
    EXPECT_EQ(bench.number("number"), -12.75);
}

TEST(Number, beginsWithZero) {
    Bench bench("Number");
    bench.run();
    EXPECT_EQ(bench.number("number"), 0.0);
}

TEST(Adder, addsWhatIsWrittenAndWhatIsWired) {
    Bench bench("Adder");
    bench.set("a", "1.5").wire("b", 2.25).run();
    EXPECT_EQ(bench.number("sum"), 3.75);
}

TEST(Multiplier, multipliesAndBeginsWithOne) {
    Bench bench("Multiplier");
    bench.run();
    EXPECT_EQ(bench.number("product"), 1.0);
    bench.wire("a", 0.5).set("b", "-3").run();
    EXPECT_EQ(bench.number("product"), -1.5);
}

TEST(Adder, nanStaysNan) {
    Bench bench("Adder");
    bench.wire("a", std::nan("")).run();
    EXPECT_TRUE(std::isnan(bench.number("sum")));
}

}  // namespace
