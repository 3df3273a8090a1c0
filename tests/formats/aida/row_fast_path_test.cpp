#include "aida/read/AidaTableReader.h"
#include "aida/text/RowFastPath.h"
#include "executor/ThreadPool.h"
#include "support.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <random>

#include <velmorak/Value.h>

namespace velmorak {
namespace {

using testing::HasSubstr;

/// A text with the zeros behind it that scanners may look at.
std::string padded(const std::string& text) {
    return text + std::string(io::plainRowsMargin, '\0');
}

TEST(RowFastPath, haveTheNumbersThatTheirTextsSay) {
    std::mt19937_64 random(20260727);
    std::vector<std::string> texts{
        "0",      "-0",       "5.",  ".5",   "1E-5",     "+1",        "12345678901234567890", "1e300",
        "1e-320", "4.9e-324", "NaN", "-NaN", "Infinity", "-Infinity", "9007199254740993",     "0.30000000000000004"};
    std::uniform_real_distribution<double> power(-300.0, 300.0);
    for (int i = 0; i < 20000; ++i) {
        texts.push_back(textOf(std::pow(10.0, power(random)) * (i % 2 == 0 ? 1.0 : -1.0)));
        texts.push_back(std::to_string(random()) + "e" + std::to_string(random() % 60));
    }
    io::RowFastPath rows({{ColumnType::Real}});
    for (const std::string& text : texts) {
        double expected = 0.0;
        ASSERT_TRUE(readNumber(text, expected)) << text;
        const std::string row = "<row><entry value=\"" + text + "\"/></row>";
        rows.scan(padded(row).data(), row.size());
        ASSERT_EQ(rows.count(), 1U) << text;
        const double value = std::get<Column::Reals>(rows.columns()[0].values)[0];
        ASSERT_EQ(std::bit_cast<std::uint64_t>(value), std::bit_cast<std::uint64_t>(expected)) << text;
    }
}

TEST(RowFastPath, endBeforeWhatIsNoNumber) {
    io::RowFastPath rows({{ColumnType::Real}});
    for (const char* text : {"", "-", ".", "1 ", "1e", "1e+", "e5", "1.2.3", "--1", "1,5", "0x10"}) {
        const std::string row = std::string("<row><entry value=\"") + text + "\"/></row>";
        double number = 0.0;
        rows.scan(padded(row).data(), row.size());
        EXPECT_EQ(rows.count() == 1, readNumber(text, number)) << text;
    }
}

TEST(RowFastPath, areScannedUpToTheFirstThatIsNot) {
    io::RowFastPath rows({{ColumnType::Real}, {ColumnType::Integer}, {ColumnType::Boolean}, {ColumnType::Text}});
    const std::string good =
        " <row>\n<entry value=\"1.5\"/> <entry value=\"-3\" />\r\n<entry value=\"true\"/>"
        "<entry value=\"a 'b'\"/></row>\n";
    const std::string odd =
        "<row><entry value=\"1\"/><entry value=\"2\"/><entry value=\"0\"/><entry value=\"&lt;\"/></row>";
    const std::string text = padded(good + good + odd);
    rows.scan(text.data(), text.size() - io::plainRowsMargin);
    EXPECT_EQ(rows.count(), 2U);
    EXPECT_EQ(rows.bytes(), 2 * good.size());
    EXPECT_EQ(rows.lines(), 6U);
    EXPECT_EQ(rows.columns()[0].reals()[1], 1.5);
    EXPECT_EQ(rows.columns()[1].integers()[1], -3);
    EXPECT_EQ(rows.columns()[2].booleans()[1], 1);
    EXPECT_EQ(rows.columns()[3].texts()[1], "a 'b'");
}

TEST(RowFastPath, areNoneOfTheseRows) {
    for (const char* text :
         {"<row><entry value='1'/></row>", "<row/>", "<row><entry value=\"1\"></entry></row>", "<row></row>",
          "<row><entry value=\"1\"/><entry value=\"2\"/></row>", "<row><!-- --><entry value=\"1\"/></row>",
          "<row><entry value=\"1\" unit=\"m\"/></row>", "<row><entry value=\"&#49;\"/></row>",
          "<row><entry value=\"one\"/></row>", "<row><entry value=\"1\"/>2</row>", "<row><entry value=\"1\"/><row>",
          "<row><entryITuple/></row>", "</rows>", "<row><entry value=\"1\"/>\r</row>",
          "<row><entry value=\"1\n\"/></row>", "<row>\xC2\xA0<entry value=\"1\"/></row>",
          "<row x=\"1\"><entry value=\"1\"/></row>", "<row><entry value=\"1"}) {
        io::RowFastPath rows({{ColumnType::Real}});
        const std::string bytes = padded(text);
        rows.scan(bytes.data(), std::strlen(text));
        EXPECT_EQ(rows.count(), 0U) << text;
        EXPECT_EQ(rows.bytes(), 0U) << text;
    }
}

/// Everything that reading a table tells.
struct Told {
    std::vector<Column> columns;
    std::vector<std::size_t> chunks;
    std::string failure;
    std::vector<std::string> warnings;
};

bool isSame(const Column& one, const Column& other) {
    // By bits: NaN is NaN, and 0 is not -0.
    if (one.type() == ColumnType::Real && other.type() == ColumnType::Real) {
        return one.offsets == other.offsets &&
               std::equal(one.reals().begin(), one.reals().end(), other.reals().begin(), other.reals().end(),
                          [](double a, double b) {
                              return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
                          });
    }
    return one.offsets == other.offsets && one.values == other.values;
}

Told told(const std::filesystem::path& file, io::RowReading reading, std::size_t threads) {
    QuietContext run;
    Told all;
    const ThreadPool pool(threads);
    all.failure = failureOf([&] {
        const auto table = io::openAidaTable(file, "/t", run, reading);
        all.columns.resize(table->schema().size());
        for (Chunk chunk; table->next(chunk); chunk = {}) {
            all.chunks.push_back(chunk.rows);
            for (std::size_t i = 0; i < chunk.columns.size(); ++i) {
                std::visit(
                    [&](const auto& values) {
                        using Values = std::decay_t<decltype(values)>;
                        if (all.columns[i].values.index() != chunk.columns[i]->values.index()) {
                            all.columns[i].values.emplace<Values>();
                        }
                        auto& target = std::get<Values>(all.columns[i].values);
                        target.insert(target.end(), values.begin(), values.end());
                    },
                    chunk.columns[i]->values);
            }
        }
    });
    all.warnings = run.warnings;
    return all;
}

void expectSame(const Told& one, const Told& other, const std::string& about) {
    EXPECT_EQ(one.failure, other.failure) << about;
    EXPECT_EQ(one.warnings, other.warnings) << about;
    EXPECT_EQ(one.chunks, other.chunks) << about;
    EXPECT_TRUE(std::equal(one.columns.begin(), one.columns.end(), other.columns.begin(), other.columns.end(), isSame))
        << about;
}

class RowScanner : public AidaFiles {
protected:
    /// A tuple of four columns with rows as several programs write them.
    static std::string tuple(std::size_t rows, std::mt19937_64& random) {
        const std::array<std::string, 3> blanks{"", "\n", "\r\n    "};
        const std::string& blank = blanks[random() % blanks.size()];
        std::string text =
            "<tuple name=\"t\"><columns><column name=\"x\"/><column name=\"n\" type=\"int\"/>"
            "<column name=\"good\" type=\"boolean\"/><column name=\"tag\" type=\"string\"/></columns><rows>";
        std::normal_distribution<double> gauss;
        for (std::size_t row = 0; row < rows; ++row) {
            text += blank + "<row>" + blank + "<entry value=\"" + textOf(gauss(random)) + "\"/>" + blank +
                    "<entry value=\"" + std::to_string(random() % 1000) + "\"/>" + blank + "<entry value=\"" +
                    (random() % 2 == 0 ? "true" : "false") + "\"/>" + blank + "<entry value=\"run " +
                    std::to_string(row) + "\"/>" + blank + "</row>\n";
        }
        return text + "</rows></tuple>";
    }

