#include <parquet/ParquetFile.h>
#include <parquet/write/ParquetRows.h>

#include "Npm.h"
#include "RandomTable.h"
#include "ReadTable.h"

#include <velmorak/Parts.h>

#include <gtest/gtest.h>

#include <unistd.h>
#include <nlohmann/json.hpp>

#include <bit>
#include <filesystem>
#include <fstream>

namespace velmorak {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

/// A table that is written in several calls.
class ParquetRoundTrip : public testing::TestWithParam<std::size_t> {
protected:
    ~ParquetRoundTrip() override { fs::remove(file); }

    /// @return the bytes of the file.
    std::string write(const std::vector<ColumnPtr>& columns, const std::vector<std::size_t>& calls) {
        std::string bytes;
        parquet::ParquetRows rows(RandomTable::schema(), [&](const std::string& more) { bytes += more; });
        std::size_t first = 0;
        for (const std::size_t count : calls) {
            rows.append(slice(columns, first, count), count);
            first += count;
        }
        rows.finish();
        std::ofstream(file, std::ios::binary) << bytes;
        return bytes;
    }

    static std::vector<ColumnPtr> slice(const std::vector<ColumnPtr>& columns, std::size_t first, std::size_t count) {
        std::vector<ColumnPtr> slices;
        for (const ColumnPtr& column : columns) {
            std::vector<std::uint8_t> keep(column->isList() ? column->offsets.size() - 1 : column->valueCount());
            std::fill_n(keep.begin() + static_cast<std::ptrdiff_t>(first), count, 1);
            slices.push_back(keepRows(*column, keep));
        }
        return slices;
    }

    ReadTable read() {
        QuietContext context;
        return readTable(*openParquet(file, {}, nullptr, context));
    }

