#include <root/container/Number.h>

#include <gtest/gtest.h>

#include <array>
#include <numbers>

namespace velmorak::root {
namespace {

TEST(NumberRange, isReadFromTheCommentOfAMember) {
    EXPECT_TRUE(NumberRange::fromTitle("momentum in GeV").isTrivial());
    EXPECT_TRUE(NumberRange::fromTitle("[GeV]").isTrivial());
    const NumberRange range = NumberRange::fromTitle("phi [-pi, pi, 12]");
    EXPECT_DOUBLE_EQ(range.low, -std::numbers::pi);
    EXPECT_DOUBLE_EQ(range.factor, 4096.0 / (2.0 * std::numbers::pi));
    const NumberRange shortened = NumberRange::fromTitle("[0,0,10]");
    EXPECT_EQ(shortened.low, 10.0);
    EXPECT_EQ(shortened.factor, 0.0);
}

TEST(NumberTypes, areKnownByTheirNamesInCpp) {
    EXPECT_EQ(numberTypeNamed("unsigned int"), NumberType::UInt32);
    EXPECT_EQ(numberTypeNamed("std::int64_t"), NumberType::Int64);
    EXPECT_EQ(numberTypeNamed("Double32_t"), NumberType::Double32);
    EXPECT_EQ(numberTypeNamed("TLorentzVector"), std::nullopt);
}

TEST(Numbers, areReadWithTheMostSignificantByteFirst) {
    constexpr std::array<std::uint8_t, 14> bytes{0xFF, 0xFE, 0x3F, 0x80, 0, 0, 0xC0, 0, 0, 0, 0, 0, 0, 0};
    Buffer buffer(bytes);
    EXPECT_EQ(readInteger(buffer, NumberType::Int16), -2);
    EXPECT_EQ(readReal(buffer, NumberType::Float, {}), 1.0);
    EXPECT_EQ(readReal(buffer, NumberType::Double, {}), -2.0);
    EXPECT_THROW(buffer.u8(), Failure);
}

TEST(Numbers, ofARangeAreStepsFromItsLowerEnd) {
    constexpr std::array<std::uint8_t, 4> bytes{0, 0, 0, 5};
    Buffer buffer(bytes);
    EXPECT_EQ(readReal(buffer, NumberType::Double32, {.low = -1.0, .factor = 10.0}), -0.5);
}

}  // namespace
}  // namespace velmorak::root
