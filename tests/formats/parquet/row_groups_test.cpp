#include <parquet/ParquetFile.h>
#include <parquet/write/ParquetRows.h>

#include "QuietContext.h"

#include <velmorak/ChunkSize.h>
#include <velmorak/RowBounds.h>

#include <gtest/gtest.h>

#include <unistd.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <functional>
#include <limits>

namespace velmorak {
namespace {

namespace fs = std::filesystem;
using Relation = ColumnBound::Relation;

/// Row groups of 131072 rows, of which each has other times and runs.
class RowGroups : public testing::Test {
protected:
    static constexpr std::size_t groups = 3;
    static constexpr std::size_t rowsInGroup = 131072;

    ~RowGroups() override { fs::remove(file); }

    void write(const std::function<double(std::size_t row)>& time) const {
        std::ofstream out(file, std::ios::binary);
        parquet::ParquetRows rows(schema, [&](const std::string& more) { out << more; });
        for (std::size_t first = 0; first < groups * rowsInGroup; first += chunkRows) {
            Column::Reals times;
            Column::Integers runs;
            for (std::size_t row = first; row < first + chunkRows; ++row) {
                times.push_back(time(row));
                runs.push_back(static_cast<std::int64_t>(row / rowsInGroup));
            }
            const auto lists = std::make_shared<const Column>(Column{Column::Reals(chunkRows, 0.5), oneEach()});
            rows.append({columnOf(times), columnOf(runs), lists}, chunkRows);
        }
        rows.finish();
    }

    static std::vector<std::uint64_t> oneEach() {
        std::vector<std::uint64_t> offsets;
        for (std::uint64_t i = 0; i <= chunkRows; ++i) {
            offsets.push_back(i);
        }
        return offsets;
    }

    /// @return whether each chunk was read, and not replaced by rows without lists.
    std::vector<bool> chunksRead(const std::vector<ColumnBound>& bounds) const {
        QuietContext context;
        const std::unique_ptr<TableReader> reader = openParquet(file, {}, nullptr, context);
        reader->selectColumns({true, true, true});
        dynamic_cast<BoundedReader&>(*reader).leaveOutBeyond(bounds);
        std::vector<bool> read;
        std::uint64_t row = 0;
        for (Chunk chunk; reader->next(chunk); chunk = {}) {
            chunk.firstRow = row;
            chunk.number = read.size();
            row += chunk.rows;
            reader->complete(chunk);
            for (const ColumnPtr& column : chunk.columns) {
                EXPECT_EQ(column->isList() ? column->offsets.size() - 1 : column->valueCount(), chunk.rows);
            }
            read.push_back(chunk.columns[2]->valueCount() > 0);
            expectToFail(chunk, bounds, read.back());
        }
        EXPECT_EQ(row, groups * rowsInGroup);
        return read;
    }

    /// Rows that are left out must be dropped.
    static void expectToFail(const Chunk& chunk, const std::vector<ColumnBound>& bounds, bool isRead) {
        if (isRead) {
            return;
        }
        bool fails = false;
        for (const ColumnBound& bound : bounds) {
            const double value = bound.column == 0 ? chunk.columns[0]->reals().front()
                                                   : static_cast<double>(chunk.columns[1]->integers().front());
            fails = fails || std::isnan(value) || bound.excludes(value, value);
        }
        EXPECT_TRUE(fails);
    }

    static std::vector<bool> onlyGroup(std::size_t wanted) {
        std::vector<bool> read;
        for (std::size_t chunk = 0; chunk < groups * rowsInGroup / chunkRows; ++chunk) {
            read.push_back(chunk * chunkRows / rowsInGroup == wanted);
        }
        return read;
    }

    const Schema schema{{{"time", ColumnType::Real, false, "s"},
                         {"run", ColumnType::Integer, false, ""},
                         {"hits", ColumnType::Real, true, ""}}};
    const fs::path file = fs::path(testing::TempDir()) / ("groups" + std::to_string(getpid()) + ".parquet");
};

double risingTime(std::size_t row) {
    return 0.5 * static_cast<double>(row);
}

TEST_F(RowGroups, beyondABoundAreNotRead) {
    write(risingTime);
    const double begin = 0.5 * rowsInGroup;
    EXPECT_EQ(chunksRead({{0, Relation::Less, begin}}), onlyGroup(0));
    EXPECT_EQ(chunksRead({{0, Relation::GreaterEqual, 2.0 * begin}}), onlyGroup(2));
    EXPECT_EQ(chunksRead({{1, Relation::Equal, 1.0}}), onlyGroup(1));
    EXPECT_EQ(chunksRead({{1, Relation::Greater, 0.5}, {0, Relation::Less, begin + 3.0}}), onlyGroup(1));
}

TEST_F(RowGroups, atABoundAreRead) {
    write(risingTime);
    EXPECT_EQ(chunksRead({{1, Relation::LessEqual, 0.0}}), onlyGroup(0));
    EXPECT_EQ(chunksRead({{1, Relation::GreaterEqual, 2.0}}), onlyGroup(2));
    EXPECT_EQ(chunksRead({{1, Relation::Less, -7.0}}), std::vector<bool>(12, false));
    EXPECT_EQ(chunksRead({{1, Relation::Equal, -7.0}}), std::vector<bool>(12, false));
    EXPECT_EQ(chunksRead({}), std::vector<bool>(12, true));
}

TEST_F(RowGroups, ofNaNAloneAreRead) {
    write([](std::size_t row) { return row < rowsInGroup ? std::nan("") : risingTime(row); });
    EXPECT_EQ(chunksRead({{0, Relation::Greater, 1e12}}), onlyGroup(0));
}

TEST_F(RowGroups, withNaNAmongOthersAreLeftOutByTheOthers) {
    write([](std::size_t row) { return row % 7 == 0 ? std::nan("") : risingTime(row); });
    EXPECT_EQ(chunksRead({{0, Relation::Less, 0.5 * rowsInGroup}}), onlyGroup(0));
}

}  // namespace
}  // namespace velmorak