    static std::string document(const std::string& objects) {
        return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<aida version=\"3.3\">\n" + objects + "\n</aida>\n";
    }

    void expectBothWaysSame(const std::string& bytes, const std::string& about) const {
        const auto file = fileWith(bytes);
        const Told parsed = told(file, io::RowReading::Parsed, 1);
        expectSame(told(file, io::RowReading::Scanned, 1), parsed, about);
        expectSame(told(file, io::RowReading::Scanned, 2), parsed, about + ", two threads");
    }
};

/// What random places are overwritten with, or have put before them: all that XML has in store for a row.
const std::array<std::string_view, 30> oddities{"<",
                                                ">",
                                                "\"",
                                                "'",
                                                "&",
                                                "&lt;",
                                                "&#65;",
                                                "<!-- </row> -->",
                                                "<!-- -->",
                                                "<?pi </row>?>",
                                                "<![CDATA[</row>]]>",
                                                "\r",
                                                "\n",
                                                "\t",
                                                "\xE9",
                                                "\xC3\xA9",
                                                "\xC3",
                                                "</row>",
                                                "<row>",
                                                "<row/>",
                                                "</rows>",
                                                "<entry/>",
                                                "<entry value='7'/>",
                                                "<entry value=\"8\"/>",
                                                "<entryITuple><row><entry value=\"1\"/></row></entryITuple>",
                                                "</entry>",
                                                " ",
                                                "x",
                                                "1e999",
                                                std::string_view("\0", 1)};

std::string mutated(std::string text, std::mt19937_64& random) {
    const std::size_t changes = 1 + random() % 4;
    for (std::size_t change = 0; change < changes; ++change) {
        const std::size_t place = random() % (text.size() + 1);
        const std::string_view odd = oddities[random() % oddities.size()];
        switch (random() % 8) {
            case 0:
                text.erase(place, 1 + random() % 8);
                break;
            case 1:
                text.resize(place);
                break;
            case 2:
                text.replace(place, 1, 1, static_cast<char>(random()));
                break;
            case 3:
                // Between two elements, where most oddities are allowed.
                text.insert(std::min(text.find('<', place), text.size()), odd);
                break;
            case 4:
                text.insert(std::min(text.find("<row", place), text.size()), odd);
                break;
            case 5:
                text.insert(std::min(text.find("\"/>", place), text.size()), odd);
                break;
            default:
                text.insert(place, odd);
        }
    }
    return text;
}

TEST_F(RowScanner, tellsOfDamagedFilesWhatTheParserTells) {
    std::mt19937_64 random(5);
    for (int i = 0; i < 3000 && !HasFailure(); ++i) {
        const std::string text = mutated(document(tuple(1 + random() % 40, random)), random);
        expectBothWaysSame(text, "mutation " + std::to_string(i) + ":\n" + text);
    }
}

TEST_F(RowScanner, tellsOfLongDamagedFilesWhatTheParserTells) {
    std::mt19937_64 random(6);
    const std::string whole = document(tuple(40000, random));
    for (int i = 0; i < 20 && !HasFailure(); ++i) {
        const std::string text = mutated(whole, random);
        expectBothWaysSame(random() % 2 == 0 ? gzipped(text) : text, "long mutation " + std::to_string(i));
    }
}

TEST_F(RowScanner, tellsOfDamagedGzipFilesWhatTheParserTells) {
    std::mt19937_64 random(8);
    const std::string packed = gzipped(document(tuple(20000, random)));
    for (int i = 0; i < 30 && !HasFailure(); ++i) {
        std::string bytes = packed;
        bytes[64 + random() % (bytes.size() - 64)] = static_cast<char>(random());
        if (i % 3 == 0) {
            bytes.resize(64 + random() % bytes.size() / 2);
        }
        expectBothWaysSame(bytes, "gzip mutation " + std::to_string(i));
    }
}

TEST_F(RowScanner, readsEncodingsAndDocumentTypesAsTheParser) {
    std::mt19937_64 random(9);
    const std::string rows = tuple(50, random);
    for (const std::string head :
         {"<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>", "<?xml version='1.0' encoding='windows-1252'?>",
          "<?xml version=\"1.0\" encoding=\"utf-8\"?>", "",
          "<!DOCTYPE aida SYSTEM \"http://aida.freehep.org/schemas/3.3/aida.dtd\">",
          "<!DOCTYPE aida [<!ATTLIST entry value NMTOKENS #IMPLIED>]>"}) {
        std::string odd = rows;
        odd.insert(odd.find("run 20"), " \xE9 a  b ");
        odd.insert(odd.find("run 30"), " a  b ");
        expectBothWaysSame(head + "<aida>" + rows + "</aida>", head);
        expectBothWaysSame(head + "<aida>" + odd + "</aida>", head + " with odd bytes");
    }
}

TEST_F(RowScanner, takesNoRowsOutOfWhatIsNoElementWhereverTheTextIsCut) {
    std::mt19937_64 random(12);
    const std::string text = document(tuple(30, random));
    const std::string row =
        "<row><entry value=\"1\"/><entry value=\"2\"/><entry value=\"0\"/><entry value=\"a\"/></row>";
    for (const std::string& odd :
         {"<!-- " + row + row + " -->", "<?pi " + row + row + "?>", "<![CDATA[" + row + row + "]]>",
          "<rowset>" + row + row + "</rowset>", std::string("\xC3"), std::string("\xE9")}) {
        for (std::size_t length = 0; length < 120 && !HasFailure(); ++length) {
            std::string changed = text;
            const std::size_t second = changed.find("<row>", changed.find("</row>"));
            changed.insert(changed.find("<row>", second + 1), odd + row);
            changed.insert(changed.find("<tuple"), std::string(length, ' '));
            expectBothWaysSame(changed, odd + " behind " + std::to_string(length) + " blanks");
        }
    }
}

TEST_F(RowScanner, namesTheSamePlaceBehindManyPlainRows) {
    std::mt19937_64 random(10);
    std::string text = document(tuple(35000, random));
    text.insert(text.find("run 34000"), "\" <");
    const Told scanned = told(fileWith(text), io::RowReading::Scanned, 2);
    EXPECT_THAT(scanned.failure, HasSubstr("(after 34000 complete rows)"));
    expectBothWaysSame(text, "a broken value");
}

}  // namespace
}  // namespace velmorak
