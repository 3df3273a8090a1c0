#include <gmock/gmock.h>

#include <expat.h>

#include <bit>
#include <cmath>
#include <limits>
#include <map>
#include <set>

#include "aida/containers/TextInput.h"
#include "support.h"

namespace velmorak {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

using BinaryAida = AidaFiles;

/// What a parser that knows nothing of AIDA sees of a text: a line for each beginning of an element, with its
/// attributes by name, and for each text that is no blank.
class Seen {
public:
    explicit Seen(const std::string& text) {
        XML_Parser parser = XML_ParserCreate(nullptr);
        XML_SetUserData(parser, this);
        XML_SetElementHandler(parser, began, ended);
        XML_SetCharacterDataHandler(parser, told);
        isWhole = XML_Parse(parser, text.data(), static_cast<int>(text.size()), 1) == XML_STATUS_OK;
        XML_ParserFree(parser);
    }

    std::vector<std::string> lines;
    std::set<std::string> elements;
    std::set<std::string> attributes;
    bool isWhole = false;

private:
    static void XMLCALL began(void* self, const XML_Char* name, const XML_Char** attributes) {
        auto& seen = *static_cast<Seen*>(self);
        std::map<std::string, std::string> all;
        for (; *attributes; attributes += 2) {
            all[attributes[0]] = attributes[1];
            seen.attributes.insert(attributes[0]);
        }
        seen.elements.insert(name);
        seen.lines.emplace_back(name);
        for (const auto& [key, value] : all) {
            seen.lines.back() += " " + key + "=" + value;
        }
    }
    static void XMLCALL ended(void* self, const XML_Char* name) {
        static_cast<Seen*>(self)->lines.push_back(std::string("/") + name);
    }
    static void XMLCALL told(void* self, const XML_Char* text, int length) {
        const std::string all(text, static_cast<std::size_t>(length));
        if (all.find_first_not_of(" \n") != std::string::npos) {
            static_cast<Seen*>(self)->lines.push_back(all);
        }
    }
};

std::string textOf(const std::filesystem::path& file, const RunContext& run) {
    io::TextInput stream(file, run);
    std::string text;
    std::string piece(100, '\0');
    for (std::size_t count = 1; count != 0; text.append(piece, 0, count)) {
        count = stream.read(piece.data(), piece.size());
    }
    return text;
}

/// An entry with one value, in a file of one column.
std::string entryWith(const std::string& type, const std::string& attribute) {
    const std::string zero(1, '\0');
    std::string bytes("\x03\x00\x00\x6A\x00", 5);
    bytes += "\x45\xD4\x13\xC3\x05\x08" + zero + "\x01n" + zero + "\x01";  // aida, tuple name="n"
    bytes += "\x55\x96\x13\xC3\x05\x08" + zero + "\x01x" + zero;           // columns, column name="x"
    bytes += "\x2F\xC3" + std::string(1, static_cast<char>(type.size() + 4)) + "\x08" + zero +
             std::string(1, static_cast<char>(type.size())) + type + zero + "\x01\x01";  // type
    return bytes + "\x57\x58\x99" + attribute + "\x01\x01\x01\x01\x01";                  // rows, row, entry
}

TEST_F(BinaryAida, meansWhatTheSameFileSaysAsText) {
    const Seen binary(textOf(ownFile("binary.aida"), run));
    const Seen text(contentOf(ownFile("binary_as_text.aida")));
    ASSERT_TRUE(text.isWhole);
    EXPECT_TRUE(binary.isWhole);
    EXPECT_EQ(text.elements.size(), 45U);
    EXPECT_EQ(text.attributes.size(), 61U);
    EXPECT_EQ(binary.lines, text.lines);
}

TEST_F(BinaryAida, keepsTheValuesOfEveryType) {
    const Rows rows = readRows(ownFile("binary.aida"), "/made/values", run);
    EXPECT_EQ(rows.failure, "");
    ASSERT_EQ(rows.columns.size(), 10U);
    EXPECT_EQ(rows.columns[0].booleans(), (Column::Booleans{1, 0, 1}));
    EXPECT_EQ(rows.columns[1].integers(), (Column::Integers{3, -128, 127}));
    EXPECT_EQ(rows.columns[2].texts(), (Column::Texts{"a", "\u00e9", "<"}));
    EXPECT_EQ(rows.columns[3].reals()[0], 2.5);
    EXPECT_TRUE(std::isnan(rows.columns[3].reals()[1]));
    EXPECT_EQ(rows.columns[3].reals()[2], -std::numeric_limits<double>::infinity());
    EXPECT_EQ(rows.columns[4].reals()[0], static_cast<double>(std::bit_cast<float>(0x3d88d2d8U)));
    EXPECT_EQ(rows.columns[5].integers(), (Column::Integers{70000, -2147483648, 2147483647}));
    EXPECT_EQ(rows.columns[6].integers()[0], 0x2AC30D0C8F55F4BC);
    EXPECT_EQ(rows.columns[6].integers()[1], std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(rows.columns[7].integers(), (Column::Integers{15, -32768, 32767}));
    EXPECT_EQ(rows.columns[8].texts(), (Column::Texts{"muon <2>", "", "\u00b5 & \u4e2d"}));
    EXPECT_EQ(rows.columns[9].booleans(), (Column::Booleans{1, 0, 1, 1, 0, 1, 1, 0, 1}));
    EXPECT_EQ(run.warnings, std::vector<std::string>());
}

TEST_F(BinaryAida, keepsBlanksAsCharacters) {
    for (const char blank : {'\t', '\n', '\r', ' '}) {
        const Rows rows =
            readRows(fileWith(entryWith("char", std::string("\x0B\xC3\x03\x02\x00", 5) + blank)), "/n", run);
        ASSERT_EQ(rows.count(), 1U) << rows.failure;
        EXPECT_EQ(rows.columns[0].texts(), Column::Texts{std::string(1, blank)});
    }
}

TEST_F(BinaryAida, hasTheSameTableAsItsText) {
    const Rows binary = readRows(ownFile("binary.aida"), "/made/values", run);
    const Rows text = readRows(ownFile("binary_as_text.aida"), "/made/values", run);
    ASSERT_EQ(binary.schema, text.schema);
    EXPECT_EQ(binary.columns[0].booleans(), text.columns[0].booleans());
    EXPECT_EQ(binary.columns[1].integers(), text.columns[1].integers());
    EXPECT_EQ(binary.columns[2].texts(), text.columns[2].texts());
    EXPECT_EQ(binary.columns[4].reals(), text.columns[4].reals());
    EXPECT_EQ(binary.columns[6].integers(), text.columns[6].integers());
    const Rows cloud = readRows(ownFile("binary.aida"), "/made/cloud3", run);
    ASSERT_EQ(cloud.count(), 2U);
    EXPECT_EQ(cloud.columns[2].reals()[1], 2.5);
    EXPECT_EQ(cloud.columns[3].reals()[1], 2.5);
}

TEST_F(BinaryAida, hasTheCoordinatesOfAPointOnEitherPage) {
    std::string bytes = contentOf(ownFile("binary.aida"));
    const std::string onPage = std::string("\x08\xC3\x09\x03\x3F\xE0\0\0\0\0\0\0\x0B", 13);
    const auto place = bytes.find(onPage);
    ASSERT_NE(place, std::string::npos);
    bytes.insert(place, std::string("\0\0", 2));
    const Rows points = readRows(fileWith(bytes), "/made/cloud1", run);
    EXPECT_EQ(points.columns[0].reals(), (Column::Reals{0.5, 0.5}));
    EXPECT_EQ(points.columns[1].reals(), (Column::Reals{2.5, 2.5}));
}

TEST_F(BinaryAida, hasAllCoordinatesOfAPointOnTheFirstPageToo) {
    std::string bytes = contentOf(ownFile("binary.aida"));
    const auto place = bytes.find(std::string("\xA3\x08\xC3\x09\x03\x3F\xE0", 7));  // entry3d valueX="0.5"
    ASSERT_NE(place, std::string::npos);
    bytes.insert(place + 1, std::string("\0\0", 2));
    const Rows points = readRows(fileWith(bytes), "/made/cloud3", run);
    ASSERT_EQ(points.columns.size(), 4U);
    for (const std::size_t coordinate : {0U, 1U, 2U}) {
        const double value = 0.5 + static_cast<double>(coordinate);
        EXPECT_EQ(points.columns[coordinate].reals(), (Column::Reals{value, value}));
    }
    EXPECT_EQ(points.columns[3].reals(), (Column::Reals{2.5, 2.5}));
}

TEST_F(BinaryAida, failsForAValueThatIsNotUnderstood) {
    const auto failureWith = [&](const std::string& type, const std::string& attribute) {
        const Rows rows = readRows(fileWith(entryWith(type, attribute)), "/n", run);
        return rows.count() == 0 ? rows.failure : "a row";
    };
    const std::string wrongAttribute("\x06\xC3\x02\x01\x05", 5);
    EXPECT_THAT(failureWith("byte", wrongAttribute), HasSubstr("attribute 1 of <entry> is unknown"));
    const std::string wrongPage("\x00\x02\x06\xC3\x02\x01\x05", 7);
    EXPECT_THAT(failureWith("byte", wrongPage), HasSubstr("attribute 119 of <entry> is unknown"));
    const std::string wrongType("\x0A\xC3\x02\x09\x05", 5);
    EXPECT_THAT(failureWith("byte", wrongType), HasSubstr("the value of <entry> has the unknown type 9"));
    const std::string wrongLength("\x0A\xC3\x03\x01\x05\x05", 6);
    EXPECT_THAT(failureWith("byte", wrongLength), HasSubstr("the value of <entry> is a byte of 2 bytes instead of 1"));
    const std::string wrongBoolean("\x09\xC3\x02\x00\x05", 5);
    EXPECT_THAT(failureWith("boolean", wrongBoolean), HasSubstr("is a boolean that is neither true nor false"));
    const std::string empty("\x09\xC3\x00", 3);
    EXPECT_THAT(failureWith("boolean", empty), HasSubstr("the value of <entry> is empty"));
    const std::string noMark("\x09\x03\x00", 3);
    EXPECT_THAT(failureWith("boolean", noMark), HasSubstr("the value of <entry> has no value"));
    const std::string wrongText("\x11\xC3\x05\x08\x00\x07\x61\x00", 8);
    EXPECT_THAT(failureWith("string", wrongText), HasSubstr("is a text whose length does not fit its 4 bytes"));
    EXPECT_EQ(failureWith("byte", std::string("\x0A\xC3\x02\x01\x05", 5)), "a row");
}

TEST_F(BinaryAida, saysWhereItIsCut) {
    const std::string whole = entryWith("double", std::string("\x0C\xC3\x09\x03\x40\x04\0\0\0\0\0\0", 12));
    const std::size_t behindValue = whole.size() - 5;
    for (std::size_t missing = 1; missing < 9; ++missing) {
        const Rows rows = readRows(fileWith(whole.substr(0, behindValue - missing)), "/n", run);
        EXPECT_EQ(rows.count(), 0U);
        EXPECT_THAT(rows.failure, HasSubstr("the binary XML is damaged at its byte"));
        EXPECT_THAT(rows.failure, HasSubstr("it ends within the value of <entry>")) << missing;
    }
    const Rows rows = readRows(fileWith(whole.substr(0, behindValue)), "/n", run);
    EXPECT_THAT(rows.failure, HasSubstr("it ends within <entry>"));
}

}  // namespace
}  // namespace velmorak
