#include "store/StoreBytes.h"

#include "table/Checksum.h"

#include <gtest/gtest.h>

namespace velmorak {
namespace {

StoredResult resultOfAFit() {
    const auto numbers = numbersWithErrors(
        {10.0, 1.0 / 3.0}, {.origin = "peak", .names = {"mean", "sigma"}, .elements = {4.0, 0.5, 0.5, 0.25}});
    const NumberWithError mixed = withPropagatedError(
        7.0, {{numbers[0], 0.1},
              {numbersWithErrors({1.0}, {.origin = "other", .names = {"x"}, .elements = {9.0}})[0], -2.0}});
    return {{numbers[0], numbers[1], mixed, Value(2.5), Value()}, {}, {}, {}};
}

std::string sealed(std::string_view bytes) {
    const std::uint64_t sum = checksum(bytes);
    return std::string(bytes) + std::string(reinterpret_cast<const char*>(&sum), sizeof sum);
}

TEST(StoreBytes, keepNumbersWithErrorsToTheLastBit) {
    const StoredResult stored = resultOfAFit();
    const std::string bytes = bytesOf(stored).value();
    const StoredResult read = storedResultFrom(bytes).value();
    ASSERT_EQ(read.outputs.size(), stored.outputs.size());
    for (std::size_t i = 0; i < 4; ++i) {
        const NumberWithError number = numberIn(read.outputs[i]).value();
        const NumberWithError wanted = numberIn(stored.outputs[i]).value();
        EXPECT_EQ(number.value(), wanted.value());
        EXPECT_EQ(number.error(), wanted.error());
        ASSERT_EQ(number.terms().size(), wanted.terms().size());
        for (std::size_t term = 0; term < number.terms().size(); ++term) {
            EXPECT_EQ(*number.terms()[term].covariance, *wanted.terms()[term].covariance);
            EXPECT_EQ(number.terms()[term].derivatives, wanted.terms()[term].derivatives);
        }
    }
    EXPECT_EQ(bytesOf(read), bytes);
}

TEST(StoreBytes, refuseNumbersWithErrorsThatAreCutOff) {
    const std::string bytes = bytesOf(resultOfAFit()).value();
    const std::string_view content = std::string_view(bytes).substr(0, bytes.size() - sizeof(std::uint64_t));
    ASSERT_TRUE(storedResultFrom(sealed(content)));
    for (std::size_t length = 0; length < content.size(); ++length) {
        EXPECT_FALSE(storedResultFrom(sealed(content.substr(0, length)))) << length;
    }
}

TEST(StoreBytes, refuseAMatrixThatIsNotSquare) {
    const std::string bytes = bytesOf(resultOfAFit()).value();
    std::string content = bytes.substr(0, bytes.size() - sizeof(std::uint64_t));
    // The number of elements of the first matrix, 4, becomes 3: what follows no longer fits.
    const std::uint64_t four = 4;
    const std::size_t count = content.find("sigma") + 5;
    ASSERT_EQ(content.compare(count, sizeof four, reinterpret_cast<const char*>(&four), sizeof four), 0);
    content[count] = 3;
    EXPECT_FALSE(storedResultFrom(sealed(content)));
}

}  // namespace
}  // namespace velmorak
