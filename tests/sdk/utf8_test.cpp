#include <velmorak/Utf8.h>

#include <gtest/gtest.h>

#include <cstdint>

namespace velmorak {
namespace {

/// The code point as RFC 3629, section 3, encodes it, also where it must not be encoded.
std::string encoded(char32_t code, std::size_t bytes) {
    if (bytes == 1) {
        return {static_cast<char>(code)};
    }
    std::string text(bytes, '\0');
    for (std::size_t i = bytes - 1; i > 0; --i) {
        text[i] = static_cast<char>(0x80U | (code & 0x3FU));
        code >>= 6U;
    }
    text[0] = static_cast<char>((0xFFU << (8 - bytes)) | code);
    return text;
}

std::size_t bytesOf(char32_t code) {
    return code < 0x80 ? 1 : code < 0x800 ? 2 : code < 0x10000 ? 3 : 4;
}

TEST(Utf8, aWrittenCharacterIsReadBack) {
    for (const char32_t code : {0x0U, 0x7FU, 0x80U, 0x7FFU, 0x800U, 0xD7FFU, 0xE000U, 0xFFFFU, 0x10000U, 0x10FFFFU}) {
        std::string text;
        appendUtf8(code, text);
        EXPECT_EQ(characterBytes(text), text.size()) << std::hex << static_cast<unsigned>(code);
        EXPECT_EQ(codePointOf(text), code);
    }
}

TEST(Utf8, acceptsEveryCodePointButSurrogates) {
    for (char32_t code = 0; code <= 0x10FFFF; ++code) {
        const std::string text = encoded(code, bytesOf(code));
        const bool isSurrogate = code >= 0xD800 && code <= 0xDFFF;
        ASSERT_EQ(characterBytes(text + "x"), isSurrogate ? 0 : text.size()) << std::hex << std::uint32_t{code};
        ASSERT_EQ(isUtf8(text), !isSurrogate) << std::hex << std::uint32_t{code};
        if (!isSurrogate) {
            ASSERT_EQ(codePointOf(text), code);
        }
    }
}

TEST(Utf8, refusesOverlongSequencesAndCodePointsBeyondTheLast) {
    for (const char32_t code : {U'\0', U'/', char32_t{0x7F}}) {
        EXPECT_EQ(characterBytes(encoded(code, 2)), 0U);
        EXPECT_EQ(characterBytes(encoded(code, 3)), 0U);
    }
    EXPECT_EQ(characterBytes(encoded(0x7FF, 3)), 0U);
    EXPECT_EQ(characterBytes(encoded(0xFFFF, 4)), 0U);
    EXPECT_EQ(characterBytes(encoded(0x110000, 4)), 0U);
    EXPECT_EQ(characterBytes("\xF8\x88\x80\x80\x80"), 0U);
}

TEST(Utf8, refusesBytesThatBeginNoCharacter) {
    for (int byte = 0x80; byte < 0xC2; ++byte) {
        EXPECT_EQ(characterBytes(static_cast<char>(byte) + std::string("\x80")), 0U) << byte;
    }
    for (int byte = 0xF5; byte <= 0xFF; ++byte) {
        EXPECT_EQ(characterBytes(static_cast<char>(byte) + std::string("\x80\x80\x80")), 0U) << byte;
    }
    EXPECT_EQ(characterBytes(""), 0U);
}

TEST(Utf8, expectsTheRestOfACutCharacter) {
    const std::string text = "\xF0\x9F\x98\x80";
    for (std::size_t size = 1; size <= text.size(); ++size) {
        EXPECT_EQ(expectedCharacterBytes(text.substr(0, size)), 4U);
        EXPECT_EQ(characterBytes(text.substr(0, size)), size == 4 ? 4U : 0U);
    }
    EXPECT_EQ(expectedCharacterBytes("\xE0\x80"), 0U) << "overlong, whatever follows";
    EXPECT_EQ(expectedCharacterBytes("\xE2\x82"), 3U);
    EXPECT_EQ(expectedCharacterBytes("\xE2\x82x"), 0U);
}

TEST(Utf8, countsCharacters) {
    EXPECT_EQ(characterCount("5 \u00B5m"), 4U);
    EXPECT_EQ(characterCount("\xF0\x9F\x98\x80"), 1U);
    EXPECT_EQ(characterCount(""), 0U);
}

TEST(Utf8, convertsStrayBytesFromLatin1AndKeepsTheRest) {
    EXPECT_EQ(toUtf8("5 \xB5m, 5 \u00B5m"), "5 \u00B5m, 5 \u00B5m");
    EXPECT_EQ(toUtf8("caf\xE9"), "caf\u00E9");
    EXPECT_EQ(toUtf8("\xED\xA0\x80"), "\u00ED\u00A0\u0080") << "a surrogate";
    EXPECT_EQ(toUtf8("plain"), "plain");
    EXPECT_TRUE(isUtf8(toUtf8("\xFF\xFE\x80\xC3")));
}

TEST(Utf8, appendsLatin1) {
    std::string text;
    for (int code = 0; code < 256; ++code) {
        text.clear();
        appendLatin1(static_cast<char>(code), text);
        ASSERT_EQ(characterBytes(text), text.size());
        EXPECT_EQ(codePointOf(text), static_cast<char32_t>(code));
    }
}

}  // namespace
}  // namespace velmorak