    fs::path file = fs::path(testing::TempDir()) / ("trip" + std::to_string(getpid()) + ".parquet");
};

/// NaN is equal to itself, and 0 not to -0.
bool hasSameBits(const Column& one, const Column& other) {
    if (one.type() != ColumnType::Real || other.type() != ColumnType::Real) {
        return one.offsets == other.offsets && one.values == other.values;
    }
    const auto isSame = [](double a, double b) {
        return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
    };
    return one.offsets == other.offsets && one.reals().size() == other.reals().size() &&
           std::equal(one.reals().begin(), one.reals().end(), other.reals().begin(), isSame);
}

TEST_P(ParquetRoundTrip, givesEveryBitBack) {
    const std::vector<ColumnPtr> columns = RandomTable(static_cast<unsigned>(GetParam())).rows(GetParam());
    write(columns, {GetParam()});
    const ReadTable table = read();
    EXPECT_EQ(table.rows, GetParam());
    EXPECT_EQ(table.schema, RandomTable::schema());
    for (std::size_t i = 0; i < columns.size() && GetParam() > 0; ++i) {
        EXPECT_TRUE(hasSameBits(table[table.schema[i].name], *columns[i])) << table.schema[i].name;
    }
}

TEST_P(ParquetRoundTrip, givesAnyRowsOnTheirOwn) {
    const std::size_t rows = GetParam();
    write(RandomTable(static_cast<unsigned>(rows)).rows(rows), {rows});
    const ReadTable whole = read();
    const std::size_t first = rows / 3;
    QuietContext context;
    const auto reader = openParquet(file, {}, nullptr, context);
    auto& seekable = dynamic_cast<SeekableReader&>(*reader);
    EXPECT_EQ(seekable.bookmark(), "");
    EXPECT_THROW(seekable.seek(0, {.chunk = 1, .row = rows + 1, .bookmark = ""}), Failure);
    seekable.seek(0, {.chunk = 1, .row = first, .bookmark = ""});
    Chunk chunk;
    EXPECT_EQ(reader->next(chunk), rows > 0);
    chunk.firstRow = first;
    reader->complete(chunk);
    for (std::size_t i = 0; i < whole.schema.size() && rows > 0; ++i) {
        std::vector<std::uint8_t> isKept(rows, 0);
        std::fill_n(isKept.begin() + static_cast<std::ptrdiff_t>(first), chunk.rows, 1);
        const ColumnPtr expected = keepRows(whole[whole.schema[i].name], isKept);
        EXPECT_TRUE(hasSameBits(*chunk.columns[i], *expected)) << whole.schema[i].name;
    }
}

TEST_P(ParquetRoundTrip, hasTheSameBytesHoweverTheRowsArrive) {
    const std::size_t rows = GetParam();
    const std::vector<ColumnPtr> columns = RandomTable(static_cast<unsigned>(rows)).rows(rows);
    const std::string bytes = write(columns, {rows});
    EXPECT_TRUE(bytes == write(columns, {rows / 3, 0, rows - rows / 3}));
}

INSTANTIATE_TEST_SUITE_P(OfRows, ParquetRoundTrip, testing::Values(0, 1, 7, 1000, 32768, 300000));

void compareValue(const Column& column, std::size_t i, const Json& value) {
    switch (column.type()) {
        case ColumnType::Real:
            if (value.is_string()) {
                EXPECT_EQ(value.get<std::string>(), std::isnan(column.reals()[i]) ? "NaN" : "Infinity");
            } else {
                EXPECT_EQ(value.get<double>(), column.reals()[i]);
            }
            break;
        case ColumnType::Integer:
            EXPECT_EQ(value.get<std::string>(), std::to_string(column.integers()[i]));
            break;
        case ColumnType::Boolean:
            EXPECT_EQ(value.get<bool>(), column.booleans()[i] != 0);
            break;
        case ColumnType::Text:
            EXPECT_EQ(value.get<std::string>(), column.texts()[i]);
    }
}

TEST_P(ParquetRoundTrip, isReadByHyparquetToo) {
    if (const std::string reason = npm::missing({"hyparquet", "hyparquet-compressors"}); !reason.empty()) {
        GTEST_SKIP() << reason;
    }
    if (GetParam() > 10000) {
        GTEST_SKIP() << "takes too long";
    }
    const std::vector<ColumnPtr> columns = RandomTable(5).rows(GetParam());
    write(columns, {GetParam()});
    const Json found = Json::parse(npm::run(fs::path(SCRIPTS) / "read.mjs", {file.string()}));
    EXPECT_EQ(found["rows"], GetParam());
    for (std::size_t i = 0; i < columns.size() && GetParam() > 0; ++i) {
        const Json& values = found["columns"][RandomTable::schema()[i].name];
        for (std::size_t row = 0; row < GetParam(); ++row) {
            if (!columns[i]->isList()) {
                compareValue(*columns[i], row, values[row]);
                continue;
            }
            ASSERT_EQ(values[row].size(), columns[i]->offsets[row + 1] - columns[i]->offsets[row]);
            for (std::size_t k = 0; k < values[row].size(); ++k) {
                compareValue(*columns[i], columns[i]->offsets[row] + k, values[row][k]);
            }
        }
    }
}

/// A byte is wrong, or the rest is missing: the file is read or refused with a sentence that names it.
TEST(ParquetDamage, isReadOrRefusedWithASentence) {
    std::string bytes;
    parquet::ParquetRows rows(RandomTable::schema(), [&](const std::string& more) { bytes += more; });
    rows.append(RandomTable(3).rows(50), 50);
    rows.finish();
    const fs::path file = fs::path(testing::TempDir()) / ("damaged" + std::to_string(getpid()) + ".parquet");
    int refused = 0;
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        std::string other = i % 2 == 0 ? bytes.substr(0, i) : bytes;
        if (i < other.size()) {
            other[i] = static_cast<char>(~other[i]);
        }
        std::ofstream(file, std::ios::binary) << other;
        try {
            QuietContext context;
            readTable(*openParquet(file, {}, nullptr, context));
        } catch (const Failure& failure) {
            EXPECT_NE(std::string(failure.what()).find(file.filename().string()), std::string::npos) << failure.what();
            ++refused;
        }
    }
    EXPECT_GT(refused, 500);
    fs::remove(file);
}

TEST(ParquetColumns, areThoseThatWereAskedFor) {
    const fs::path file = fs::path(testing::TempDir()) / ("chosen" + std::to_string(getpid()) + ".parquet");
    std::ofstream stream(file, std::ios::binary);
    parquet::ParquetRows rows(RandomTable::schema(), [&](const std::string& more) { stream << more; });
    rows.append(RandomTable(3).rows(50), 50);
    rows.finish();
    stream.close();
    QuietContext context;
    const ReadTable table = readTable(*openParquet(file, {"xs", "n"}, nullptr, context));
    EXPECT_EQ(table.schema, Schema({{"xs", ColumnType::Real, true}, {"n", ColumnType::Integer}}));
    EXPECT_EQ(table["xs"].offsets.size(), 51U);
    EXPECT_THROW(openParquet(file, {"m"}, nullptr, context), Failure);
    const auto reader = openParquet(file, {"n", "xs"}, nullptr, context);
    reader->selectColumns({false, true});
    Chunk chunk;
    ASSERT_TRUE(reader->next(chunk));
    reader->complete(chunk);
    EXPECT_EQ(chunk.columns.at(0), nullptr);
    EXPECT_EQ(chunk.columns.at(1)->offsets.size(), 51U);
    fs::remove(file);
}

}  // namespace
}  // namespace velmorak
