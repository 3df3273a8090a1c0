#include "KindHarness.h"

#include <gtest/gtest.h>

#include <velmorak/FunctionObject.h>
#include <velmorak/Points.h>
#include <velmorak/Profile.h>

#include <bit>
#include <cmath>
#include <limits>

namespace {

using namespace velmorak;
using test::KindHarness;
using test::SmallTable;
using test::tableOf;
using test::textIn;

namespace fs = std::filesystem;

constexpr double infinite = std::numeric_limits<double>::infinity();

ColumnPtr column(decltype(Column::values) values, std::vector<std::uint64_t> offsets = {}) {
    return std::make_shared<const Column>(Column{.values = std::move(values), .offsets = std::move(offsets)});
}

/// A column of every type, in two chunks.
SmallTable everyType() {
    SmallTable table;
    table.schema = Schema({{.name = "real"},
                           {.name = "whole", .type = ColumnType::Integer},
                           {.name = "flag", .type = ColumnType::Boolean},
                           {.name = "text, \"quoted\"", .type = ColumnType::Text}});
    table.chunks.push_back(
        {.number = 0,
         .firstRow = 0,
         .rows = 3,
         .columns = {column(Column::Reals{0.1, -0.0, 3.0}),
                     column(Column::Integers{std::numeric_limits<std::int64_t>::min(), 0, 7}),
                     column(Column::Booleans{1, 0, 1}), column(Column::Texts{"007", "", "a\"b,\n#c;|\td"})}});
    table.chunks.push_back({.number = 1,
                            .firstRow = 3,
                            .rows = 2,
                            .columns = {column(Column::Reals{1e-310, infinite}),
                                        column(Column::Integers{std::numeric_limits<std::int64_t>::max(), -1}),
                                        column(Column::Booleans{0, 0}), column(Column::Texts{" blanks ", "true"})}});
    return table;
}

template <typename Values>
Values all(const SmallTable& table, std::size_t position) {
    Values values;
    for (const Chunk& chunk : table.chunks) {
        const auto& part = std::get<Values>(chunk.columns.at(position)->values);
        values.insert(values.end(), part.begin(), part.end());
    }
    return values;
}

std::vector<std::uint64_t> bits(const std::vector<double>& numbers) {
    std::vector<std::uint64_t> all;
    for (const double number : numbers) {
        all.push_back(std::bit_cast<std::uint64_t>(number));
    }
    return all;
}

TEST(CsvWriterKind, everyColumnReadsBackWithItsTypeAndBits) {
    for (const std::string delimiter : {"comma", "semicolon", "tabulator", "bar"}) {
        KindHarness writer("CsvWriter", "out");
        writer.set("delimiter", delimiter).wire("object", everyType()).run();
        KindHarness reader("CsvTable");
        reader.set("file", (writer.folder() / "out.csv").string()).set("delimiter", delimiter).run();
        const SmallTable& read = reader.table();
        ASSERT_EQ(read.schema, everyType().schema) << delimiter;
        EXPECT_EQ(bits(all<Column::Reals>(read, 0)), bits(all<Column::Reals>(everyType(), 0)));
        EXPECT_EQ(all<Column::Integers>(read, 1), all<Column::Integers>(everyType(), 1));
        EXPECT_EQ(all<Column::Booleans>(read, 2), all<Column::Booleans>(everyType(), 2));
        EXPECT_EQ(all<Column::Texts>(read, 3), all<Column::Texts>(everyType(), 3));
    }
}

TEST(CsvWriterKind, randomBitsReadBackAsTheyWere) {
    std::vector<double> numbers;
    std::uint64_t state = 1;
    while (numbers.size() < 5000) {
        state = state * 6364136223846793005U + 1442695040888963407U;
        if (const auto number = std::bit_cast<double>(state); !std::isnan(number)) {
            numbers.push_back(number);
        }
    }
    KindHarness writer("CsvWriter", "out");
    writer.wire("object", tableOf({{"x", numbers}}, 700)).run();
    KindHarness reader("CsvTable");
    reader.set("file", (writer.folder() / "out.csv").string()).run();
    EXPECT_EQ(bits(reader.table().column("x")), bits(numbers));
}

TEST(CsvWriterKind, secondsSince1970AreWrittenAsDates) {
    SmallTable table;
    table.schema = Schema({{.name = "begin", .unit = "s since 1970-01-01 UTC"}, {.name = "x", .unit = "s"}});
    table.chunks.push_back(
        {.rows = 2,
         .columns = {column(Column::Reals{1709209815.25, std::nan("")}), column(Column::Reals{1709209815.25, 1.0})}});
    KindHarness writer("CsvWriter");
    writer.set("file", "dates.csv").wire("object", table).run();
    EXPECT_EQ(textIn(writer.folder() / "dates.csv"), "begin,x\n2024-02-29T12:30:15.25Z,1709209815.25\nNaN,1.0\n");
    KindHarness print("Print");
    print.wire("object", table).run();
    EXPECT_NE(print.printed().find("2024-02-29T12:30:15.25Z"), std::string::npos) << print.printed();
}

TEST(CsvWriterKind, aListBecomesOneText) {
    SmallTable table;
    table.schema = Schema({{.name = "list", .type = ColumnType::Real, .isList = true}});
    table.chunks.push_back(
        {.number = 0, .firstRow = 0, .rows = 2, .columns = {column(Column::Reals{1.5, 2, -3}, {0, 3, 3})}});
    KindHarness bench("CsvWriter", "out");
    bench.wire("object", table).run();
    EXPECT_EQ(textIn(bench.folder() / "out.csv"), "list\n\"1.5 2.0 -3.0\"\n\"\"\n");
}

TEST(CsvWriterKind, theHeaderMayBeLeftOutAndTheFileNamed) {
    KindHarness bench("CsvWriter", "out");
    bench.set("header", "no").set("file", "sub.txt").wire("object", tableOf({{"x", {1, 2}}}, 1)).run();
    EXPECT_EQ(textIn(bench.folder() / "sub.txt"), "1.0\n2.0\n");
}

TEST(CsvWriterKind, aTableWithoutRowsHasItsHeader) {
    KindHarness bench("CsvWriter", "out");
    bench.wire("object", tableOf({{"x", {}}, {"y", {}}}, 2)).run();
    EXPECT_EQ(textIn(bench.folder() / "out.csv"), "x,y\n");
}

TEST(CsvWriterKind, aHistogramHasARowForEachBinAndWhatLiesOutside) {
    auto histogram = std::make_shared<Histogram1D>(Axis(2, 0, 2));
    histogram->fill(0.5, 2.0);
    histogram->fill(7.0);
    KindHarness bench("CsvWriter", "out");
    bench.wire("object", DataObjectPtr(histogram)).run();
    EXPECT_EQ(textIn(bench.folder() / "out.csv"),
              "low,high,entries,height,error,sumww,sumwx,sumwxx\n"
              "-Infinity,0.0,0,0.0,0.0,0.0,0.0,0.0\n"
              "0.0,1.0,1,2.0,2.0,4.0,1.0,0.5\n"
              "1.0,2.0,0,0.0,0.0,0.0,0.0,0.0\n"
              "2.0,Infinity,1,1.0,1.0,1.0,7.0,49.0\n");
}

TEST(CsvWriterKind, everyObjectHasItsColumns) {
    const auto linesOf = [](const DataObjectPtr& object) {
        KindHarness bench("CsvWriter", "out");
        bench.wire("object", object).run();
        const std::string text = textIn(bench.folder() / "out.csv");
        return std::pair(text.substr(0, text.find('\n')), std::count(text.begin(), text.end(), '\n') - 1);
    };
    using Lines = std::pair<std::string, std::ptrdiff_t>;
    const Axis axis(2, 0, 2);
    EXPECT_EQ(linesOf(std::make_shared<Histogram2D>(Grid<2>({axis, axis}))),
              Lines("xlow,xhigh,ylow,yhigh,entries,height,error", 16));
    EXPECT_EQ(linesOf(std::make_shared<Histogram3D>(Grid<3>({axis, axis, axis}))),
              Lines("xlow,xhigh,ylow,yhigh,zlow,zhigh,entries,height,error", 64));
    EXPECT_EQ(linesOf(std::make_shared<Profile1D>(Grid<1>({axis}))),
              Lines("low,high,entries,weights,mean,error,rms", 4));
    EXPECT_EQ(linesOf(std::make_shared<Profile2D>(Grid<2>({axis, axis}))),
              Lines("xlow,xhigh,ylow,yhigh,entries,weights,mean,error,rms", 16));
    EXPECT_EQ(linesOf(std::make_shared<Points>(2, std::vector<Measurement>(6))),
              Lines("x,xplus,xminus,y,yplus,yminus", 3));
    EXPECT_EQ(linesOf(std::make_shared<Points>(4, std::vector<Measurement>(4))),
              Lines("x1,x1plus,x1minus,x2,x2plus,x2minus,x3,x3plus,x3minus,x4,x4plus,x4minus", 1));
}

TEST(CsvWriterKind, aFunctionIsSampledWithBothEnds) {
    auto function = std::make_shared<FunctionObject>();
    function->name = "square";
    function->codelet = "codelet:square:verbatim:jel : 1 : x[0]*x[0] : : null";
    function->arguments = {{.name = "x", .ranges = {}}};
    KindHarness bench("CsvWriter", "out");
    bench.set("samples", "3").wire("object", DataObjectPtr(function));
    EXPECT_TRUE(bench.failure().find("enter a range") != std::string::npos) << bench.failure();
    bench.set("range", "0 4").run();
    EXPECT_EQ(textIn(bench.folder() / "out.csv"), "x,y\n0.0,0.0\n2.0,4.0\n4.0,16.0\n");
    EXPECT_NE(bench.kind().refusal("range", "4 0"), "");
}

TEST(CsvWriterKind, saysWhatItCannotWrite) {
    KindHarness bench("CsvWriter", "out");
    EXPECT_TRUE(bench.failure().starts_with("object: ")) << bench.failure();
    bench.wire("object", std::string("a text"));
    EXPECT_TRUE(bench.failure().find("use Print") != std::string::npos) << bench.failure();
    EXPECT_TRUE(fs::is_empty(bench.folder()));
}

TEST(PrintKind, printsNumbersAndTextsByTheirMakers) {
    KindHarness bench("Print", "out");
    bench.set("objects", "3").wire("object", 0.1).wire("object2", std::string("two\nlines"));
    bench.wire("object3", std::string("\x1b[2Jred\r")).run();
    const std::string text = "source output: 0.1\nsource output:\ntwo\nlines\nsource output:  [2Jred \n";
    EXPECT_EQ(bench.printed(), text);
    EXPECT_EQ(textIn(bench.folder() / "out.txt"), text);
}

TEST(PrintKind, roundsNumbersWithErrorsAndWritesCountsAsIntegers) {
    KindHarness bench("Print", "out");
    bench.set("objects", "3").wire("object", 1e6).wire("object2", 1.0 / 3.0);
    const CovarianceMatrix variance{.origin = "fit", .names = {"mean"}, .elements = {0.01437 * 0.01437}};
    bench.wire("object3", numbersWithErrors({91.21234}, variance).front()).run();
    EXPECT_EQ(bench.printed(),
              "source output: 1000000\nsource output: 0.3333333333333333\nsource output: 91.212 ± 0.014\n");
}

TEST(PrintKind, printsTheFirstRowsOfATableInColumns) {
    KindHarness bench("Print", "out");
    bench.set("rows", "3").wire("object", tableOf({{"x", {1, 20, 3, 4, 5}}, {"longer", {0.5, 1, 2, 3, 4}}}, 2)).run();
    EXPECT_EQ(bench.printed(),
              "source output: first 3 of 5 rows\n"
              "   x  longer\n"
              " 1.0     0.5\n"
              "20.0     1.0\n"
              " 3.0     2.0\n");
    bench.set("rows", "9").set("file", "all.txt").run();
    EXPECT_TRUE(textIn(bench.folder() / "all.txt").starts_with("source output: 5 rows\n"));
}

TEST(PrintKind, printsAnObjectWithItsStatistics) {
    auto histogram = std::make_shared<Histogram1D>(Axis(3, 0, 3));
    histogram->fill(0.5);
    histogram->fill(9);
    histogram->title = "Title";
    KindHarness bench("Print", "out");
    bench.set("rows", "1").wire("object", DataObjectPtr(histogram)).run();
    const std::string text = bench.printed();
    for (const std::string part : {"source output: Title\n", "Entries: 1\n", "Mean: 0.5\n", "Overflow: 1\n",
                                   "low  high", "(the first 1 of 5)"}) {
        EXPECT_NE(text.find(part), std::string::npos) << part << " in\n" << text;
    }
}

TEST(PrintKind, printsPointsWithTheirErrors) {
    const auto points = std::make_shared<Points>(
        2, std::vector<Measurement>{{1.0, 0.0, 0.0}, {0.98, 0.012, 0.034}, {2.0, 0.5, 0.5}, {1e6, 0.0, 0.0}});
    KindHarness bench("Print", "out");
    bench.wire("object", DataObjectPtr(points)).run();
    EXPECT_EQ(bench.printed(),
              "source output\n"
              "        x                    y\n"
              "        1  0.980 +0.012 -0.034\n"
              "2.0 ± 0.5              1000000\n");
}

TEST(PrintKind, printsAFunctionByItsParameters) {
    auto function = std::make_shared<FunctionObject>();
    function->parameters = {{.name = "mean", .value = 91.1882}};
    function->annotation = {{.key = "mean_error", .value = "0.0213"}};
    KindHarness bench("Print", "out");
    bench.wire("object", DataObjectPtr(function)).run();
    EXPECT_EQ(bench.printed(), "source output\nmean: 91.188 ± 0.021\n");
}

TEST(PrintKind, saysThatNothingIsWired) {
    KindHarness bench("Print", "out");
    EXPECT_TRUE(bench.failure().starts_with("object: ")) << bench.failure();
}

}  // namespace
