#include "csv/CsvDecimal.h"
#include "csv/CsvScan.h"

#include <gtest/gtest.h>

#include <bit>
#include <charconv>
#include <random>
#include <string>

namespace velmorak {
namespace {

std::string digits(std::mt19937& random, std::size_t most) {
    std::string text;
    for (std::size_t left = random() % (most + 1); left > 0; --left) {
        text += static_cast<char>('0' + random() % 10);
    }
    return text;
}

std::string numberLike(std::mt19937& random) {
    std::string text = random() % 4 == 0 ? "-" : "";
    text += digits(random, random() % 3 == 0 ? 20 : 4);
    text += random() % 8 == 0 ? "" : ".";
    text += digits(random, random() % 3 == 0 ? 20 : 7);
    text += random() % 8 == 0 ? "e" + std::to_string(static_cast<int>(random() % 40) - 20) : "";
    return text;
}

/// Compares with the library, with other characters behind the number. @return whether the short way was taken.
bool agrees(const std::string& number, const std::string& rest) {
    const std::string text = number + rest;
    const char* const end = text.data() + text.size();
    double value = 0.0;
    const char* const past = readShortDecimal(text.data(), end, value);
    double expected = 0.0;
    const auto result = std::from_chars(text.data(), end, expected);
    if (past && text.find_first_of("eE") == std::string::npos) {
        EXPECT_EQ(past - text.data(), result.ptr - text.data()) << text;
        EXPECT_EQ(std::bit_cast<std::uint64_t>(value), std::bit_cast<std::uint64_t>(expected)) << text;
    }
    return past != nullptr;
}

TEST(ShortDecimals, haveTheBitsOfTheLibrary) {
    std::mt19937 random(1);
    std::size_t taken = 0;
    for (int round = 0; round < 300'000; ++round) {
        const bool isFollowed = random() % 2 == 0;
        taken += agrees(numberLike(random), isFollowed ? ",12345678\n" : digits(random, 0) + "\n") ? 1 : 0;
    }
    EXPECT_GT(taken, 60'000U);
}

TEST(ShortDecimals, areThoseWithSixDigits) {
    std::mt19937 random(2);
    for (int round = 0; round < 100'000; ++round) {
        const int whole = static_cast<int>(random() % 2000) - 1000;
        const std::string number = std::to_string(whole) + "." + std::to_string(1 + random() % 999'999);
        ASSERT_TRUE(agrees(number, ",next,next\n")) << number;
    }
}

TEST(ShortDecimals, endAtTheLimitsOfADouble) {
    const std::string rest = ",next,next\n";
    EXPECT_TRUE(agrees("9007199.254740992", rest));
    EXPECT_FALSE(agrees("9007199.254740993", rest));
    EXPECT_TRUE(agrees("0.9007199254740992", rest));
    EXPECT_FALSE(agrees("0.9007199254740993", rest));
    EXPECT_TRUE(agrees("-0.0", rest));
    EXPECT_FALSE(agrees("1.00000000000000000", rest));
    EXPECT_FALSE(agrees("99999999999.5", rest));
    for (const std::string other : {".5", "5.", "-", "-.5", ".", "", "nan", "inf", "+1.5", "1", "1.x", "0x1.8"}) {
        EXPECT_FALSE(agrees(other, rest)) << other;
    }
}

TEST(FieldScan, findsTheEndOfAnyNumberOfFields) {
    std::mt19937 random(3);
    const std::string characters = "ab;,,\n\x8c\xac-";
    for (int round = 0; round < 100'000; ++round) {
        std::string text;
        for (std::size_t left = random() % 60; left > 0; --left) {
            text += random() % 4 == 0 ? characters[random() % characters.size()] : 'x';
        }
        const std::size_t count = 1 + random() % 9;
        std::size_t end = 0;
        for (std::size_t seen = 0; end < text.size() && text[end] != '\n'; ++end) {
            seen += text[end] == ',' ? 1 : 0;
            if (seen == count) {
                break;
            }
        }
        const char* const found = endOfFields(text.data(), text.data() + text.size(), ',', count);
        ASSERT_EQ(static_cast<std::size_t>(found - text.data()), end) << count << " fields of " << text;
    }
}

TEST(LineScan, countsLineEndsAndSeesOddLines) {
    std::mt19937 random(4);
    for (int round = 0; round < 20'000; ++round) {
        std::string text(lineBlockBytes + 1, 'x');
        for (std::size_t left = random() % 200; left > 0; --left) {
            text[random() % text.size()] = '\n';
        }
        const std::string odd = "\"# \t\r\n\x8a\xa2";
        text[random() % text.size()] = odd[random() % odd.size()];
        LineBlock expected;
        for (std::size_t i = 0; i < lineBlockBytes; ++i) {
            expected.lineEnds += text[i] == '\n' ? 1 : 0;
            expected.isOdd = expected.isOdd || text[i] == '"' || (text[i] == '\n' && isOddLineStart(text[i + 1], "#"));
        }
        const LineBlock block = lineBlockAt(text.data(), '#');
        ASSERT_EQ(block.lineEnds, expected.lineEnds);
        ASSERT_EQ(block.isOdd, expected.isOdd);
    }
}

}  // namespace
}  // namespace velmorak
