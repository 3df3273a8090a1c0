#include "StoppingBench.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>

namespace {

using namespace velmorak;
using test::KindHarness;
using test::StoppingBench;

using Reals = std::vector<double>;

class Csv : public testing::Test {
protected:
    void write(const std::string& content) {
        const std::filesystem::path file = bench.folder() / "data.csv";
        std::ofstream(file, std::ios::binary) << content;
        bench.set("file", file.string());
    }

    std::string typeOf(const std::string& column) {
        return std::string(nameOf(bench.table().schema[bench.table().schema.find(column).value()].type));
    }

    const Column& column(const std::string& name) {
        return *bench.table().chunks.at(0).columns[bench.table().schema.find(name).value()];
    }

    /// The failure without the name of the folder.
    std::string complaint() {
        const std::string text = bench.failure();
        return text.substr(text.find("data.csv"));
    }

    KindHarness bench{"CsvTable"};
};

TEST_F(Csv, typesAreFoundFromTheData) {
    write("n,x,flag,name\n1,1.5,true,mu\n-2,3,false,e\n");
    bench.run();
    EXPECT_EQ(typeOf("n"), "integer");
    EXPECT_EQ(typeOf("x"), "real");
    EXPECT_EQ(typeOf("flag"), "boolean");
    EXPECT_EQ(typeOf("name"), "text");
    EXPECT_EQ(column("n").integers(), (Column::Integers{1, -2}));
    EXPECT_EQ(column("x").reals(), (Reals{1.5, 3}));
    EXPECT_EQ(column("flag").booleans(), (Column::Booleans{1, 0}));
    EXPECT_EQ(column("name").texts(), (Column::Texts{"mu", "e"}));
}

TEST_F(Csv, missingValuesAreNaNOrEmptyTexts) {
    write("n,x,name\n1,,mu\n,NA,\n");
    bench.run();
    EXPECT_EQ(typeOf("n"), "real") << "an integer cannot be missing";
    EXPECT_EQ(column("n").reals()[0], 1.0);
    EXPECT_TRUE(std::isnan(column("n").reals()[1]));
    EXPECT_TRUE(std::isnan(column("x").reals()[0]));
    EXPECT_TRUE(std::isnan(column("x").reals()[1]));
    EXPECT_EQ(column("name").texts(), (Column::Texts{"mu", ""}));
}

TEST_F(Csv, quotesHoldDelimitersLineEndsAndQuotes) {
    write("name,x\r\n\"a, b\",1\r\n\"two\nlines\",2\r\n\"say \"\"hi\"\"\" , 3\r\n\"4\",4");
    bench.run();
    EXPECT_EQ(column("name").texts(), (Column::Texts{"a, b", "two\nlines", "say \"hi\"", "4"}));
    EXPECT_EQ(bench.table().column("x"), (Reals{1, 2, 3, 4}));
}

TEST_F(Csv, commentsEmptyLinesAndAByteOrderMarkAreLeftOut) {
    write("\xEF\xBB\xBF# made today\n\nx\n  # more\n1\n\n2\n#end");
    bench.run();
    EXPECT_EQ(bench.table().column("x"), (Reals{1, 2}));
}

TEST_F(Csv, otherDelimiters) {
    for (const auto& [name, text] :
         std::vector<std::pair<std::string, std::string>>{{"semicolon", "x;y\n1;2\n"},
                                                          {"tabulator", "x\ty\n1\t2\n"},
                                                          {"bar", "x|y\n1|2\n"},
                                                          {"blanks", " x  y \n 1 \t 2 \n"}}) {
        write(text);
        bench.set("delimiter", name).run();
        EXPECT_EQ(bench.table().column("x"), Reals{1}) << name;
        EXPECT_EQ(bench.table().column("y"), Reals{2}) << name;
    }
}

TEST_F(Csv, columnsWithoutAHeaderAreNumbered) {
    write("1,2\n3,4\n");
    bench.set("header", "no").run();
    EXPECT_EQ(bench.table().column("c1"), (Reals{1, 3}));
    EXPECT_EQ(bench.table().column("c2"), (Reals{2, 4}));
}

TEST_F(Csv, typesCanBeGiven) {
    write("run,x\n1,1\n2,2\n");
    bench.set("types", "run: text; x: real").run();
    EXPECT_EQ(typeOf("run"), "text");
    EXPECT_EQ(typeOf("x"), "real");
    EXPECT_EQ(bench.set("types", "z: real").failure(),
              "types: there is no column \"z\"; the columns are \"x\", \"run\"");
    EXPECT_NE(bench.kind().refusal("types", "x: number"), "");
    EXPECT_NE(bench.kind().refusal("types", "x: real; x: text").find("the type of column \"x\" is given twice"),
              std::string::npos);
}

TEST_F(Csv, aBadFieldIsNamedByLineAndColumn) {
    write("# first\nx,n\n1,1\n2,b\n");
    bench.set("types", "n: integer");
    EXPECT_EQ(complaint(), "data.csv\", line 4, column 2 (n): \"b\" is not a value of type integer");
}

TEST_F(Csv, aRowOfAnotherLengthIsNamedByLine) {
    write("x,n\n1,1\n\"2\n\",2,3\n");
    EXPECT_EQ(complaint(), "data.csv\", line 3: there are 3 fields instead of 2");
}

TEST_F(Csv, badRowsAreSkippedCountedAndReported) {
    write("x,n\n1,1\nbad,2\n3\n4,4\n5,five\n");
    bench.set("types", "x: real, n: integer").set("errors", "skip").expectWarnings().run();
    EXPECT_EQ(bench.table().column("x"), (Reals{1, 4}));
    EXPECT_EQ(bench.table().column("n"), (Reals{1, 4}));
    ASSERT_EQ(bench.warnings().size(), 1U);
    EXPECT_TRUE(bench.warnings()[0].starts_with("3 rows were skipped; the first: "));
    EXPECT_TRUE(bench.warnings()[0].ends_with("line 3, column 1 (x): \"bad\" is not a value of type real"));
}

TEST_F(Csv, aQuoteThatIsNotClosedIsSaid) {
    write("x,name\n1,\"mu\n2,e\n");
    EXPECT_EQ(complaint(), "data.csv\", line 2: a quote is not closed");
}

TEST_F(Csv, oneFieldIsSaidInTheSingular) {
    write("x,n\n1\n");
    EXPECT_EQ(complaint(), "data.csv\", line 2: there is 1 field instead of 2");
}

TEST_F(Csv, linesOfOldMacFilesEndWithACarriageReturn) {
    write("x,name\r1,mu\r2,\"a\rb\"\r");
    bench.run();
    EXPECT_EQ(bench.table().column("x"), (Reals{1, 2}));
    EXPECT_EQ(column("name").texts(), (Column::Texts{"mu", "a\nb"}));
    std::string lines = "x\r";
    for (int row = 0; row < 600'000; ++row) {
        lines += "1234\r";
    }
    write(lines);
    bench.run();
    EXPECT_EQ(bench.table().column("x").size(), 600'000U);
}

TEST_F(Csv, utf32IsRefusedByName) {
    write(std::string("\xFF\xFE\0\0x\0\0\0", 8));
    EXPECT_EQ(complaint(), "data.csv\" is encoded in UTF-32; save it as UTF-8");
    write(std::string("x\0,\0n\0\n\0", 8));
    EXPECT_EQ(complaint(), "data.csv\", line 1: it contains a zero byte; is the file encoded in UTF-16?");
}

TEST_F(Csv, encodingsAreChosenByName) {
    write(std::string("\xFF\xFEx\0\n\0001\0\n\0", 10));
    bench.run();
    EXPECT_EQ(bench.table().column("x"), Reals{1});
    write(std::string("x\0\n\0001\0\n\0", 8));
    bench.set("encoding", "UTF-16").run();
    EXPECT_EQ(bench.table().column("x"), Reals{1});
    write("name\nM\xFCon\n");
    bench.set("encoding", "ISO-8859-1").run();
    EXPECT_EQ(column("name").texts(), Column::Texts{"M\u00fcon"});
}

TEST_F(Csv, numbersAreWrittenAsInManyCountries) {
    write("x;n\n1.234,5;1.000\n");
    bench.set("delimiter", "semicolon").set("decimal", "comma").set("thousands", "point").run();
    EXPECT_EQ(bench.table().column("x"), Reals{1234.5});
    EXPECT_EQ(column("n").integers(), Column::Integers{1000});
    EXPECT_EQ(bench.set("thousands", "comma").failure(),
              "thousands: the sign between thousands is also the decimal sign");
}

TEST_F(Csv, theSecondLineMayHoldUnits) {
    write("E,t\nGeV,ns\n1,2\n");
    bench.set("header", "names and units").run();
    EXPECT_EQ(bench.table().schema[0].unit, "GeV");
    EXPECT_EQ(bench.table().schema[1].unit, "ns");
    EXPECT_EQ(bench.table().column("E"), Reals{1});
}

TEST_F(Csv, datesAreATypeThatIsGiven) {
    write("begin\n1970-01-01T00:01Z\n");
    bench.run();
    EXPECT_EQ(typeOf("begin"), "text");
    bench.set("types", "begin: date").run();
    EXPECT_EQ(bench.table().column("begin"), Reals{60});
    EXPECT_EQ(bench.table().schema[0].unit, "s since 1970-01-01 UTC");
}

TEST_F(Csv, aByteZeroIsNoText) {
    write(std::string("name,n\na,1\nb\0c,2\nd,3\n", 22));
    EXPECT_EQ(complaint(), "data.csv\", line 3: it contains a zero byte; is the file encoded in UTF-16?");
    bench.set("errors", "skip").expectWarnings().run();
    EXPECT_EQ(column("name").texts(), (Column::Texts{"a", "d"}));
}

TEST_F(Csv, bytesThatAreNoUtf8AreReadAsLatin1) {
    write(
        "f\xFC"
        "r,x\nM\xFCon,1\nM\xC3\xBCon,2\n\xE4\xB8\xAD \xED\xA0\x80,3\n");
    bench.expectWarnings().run();
    EXPECT_EQ(column("f\u00fcr").texts(), (Column::Texts{"M\u00fcon", "M\u00fcon", "\u4e2d \u00ed\u00a0\u0080"}));
    ASSERT_EQ(bench.warnings().size(), 1U);
    EXPECT_TRUE(bench.warnings()[0].ends_with("bytes that are not UTF-8, the first on line 1, are read as ISO-8859-1"));
}

TEST_F(Csv, aRecordThatDoesNotEndIsNamedByItsLine) {
    write("\"x" + std::string(70U << 20U, ' '));
    EXPECT_EQ(complaint(), "data.csv\", line 1: the record does not end; is there an unclosed quote?");
}

TEST_F(Csv, aMillionColumnsAreFoundByTheirNames) {
    std::string names;
    std::string values;
    for (int position = 0; position < 1'000'000; ++position) {
        names += (position == 0 ? "c" : ",c") + std::to_string(position);
        values += position == 0 ? "1" : ",2";
    }
    write(names + "\n" + values + "\n");
    bench.run();
    ASSERT_EQ(bench.table().schema.size(), 1'000'000U);
    EXPECT_EQ(bench.table().schema.find("c999999"), 999'999U);
    write(names + ",c0\n");
    EXPECT_EQ(complaint(), "data.csv\", line 1: there are two columns \"c0\"");
    write(std::string((1U << 20U) + 1, ',') + "\n");
    EXPECT_EQ(complaint(), "data.csv\", line 1: there are more than 1048576 fields");
}

TEST_F(Csv, readingStopsAmongEmptyLines) {
    StoppingBench stopping("CsvTable", 4);
    write("x\n" + std::string(8U << 20U, '\n'));
    stopping.set("file", (bench.folder() / "data.csv").string());
    EXPECT_THROW(stopping.run(), Stopped);
}

TEST_F(Csv, readingStopsAmongAMillionColumns) {
    std::string header = "x0";
    std::string row = "0";
    for (int column = 1; column < 1000000; ++column) {
        header += ",x" + std::to_string(column);
        row += ",0";
    }
    write(header + "\n" + row + "\n");
    StoppingBench stopping("CsvTable", 2);
    stopping.set("file", (bench.folder() / "data.csv").string());
    EXPECT_THROW(stopping.run(), Stopped);
}

TEST_F(Csv, twoColumnsOfOneNameAreOneTooMany) {
    write("x,x\n1,2\n");
    EXPECT_EQ(complaint(), "data.csv\", line 1: there are two columns \"x\"");
}

TEST_F(Csv, aFileLargerThanTheReadersBuffer) {
    std::string content = "n,name\n";
    for (int row = 0; row < 100000; ++row) {
        content += std::to_string(row) + ",\"name of row " + std::to_string(row) + "\"\n";
    }
    write(content);
    bench.run();
    ASSERT_EQ(bench.table().chunks.size(), 4U);
    EXPECT_EQ(bench.table().chunks[0].rows, chunkRows);
    const Reals numbers = bench.table().column("n");
    ASSERT_EQ(numbers.size(), 100000U);
    for (std::size_t row = 0; row < numbers.size(); ++row) {
        ASSERT_EQ(numbers[row], static_cast<double>(row));
    }
    EXPECT_EQ(bench.table().chunks[3].columns[1]->texts().back(), "name of row 99999");
}

TEST_F(Csv, aFileThatIsNotThereIsNamed) {
    bench.set("file", "/nowhere/data.csv");
    EXPECT_EQ(bench.failure(), ": /nowhere/data.csv cannot be opened: No such file or directory");
}

/// The bytes of a command's output.
std::string outputOf(const std::string& command) {
    std::string bytes;
    FILE* pipe = popen(command.c_str(), "r");
    for (int byte = fgetc(pipe); byte != EOF; byte = fgetc(pipe)) {
        bytes += static_cast<char>(byte);
    }
    EXPECT_EQ(pclose(pipe), 0) << command;
    return bytes;
}

TEST_F(Csv, packedFilesAreReadByTheirContent) {
    write("x,n\n1,1\n2,2\n");
    const std::string plain = "'" + (bench.folder() / "data.csv").string() + "'";
    const std::string zip =
        "import sys,zipfile; a=zipfile.ZipFile(sys.argv[2],'w',zipfile.ZIP_DEFLATED); "
        "[a.write(sys.argv[1], name) for name in sys.argv[3:]]";
    const std::string target = " '" + (bench.folder() / "made.zip").string() + "' ";
    outputOf("python3 -c \"" + zip + "\" " + plain + target + "folder/x.csv");
    const std::string zipped = test::textIn(bench.folder() / "made.zip");
    for (const std::string& bytes : {outputOf("gzip -c " + plain), outputOf("bzip2 -c " + plain), zipped,
                                     outputOf("printf 'x,n\\n1,' | gzip -c; printf '1\\n2,2' | gzip -c")}) {
        ASSERT_NE(bytes.substr(0, 3), "x,n");
        write(bytes);
        bench.run();
        EXPECT_EQ(bench.table().column("x"), (Reals{1, 2}));
        EXPECT_EQ(bench.table().column("n"), (Reals{1, 2}));
    }
    outputOf("python3 -c \"" + zip + "\" " + plain + target + "a.csv b.csv");
    write(test::textIn(bench.folder() / "made.zip"));
    EXPECT_EQ(
        complaint(),
        "data.csv is an archive of several files; only archives of one file can be read: it contains a.csv, b.csv");
}

TEST_F(Csv, aTextThatBeginsLikeAPackedFileIsAText) {
    for (const std::string name : {"BZh1", "x^", "PK"}) {
        write(name + "\n1\n");
        bench.run();
        EXPECT_EQ(bench.table().column(name), Reals{1}) << name;
    }
}

TEST_F(Csv, rowsBeforeTheDamageOfAPackedFileComeFirst) {
    std::string content = "n\n";
    for (int row = 0; row < 100000; ++row) {
        content += std::to_string(row) + "\n";
    }
    write(content);
    const std::string packed = outputOf("gzip -c '" + (bench.folder() / "data.csv").string() + "'");
    write(packed.substr(0, packed.size() / 2));
    EXPECT_NE(complaint().find("gzip data end too early at byte "), std::string::npos) << complaint();
    const Reals numbers = bench.table().column("n");
    EXPECT_GT(numbers.size(), 30000U);
    EXPECT_EQ(numbers.back(), static_cast<double>(numbers.size() - 1));
}

TEST_F(Csv, rowsThatAreSkippedInSeveralChunksMakeOneReport) {
    std::string content = "n\n";
    for (int row = 0; row < 100000; ++row) {
        content += row % 1000 == 7 ? "bad\n" : std::to_string(row) + "\n";
    }
    write(content);
    bench.set("types", "n: integer").set("errors", "skip").expectWarnings().run();
    EXPECT_EQ(bench.table().column("n").size(), 99900U);
    ASSERT_EQ(bench.warnings().size(), 1U);
    EXPECT_TRUE(bench.warnings()[0].starts_with("100 rows were skipped; the first: ")) << bench.warnings()[0];
    EXPECT_NE(bench.warnings()[0].find("line 9, column 1 (n)"), std::string::npos) << bench.warnings()[0];
}

TEST_F(Csv, whatIsMissingCanBeWrittenInAnyWay) {
    write("x,name\n-,-\n1,mu\n");
    bench.set("missing", "-").run();
    EXPECT_EQ(typeOf("x"), "real");
    EXPECT_TRUE(std::isnan(column("x").reals()[0]));
    EXPECT_EQ(column("name").texts(), (Column::Texts{"", "mu"}));
    write("n\n1\n\"\"\n");
    bench.set("types", "n: integer");
    EXPECT_NE(complaint().find("line 3, column 1 (n): the value is missing"), std::string::npos) << complaint();
}

}  // namespace
