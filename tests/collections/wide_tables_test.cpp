#include "KindHarness.h"

#include <velmorak/ChunkSize.h>

#include <gmock/gmock.h>

#include <fstream>

namespace {

using namespace velmorak;
using test::KindHarness;
using testing::ElementsAre;

constexpr std::size_t mebibyte = std::size_t{1} << 20U;

std::vector<std::size_t> rowsOf(const KindHarness& bench) {
    std::vector<std::size_t> rows;
    for (const Chunk& chunk : bench.table().chunks) {
        rows.push_back(chunk.rows);
    }
    return rows;
}

Schema reals(std::size_t count) {
    Schema schema;
    for (std::size_t i = 0; i < count; ++i) {
        schema.add({.name = "c" + std::to_string(i)});
    }
    return schema;
}

TEST(ChunkSize, isThatOfAllTablesUpToTwoHundredAndFiftySixNumbers) {
    EXPECT_EQ(rowsInChunk(Schema()), chunkRows);
    EXPECT_EQ(rowsInChunk(reals(1)), chunkRows);
    EXPECT_EQ(rowsInChunk(reals(256)), chunkRows);
    EXPECT_EQ(rowsInChunk(reals(257)), chunkRows / 2);
    EXPECT_EQ(rowsInChunk(reals(1024)), chunkRows / 4);
}

TEST(ChunkSize, countsTextsWithTheirCharactersAndListsWithTheirValues) {
    const Column texts{Column::Texts{"", std::string(1000, 'x')}, {}};
    EXPECT_EQ(bytesIn(texts), 2 * sizeof(std::string) + 1000);
    const Column lists{Column::Integers{1, 2, 3}, {0, 1, 3}};
    EXPECT_EQ(bytesIn(lists), 6 * sizeof(std::uint64_t));
    EXPECT_EQ(bytesInRow(Schema({{.name = "b", .type = ColumnType::Boolean}, {.name = "r"}})), 9U);
}

TEST(WideTables, ofRandomNumbersComeInShorterChunks) {
    KindHarness bench("RandomTable");
    std::string columns;
    for (int i = 0; i < 300; ++i) {
        columns += "c" + std::to_string(i) + ": uniform(0, 1)\n";
    }
    bench.set("columns", columns).set("rows", "20000").run();
    EXPECT_THAT(rowsOf(bench), ElementsAre(chunkRows / 2, 20000 - chunkRows / 2));
}

TEST(WideTables, ofLongTextsInCsvComeInShorterChunks) {
    KindHarness bench("CsvTable");
    const std::filesystem::path file = bench.folder() / "long.csv";
    {
        std::ofstream out(file);
        out << "n,t\n";
        for (int row = 0; row < 70; ++row) {
            out << row << ',' << std::string(mebibyte, 'x') << '\n';
        }
    }
    bench.set("file", file.string()).run();
    EXPECT_THAT(rowsOf(bench), ElementsAre(64, 6));
    EXPECT_EQ(bench.table().column("n").back(), 69.0);
}

TEST(WideTables, ofLongTextsInAidaComeInShorterChunksHoweverTheyAreWritten) {
    for (const char* entry : {"<entry value=\"", "<!-- --><entry value=\""}) {
        KindHarness bench("AidaTable");
        const std::filesystem::path file = bench.folder() / "long.aida";
        {
            std::ofstream out(file);
            out << "<aida><tuple name=\"t\"><columns><column name=\"s\" type=\"string\"/></columns><rows>\n";
            for (int row = 0; row < 70; ++row) {
                out << "<row>" << entry << std::string(mebibyte, 'x') << "\"/></row>\n";
            }
            out << "</rows></tuple></aida>\n";
        }
        bench.set("file", file.string()).run();
        EXPECT_THAT(rowsOf(bench), ElementsAre(64, 6)) << entry;
    }
}

}  // namespace
