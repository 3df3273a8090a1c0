#include "CsvFixture.h"

#include <velmorak/Dates.h>

#include <gmock/gmock.h>

#include <cmath>

namespace velmorak {
namespace {

using testing::ElementsAre;

class CsvWild : public CsvFixture {
protected:
    /// A file whose first 20,000 rows are integers, then a line, then more integers.
    void writeIntegersAnd(const std::string& line) {
        std::string text = "n,m\n";
        for (int row = 0; row < 20'000; ++row) {
            text += std::to_string(row) + ",7\n";
        }
        text += line + "\n";
        for (int row = 0; row < 20'000; ++row) {
            text += std::to_string(row) + ",8\n";
        }
        write(text);
    }

    Column::Reals reals(const std::string& name) {
        Column::Reals all;
        for (const Chunk& chunk : read()) {
            const auto& values = chunk.columns[columns.find(name).value()]->reals();
            all.insert(all.end(), values.begin(), values.end());
        }
        return all;
    }
};

TEST_F(CsvWild, aNumberMayMarkMissingValues) {
    options.missing = "-999";
    write("x,n\n1.5,1\n-999,2\n-99.9,-999\n");
    const Column::Reals x = reals("x");
    EXPECT_EQ(x[0], 1.5);
    EXPECT_TRUE(std::isnan(x[1]));
    EXPECT_EQ(x[2], -99.9);
    const Column::Reals n = reals("n");
    EXPECT_EQ(n[1], 2.0);
    EXPECT_TRUE(std::isnan(n[2]));
}

TEST_F(CsvWild, anIntegerColumnBecomesRealWhereALaterValueHasAFraction) {
    writeIntegersAnd("1.5,7");
    const Column::Reals values = reals("n");
    EXPECT_EQ(typeOf("n"), "real");
    EXPECT_EQ(typeOf("m"), "integer");
    ASSERT_EQ(values.size(), 40'001U);
    EXPECT_EQ(values[19'999], 19'999.0);
    EXPECT_EQ(values[20'000], 1.5);
    EXPECT_EQ(values[40'000], 19'999.0);
}

TEST_F(CsvWild, anIntegerColumnBecomesRealWhereALaterValueIsMissing) {
    for (const std::string missing : {"", "NA", " "}) {
        writeIntegersAnd(missing + ",7");
        EXPECT_TRUE(std::isnan(reals("n")[20'000])) << missing;
        EXPECT_EQ(typeOf("m"), "integer");
    }
}

TEST_F(CsvWild, anIntegerColumnBecomesRealWhereALaterValueIsTooLarge) {
    writeIntegersAnd("9223372036854775808,7");
    EXPECT_EQ(reals("n")[20'000], 9223372036854775808.0);
    writeIntegersAnd("9223372036854775807,7");
    read();
    EXPECT_EQ(typeOf("n"), "integer") << "the largest integer";
}

TEST_F(CsvWild, quotesAndCommentsHideNoValueThatWidensAColumn) {
    writeIntegersAnd("# 2.5,\n\"3\n4\",9\n   \n+6,7.5");
    EXPECT_EQ(failure(),
              "data.csv\", line 20003, column 1 (n): \"3\n4\" is not a value of type integer; that type was "
              "inferred from the first 10000 rows: enter \"n: text\" for \"types\"");
    EXPECT_EQ(typeOf("m"), "real");
}

TEST_F(CsvWild, aTypeThatIsGivenIsKept) {
    writeIntegersAnd("1.5,7");
    options.types = {{"n", ColumnType::Integer}};
    EXPECT_EQ(failure(), "data.csv\", line 20002, column 1 (n): \"1.5\" is not a value of type integer");
}

TEST_F(CsvWild, aTextAfterManyNumbersIsNamedWithTheCure) {
    writeIntegersAnd("1,none");
    EXPECT_EQ(failure(),
              "data.csv\", line 20002, column 2 (m): \"none\" is not a value of type integer; that type was "
              "inferred from the first 10000 rows: enter \"m: text\" for \"types\"");
}

TEST_F(CsvWild, aPreviewLooksAtTheFirstRowsOnly) {
    writeIntegersAnd("1.5,7");
    context.preview = true;
    const CsvReader reader(options, context);
    EXPECT_EQ(reader.schema()[0].type, ColumnType::Integer);
}

TEST_F(CsvWild, commasMayBeDecimalSigns) {
    write("x;n;name\n1,5;2;1.5\n-0,25e2;3;b\nnan;4;c\n");
    options.form.delimiter = ';';
    options.decimal = ',';
    const Column::Reals values = reals("x");
    EXPECT_EQ(values[0], 1.5);
    EXPECT_EQ(values[1], -25.0);
    EXPECT_TRUE(std::isnan(values[2]));
    EXPECT_EQ(typeOf("n"), "integer");
    EXPECT_EQ(typeOf("name"), "text");
}

TEST_F(CsvWild, aPointIsNoDecimalSignBesideCommas) {
    write("x\n1,5\n");
    options.form.delimiter = ';';
    options.decimal = ',';
    options.types = {{"x", ColumnType::Real}};
    EXPECT_THAT(reals("x"), ElementsAre(1.5));
    write("x\n1.5\n");
    EXPECT_EQ(failure(), "data.csv\", line 2, column 1 (x): \"1.5\" is not a value of type real");
}

TEST_F(CsvWild, quotedNumbersAreNumbersWhereTheDelimiterIsTheirSign) {
    write("x,n\n\"1,5\",\"1\"\n\"2\",\"3\"\n");
    options.decimal = ',';
    EXPECT_THAT(reals("x"), ElementsAre(1.5, 2.0));
    EXPECT_EQ(typeOf("n"), "integer");
}

TEST_F(CsvWild, thousandsAreInGroupsOfThree) {
    options.form.delimiter = ';';
    options.thousands = ',';
    write("x;n\n1,234,567.5;-12,345\n999;1\n");
    EXPECT_THAT(reals("x"), ElementsAre(1234567.5, 999.0));
    EXPECT_EQ(typeOf("n"), "integer");
    for (const std::string wrong : {"12,34", ",123", "1,2345", "1234,567", "1,,234", "1,"}) {
        write("x\n1\n" + wrong + "\n");
        read();
        EXPECT_EQ(typeOf("x"), "text") << wrong;
    }
    options.decimal = ',';
    EXPECT_EQ(failure(), "the sign between thousands is also the decimal sign");
}

TEST_F(CsvWild, theSecondLineMayHoldUnits) {
    write("# from the counter\nE,t,name\nGeV,[ns],\n1,2,a\n3,4,b\n");
    options.hasUnits = true;
    EXPECT_EQ(read()[0].rows, 2U);
    EXPECT_EQ(columns[0].unit, "GeV");
    EXPECT_EQ(columns[1].unit, "ns");
    EXPECT_EQ(columns[2].unit, "");
    EXPECT_EQ(typeOf("E"), "integer");
    write("E,t\nGeV\n1,2\n");
    EXPECT_EQ(failure(), "data.csv\", line 2: there are 1 units for 2 columns");
}

TEST_F(CsvWild, textInUtf16IsReadByItsMark) {
    const std::u16string text = u"name,x\r\nM\u00fcon \u4e2d \U0001F600,1\r\n\"a\nb\",2\r\n";
    for (const bool isBig : {false, true}) {
        std::string bytes = isBig ? "\xFE\xFF" : "\xFF\xFE";
        for (const char16_t unit : text) {
            const char low = static_cast<char>(unit & 0xFFU);
            const char high = static_cast<char>(unit >> 8U);
            bytes += isBig ? std::string{high, low} : std::string{low, high};
        }
        write(bytes);
        options.encoding = CsvEncoding::Automatic;
        EXPECT_THAT(read()[0].columns[0]->texts(), ElementsAre("M\u00fcon \u4e2d \U0001F600", "a\nb"));
        write(bytes.substr(2));
        options.encoding = CsvEncoding::Utf16;
        EXPECT_THAT(read()[0].columns[0]->texts(), ElementsAre("M\u00fcon \u4e2d \U0001F600", "a\nb"));
    }
    EXPECT_TRUE(context.warnings.empty());
}

TEST_F(CsvWild, aLargeFileInUtf16HasAllItsRows) {
    std::string bytes = "\xFF\xFE";
    for (int row = 0; row < 400'000; ++row) {
        for (const char c : std::to_string(row) + "\n") {
            bytes += std::string{c, '\0'};
        }
    }
    write(bytes);
    options.hasHeader = false;
    std::size_t rows = 0;
    for (const Chunk& chunk : read()) {
        for (const std::int64_t value : chunk.columns[0]->integers()) {
            ASSERT_EQ(value, static_cast<std::int64_t>(rows));
            ++rows;
        }
    }
    EXPECT_EQ(rows, 400'000U);
}

TEST_F(CsvWild, halfACharacterIsReplaced) {
    write(std::string("\xFF\xFEn\0\n\0a\0\x3D\xD8x\0\n\0\x3D", 15));
    EXPECT_THAT(read()[0].columns[0]->texts(), ElementsAre("a\uFFFDx"));
}

TEST_F(CsvWild, latin1CanBeNamed) {
    write("name,x\nM\xFCon,1\n\xC3\xBC,2\n");
    options.encoding = CsvEncoding::Latin1;
    EXPECT_THAT(read()[0].columns[0]->texts(), ElementsAre("M\u00fcon", "\u00c3\u00bc"));
    EXPECT_TRUE(context.warnings.empty());
}

TEST_F(CsvWild, bytesThatAreNoUtf8AreReportedOnceForTheWholeFile) {
    std::string text = "name\n";
    for (int row = 0; row < 100'000; ++row) {
        text += row > 40'000 && row % 5 == 0 ? "\xFC\n" : "a\n";
    }
    write(text);
    read();
    ASSERT_EQ(context.warnings.size(), 1U);
    EXPECT_THAT(context.warnings[0], testing::EndsWith("the first on line 40007, are read as ISO-8859-1"));
}

TEST_F(CsvWild, datesBecomeSecondsSince1970) {
    write("begin,x\n1970-01-02,1\n2024-02-29T12:30:15.25Z,2\nNA,3\nNaN,4\n");
    options.types = {{"begin", ColumnType::Real}};
    options.dates = {"begin"};
    const Column::Reals values = reals("begin");
    EXPECT_EQ(values[0], 86400.0);
    EXPECT_EQ(values[1], 1709209815.25);
    EXPECT_TRUE(std::isnan(values[2]));
    EXPECT_EQ(columns[0].unit, dateUnit);
    write("begin\n2024-02-30\n");
    EXPECT_EQ(failure(),
              "data.csv\", line 2, column 1 (begin): \"2024-02-30\" is not a date, such as 2024-02-29T12:30:00Z");
}

TEST_F(CsvWild, filesThatAreNoTextAreRefusedByName) {
    write("%PDF-1.4\n1,2\n");
    EXPECT_EQ(failure(), "data.csv\" is a PDF document, not a text file with rows");
    write(std::string("\xFD\x37zXZ\0abc", 9));
    EXPECT_EQ(failure(), "data.csv\" is packed with xz (unpack it first), not a text file with rows");
}

}  // namespace
}  // namespace velmorak
