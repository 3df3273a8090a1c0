#include "aida/text/TextRepair.h"

#include <gtest/gtest.h>

namespace velmorak::io {
namespace {

std::string repairedInPiecesOf(std::size_t length, std::string_view text) {
    TextRepair repair;
    std::string result;
    for (std::size_t begin = 0; begin < text.size(); begin += length) {
        repair.append(text.substr(begin, length), result);
    }
    repair.finish(result);
    return result;
}

TEST(TextRepair, leavesValidTextAloneWhereverItIsCut) {
    const std::string text = "plain, é, €, \xF0\x9F\x94\xAC, end";
    for (std::size_t length = 1; length < 10; ++length) {
        EXPECT_EQ(repairedInPiecesOf(length, text), text) << length;
    }
}

TEST(TextRepair, takesOtherBytesAsLatin1) {
    for (std::size_t length = 1; length < 6; ++length) {
        EXPECT_EQ(repairedInPiecesOf(length, "caf\xE9 au lait"), "café au lait") << length;
        EXPECT_EQ(repairedInPiecesOf(length, "\xE9"), "é") << length;
        EXPECT_EQ(repairedInPiecesOf(length, "\xC3\xC3\xA9"), "Ãé") << length;
        EXPECT_EQ(repairedInPiecesOf(length, "\xC0\xAF"), "À¯") << length;
    }
}

TEST(TextRepair, counts) {
    TextRepair repair;
    std::string result;
    repair.append("é\xE9\xE8", result);
    repair.finish(result);
    EXPECT_EQ(repair.repaired(), 2U);
}

}  // namespace
}  // namespace velmorak::io
