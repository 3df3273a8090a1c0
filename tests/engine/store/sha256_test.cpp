#include "store/Sha256.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace velmorak::test {
namespace {

std::string hexOfText(const std::string& text) {
    Sha256 hash;
    hash.add(text.data(), text.size());
    return hexOf(hash.finish());
}

/// The examples of FIPS 180 and its test vectors.
TEST(Sha256, givesThePublishedDigests) {
    EXPECT_EQ(hexOfText(""), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    EXPECT_EQ(hexOfText("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(hexOfText("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq"),
              "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
    EXPECT_EQ(hexOfText(std::string(1'000'000, 'a')),
              "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
}

TEST(Sha256, doesNotDependOnThePieces) {
    const std::string text(300, 'v');
    for (std::size_t cut = 0; cut <= text.size(); ++cut) {
        Sha256 hash;
        hash.add(text.data(), cut);
        hash.add(text.data() + cut, text.size() - cut);
        EXPECT_EQ(hexOf(hash.finish()), hexOfText(text)) << cut;
    }
}

TEST(Sha256, addsNumbersWithTheMostSignificantByteFirst) {
    Sha256 hash;
    hash.addNumber(0x0102030405060708);
    EXPECT_EQ(hexOf(hash.finish()), hexOfText("\x01\x02\x03\x04\x05\x06\x07\x08"));
}

TEST(Sha256, distinguishesSequencesOfTexts) {
    const auto digestOf = [](const std::vector<std::string>& texts) {
        Sha256 hash;
        for (const std::string& text : texts) {
            hash.addText(text);
        }
        return hash.finish();
    };
    EXPECT_NE(digestOf({"ab", "c"}), digestOf({"a", "bc"}));
    EXPECT_NE(digestOf({"", "a"}), digestOf({"a", ""}));
}

}  // namespace
}  // namespace velmorak::test
