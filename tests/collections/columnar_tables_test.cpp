#include "KindHarness.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <fstream>

namespace velmorak::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

const std::string data = std::string(VELMORAK_TEST_SOURCE) + "/tests/fuzz/corpus";

ColumnPtr column(decltype(Column::values) values, std::vector<std::uint64_t> offsets = {}) {
    return std::make_shared<const Column>(Column{.values = std::move(values), .offsets = std::move(offsets)});
}

/// A column of every type, in two chunks.
SmallTable everyType() {
    SmallTable table;
    table.schema = Schema({{.name = "energy", .unit = "GeV"},
                           {.name = "run", .type = ColumnType::Integer},
                           {.name = "good", .type = ColumnType::Boolean},
                           {.name = "comment", .type = ColumnType::Text},
                           {.name = "hits", .type = ColumnType::Integer, .isList = true}});
    table.chunks.push_back({.number = 0,
                            .firstRow = 0,
                            .rows = 2,
                            .columns = {column(Column::Reals{-0.0, std::nan("")}), column(Column::Integers{7, -7}),
                                        column(Column::Booleans{1, 0}), column(Column::Texts{"", "a\nb"}),
                                        column(Column::Integers{4, 5}, {0, 2, 2})}});
    table.chunks.push_back(
        {.number = 1,
         .firstRow = 2,
         .rows = 1,
         .columns = {column(Column::Reals{0.1}), column(Column::Integers{0}), column(Column::Booleans{1}),
                     column(Column::Texts{"c"}), column(Column::Integers{6}, {0, 1})}});
    return table;
}

TEST(ParquetWriterKind, everyColumnReadsBackWithItsTypeUnitAndBits) {
    KindHarness writer("ParquetWriter", "out");
    writer.wire("table", everyType()).run();
    KindHarness reader("ParquetTable");
    reader.set("file", (writer.folder() / "out.parquet").string()).run();
    ASSERT_EQ(reader.table().schema, everyType().schema);
    ASSERT_EQ(reader.table().chunks.size(), 1U);
    const Chunk& read = reader.table().chunks.front();
    EXPECT_EQ(std::bit_cast<std::uint64_t>(read.columns[0]->reals()[0]), std::bit_cast<std::uint64_t>(-0.0));
    EXPECT_TRUE(std::isnan(read.columns[0]->reals()[1]));
    EXPECT_THAT(read.columns[1]->integers(), ElementsAre(7, -7, 0));
    EXPECT_THAT(read.columns[2]->booleans(), ElementsAre(1, 0, 1));
    EXPECT_THAT(read.columns[3]->texts(), ElementsAre("", "a\nb", "c"));
    EXPECT_THAT(read.columns[4]->integers(), ElementsAre(4, 5, 6));
    EXPECT_THAT(read.columns[4]->offsets, ElementsAre(0, 2, 2, 3));
}

TEST(ParquetWriterKind, aTableWithoutRowsHasItsColumns) {
    SmallTable table = everyType();
    table.chunks.clear();
    KindHarness writer("ParquetWriter", "out");
    writer.set("file", "empty.parquet").wire("table", table).run();
    KindHarness reader("ParquetTable");
    reader.set("file", (writer.folder() / "empty.parquet").string()).run();
    EXPECT_EQ(reader.table().schema, everyType().schema);
    EXPECT_TRUE(reader.table().chunks.empty());
}

TEST(ParquetTableKind, readsTheColumnsThatAreNamed) {
    KindHarness reader("ParquetTable");
    reader.set("file", data + "/parquet/lz4_raw_compressed.parquet").set("columns", "v11, c1").run();
    EXPECT_EQ(reader.table().schema, Schema({{.name = "v11"}, {.name = "c1", .type = ColumnType::Text}}));
    EXPECT_THAT(reader.table().column("v11"), ElementsAre(42.0, 7.7, 42.125, 7.7));
    reader.set("columns", "v12");
    EXPECT_THAT(reader.failure(), HasSubstr("has no column \"v12\"; its columns are \"c0\", \"c1\", \"v11\""));
}

TEST(ParquetTableKind, joinsFilesOfWhichOneHasMissingIntegers) {
    KindHarness writer("ParquetWriter", "whole");
    SmallTable whole;
    whole.schema = Schema({{.name = "b_struct.b_c_int", .type = ColumnType::Integer}});
    whole.chunks.push_back({.rows = 1, .columns = {column(Column::Integers{5})}});
    writer.wire("table", whole).run();
    KindHarness reader("ParquetTable");
    reader.set("file", (writer.folder() / "whole.parquet").string() + ", " + data + "/parquet/nulls.snappy.parquet")
        .run();
    const std::vector<double> values = reader.table().column("b_struct.b_c_int");
    ASSERT_EQ(values.size(), 9U);
    EXPECT_EQ(values.front(), 5.0);
    EXPECT_TRUE(std::isnan(values.back()));
}

TEST(ArrowTableKind, readsFilesAndStreams) {
    for (const std::string file : {"plain", "lz4", "zstd"}) {
        KindHarness reader("ArrowTable");
        reader.set("file", data + "/arrow/" + file + ".arrow").set("columns", "u32 text").run();
        const std::vector<double> values = reader.table().column("u32");
        ASSERT_EQ(values.size(), 120U) << file;
        EXPECT_EQ(values[119], 4294967295.0 - 119.0);
    }
    KindHarness reader("ArrowTable");
    reader.set("file", data + "/arrow/stream.arrow").run();
    EXPECT_EQ(reader.table().column("i8").size(), 80U);
}

TEST(ColumnarFormats, areRecognisedByTheKindTable) {
    KindHarness table("Table");
    table.set("file", data + "/parquet/int96_from_spark.parquet").run();
    EXPECT_EQ(table.table().column("a").front(), 1704141296.123456);
    KindHarness stream("Table");
    stream.set("file", data + "/arrow/stream.arrow").set("columns", "i8").run();
    EXPECT_EQ(stream.table().column("i8").front(), -128.0);
}

TEST(ColumnarFormats, areRefusedByCsvTable) {
    KindHarness csv("CsvTable");
    csv.set("file", data + "/parquet/nulls.snappy.parquet");
    EXPECT_THAT(csv.failure(), HasSubstr("is a Parquet file; use ParquetTable or Table"));
}

}  // namespace
}  // namespace velmorak::test
