#include <parquet/ParquetFile.h>

#include "ExpectedColumns.h"
#include "Npm.h"
#include "ReadTable.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <unistd.h>
#include <nlohmann/json.hpp>

#include <filesystem>

namespace velmorak {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

const fs::path files = fs::path(SCRIPTS) / "../../fuzz/corpus/parquet";

ReadTable readFile(const std::string& file) {
    QuietContext context;
    return readTable(*openParquet(files / file, {}, nullptr, context));
}

std::vector<std::string> namesIn(const Schema& schema) {
    std::vector<std::string> names;
    for (const ColumnInfo& column : schema.columns()) {
        names.push_back(column.name);
    }
    return names;
}

/// [[[a,b],[c]],[null,[d]]], [[[a,b],[c,d]],[null,[e]]], [[[a,b],[c,d],[e]],[null,[f]]]
TEST(ParquetLists, ofThreeLevelsKeepTheirStructure) {
    const ReadTable table = readFile("nested_lists.snappy.parquet");
    EXPECT_THAT(namesIn(table.schema), ElementsAre("a", "a.count", "a.row", "a.count.count", "a.count.row", "b"));
    EXPECT_EQ(table.schema[1], (ColumnInfo{.name = "a.count", .type = ColumnType::Integer, .isList = true}));
    EXPECT_THAT(table["a"].offsets, ElementsAre(0, 4, 9, 15));
    EXPECT_THAT(table["a.count"].integers(), ElementsAre(2, 1, 0, 1, 2, 2, 0, 1, 2, 2, 1, 0, 1));
    EXPECT_THAT(table["a.count"].offsets, ElementsAre(0, 4, 8, 13));
    EXPECT_THAT(table["a.row"].integers(), ElementsAre(0, 0, 1, 3, 0, 0, 1, 1, 3, 0, 0, 1, 1, 2, 4));
    EXPECT_THAT(table["a.row"].offsets, ElementsAre(0, 4, 9, 15));
    EXPECT_THAT(table["a.count.count"].integers(), ElementsAre(2, 2, 2, 2, 3, 2));
    EXPECT_THAT(table["a.count.count"].offsets, ElementsAre(0, 2, 4, 6));
    EXPECT_THAT(table["a.count.row"].integers(), ElementsAre(0, 0, 1, 1, 0, 0, 1, 1, 0, 0, 0, 1, 1));
}

/// [[1, 2], [3, 4]] without the usual levels around elements.
TEST(ParquetLists, ofOldFilesKeepTheirStructure) {
    const ReadTable table = readFile("old_list_structure.parquet");
    EXPECT_THAT(namesIn(table.schema), ElementsAre("a", "a.count", "a.row"));
    EXPECT_THAT(table["a"].integers(), ElementsAre(1, 2, 3, 4));
    EXPECT_THAT(table["a.count"].integers(), ElementsAre(2, 2));
    EXPECT_THAT(table["a.row"].integers(), ElementsAre(0, 0, 1, 1));
}

TEST(ParquetLists, areWithinMapsAndStructures) {
    const ReadTable table = readFile("nonnullable.impala.parquet");
    EXPECT_THAT(
        namesIn(table.schema),
        ElementsAre("ID", "Int_Array", "int_array_array", "int_array_array.count", "int_array_array.row", "Int_Map.key",
                    "Int_Map.value", "int_map_array.key", "int_map_array.value", "int_map_array.count",
                    "int_map_array.row", "nested_Struct.a", "nested_Struct.B", "nested_Struct.c.D.e",
                    "nested_Struct.c.D.f", "nested_Struct.c.D.count", "nested_Struct.c.D.row", "nested_Struct.G.key",
                    "nested_Struct.G.value.h.i", "nested_Struct.G.value.h.i.count", "nested_Struct.G.value.h.i.row"));
    EXPECT_THAT(table["int_array_array"].integers(), ElementsAre(-1, -2));
    EXPECT_THAT(table["int_array_array.count"].integers(), ElementsAre(2, 0));
    EXPECT_THAT(table["int_array_array.row"].integers(), ElementsAre(0, 0));
    EXPECT_THAT(table["int_map_array.count"].integers(), ElementsAre(0, 1, 0, 0));
    EXPECT_THAT(table["int_map_array.row"].integers(), ElementsAre(1));
    EXPECT_THAT(table["nested_Struct.c.D.count"].integers(), ElementsAre(1));
    EXPECT_THAT(table["nested_Struct.G.value.h.i.count"].integers(), IsEmpty());
}

TEST(ParquetLists, areCountedWithoutTheirValues) {
    QuietContext context;
    const fs::path file = files / "nested_lists.snappy.parquet";
    const ReadTable table = readTable(*openParquet(file, {"a.count"}, nullptr, context));
    EXPECT_THAT(table["a.count"].integers(), ElementsAre(2, 1, 0, 1, 2, 2, 0, 1, 2, 2, 1, 0, 1));
    const Schema wanted({{.name = "a.row", .type = ColumnType::Real, .isList = true}});
    const ReadTable reals = readTable(*openParquet(file, {"a.row"}, &wanted, context));
    EXPECT_THAT(reals["a.row"].reals(), ElementsAre(0, 0, 1, 3, 0, 0, 1, 1, 3, 0, 0, 1, 1, 2, 4));
}

/// A file that the npm package @duckdb/node-api writes, in row groups of 2048 rows.
struct Written {
    std::string version;
    std::string codec;
    std::size_t rows = 0;
};

class ParquetNesting : public testing::TestWithParam<Written> {
protected:
    ~ParquetNesting() override { fs::remove(file); }

    const fs::path file = fs::path(testing::TempDir()) / ("nested" + std::to_string(getpid()) + ".parquet");
};

TEST_P(ParquetNesting, hasTheValuesThatDuckDbWrote) {
    if (const std::string reason = npm::missing({"@duckdb/node-api"}); !reason.empty()) {
        GTEST_SKIP() << reason;
    }
    const auto& [version, codec, rows] = GetParam();
    const nlohmann::json values = nlohmann::json::parse(
        npm::run(fs::path(SCRIPTS) / "write.mjs", {file.string(), version, codec, std::to_string(rows)}));
    QuietContext context;
    const ReadTable table = readTable(*openParquet(file, {}, nullptr, context));
    EXPECT_EQ(table.rows, rows);
    EXPECT_EQ(table.schema.size(), values.size());
    for (const auto& [name, column] : table.columns) {
        SCOPED_TRACE(name);
        compareColumn(column, values.at(name));
    }
}

INSTANTIATE_TEST_SUITE_P(OfEveryForm, ParquetNesting,
                         testing::Values(Written{"V1", "uncompressed", 0}, Written{"V1", "snappy", 5000},
                                         Written{"V2", "zstd", 5000}, Written{"V1", "gzip", 300},
                                         Written{"V2", "brotli", 2049}, Written{"V2", "lz4_raw", 1}),
                         [](const auto& instance) {
                             const Written& written = instance.param;
                             return written.version + "_" + written.codec + "_" + std::to_string(written.rows);
                         });

}  // namespace
}  // namespace velmorak
