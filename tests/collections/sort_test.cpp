#include "KindHarness.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <random>

namespace {

using namespace velmorak;
using test::KindHarness;
using test::SmallTable;
using test::tableOf;

using Reals = std::vector<double>;
constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

/// Numbers of which many are equal, some missing; and their positions.
SmallTable manyRows(std::size_t rows, unsigned seed) {
    std::mt19937_64 random(seed);
    Reals x;
    Reals k;
    Reals row;
    for (std::size_t i = 0; i < rows; ++i) {
        x.push_back(random() % 50 == 0 ? nan : std::round(std::normal_distribution<double>(0, 100)(random)));
        k.push_back(static_cast<double>(random() % 7));
        row.push_back(static_cast<double>(i));
    }
    return tableOf({{"x", x}, {"k", k}, {"row", row}}, 1000);
}

/// The rows as std::stable_sort orders them, missing values last.
Reals sortedRowNumbers(const SmallTable& table, const std::vector<std::pair<std::string, bool>>& keys) {
    std::vector<std::pair<Reals, bool>> columns;
    for (const auto& [name, isDescending] : keys) {
        columns.emplace_back(table.column(name), isDescending);
    }
    Reals order(columns.front().first.size());
    std::iota(order.begin(), order.end(), 0.0);
    std::stable_sort(order.begin(), order.end(), [&](double one, double other) {
        for (const auto& [values, isDescending] : columns) {
            const double a = values[static_cast<std::size_t>(one)];
            const double b = values[static_cast<std::size_t>(other)];
            if (std::isnan(a) || std::isnan(b)) {
                if (std::isnan(a) != std::isnan(b)) {
                    return std::isnan(b);
                }
            } else if (a != b) {
                return isDescending ? a > b : a < b;
            }
        }
        return false;
    });
    return order;
}

SmallTable textTable(const Column::Texts& texts) {
    SmallTable table;
    table.schema = Schema({{"name", ColumnType::Text, false, ""}});
    table.chunks.push_back({.number = 0, .firstRow = 0, .rows = texts.size(), .columns = {columnOf(texts)}});
    return table;
}

Column::Texts textsOf(const SmallTable& table) {
    Column::Texts all;
    for (const Chunk& chunk : table.chunks) {
        const Column::Texts& texts = chunk.columns.front()->texts();
        all.insert(all.end(), texts.begin(), texts.end());
    }
    return all;
}

TEST(Sort, isStableAndPutsMissingNumbersLast) {
    const SmallTable table = manyRows(20'000, 1);
    for (const bool isDescending : {false, true}) {
        KindHarness bench("Sort");
        bench.set("by", isDescending ? "x descending" : "x").wire("table", table).run();
        EXPECT_EQ(bench.table().column("row"), sortedRowNumbers(table, {{"x", isDescending}})) << isDescending;
        const Reals x = table.column("x");
        EXPECT_EQ(bench.number("missing"), std::count_if(x.begin(), x.end(), [](double v) { return std::isnan(v); }));
    }
}

TEST(Sort, goesBySeveralExpressions) {
    const SmallTable table = manyRows(20'000, 2);
    KindHarness bench("Sort");
    bench.set("by", "k descending; x\nrow descending").wire("table", table).run();
    EXPECT_EQ(bench.table().column("row"), sortedRowNumbers(table, {{"k", true}, {"x", false}, {"row", true}}));
}

TEST(Sort, givesTheSameChunksFromTemporaryFiles) {
    const SmallTable table = manyRows(60'000, 3);
    for (const std::string by : {"x", "k; x descending", "row descending"}) {
        KindHarness inMemory("Sort");
        inMemory.set("by", by).wire("table", table).run();
        KindHarness spilled("Sort");
        spilled.limitMemory(200'000).set("by", by).wire("table", table).run();
        ASSERT_EQ(spilled.table().chunks.size(), inMemory.table().chunks.size());
        for (std::size_t i = 0; i < inMemory.table().chunks.size(); ++i) {
            EXPECT_EQ(spilled.table().chunks[i].rows, inMemory.table().chunks[i].rows);
        }
        EXPECT_EQ(spilled.table().column("row"), inMemory.table().column("row")) << by;
    }
}

TEST(Sort, mergesMoreRunsThanItReadsAtTheSameTime) {
    const SmallTable table = manyRows(150'000, 4);  // Each chunk of 1000 rows becomes a run.
    KindHarness bench("Sort");
    bench.limitMemory(1000).set("by", "x").wire("table", table).run();
    EXPECT_EQ(bench.table().column("row"), sortedRowNumbers(table, {{"x", false}}));
}

TEST(Sort, staysWithinTheMemoryItMayUse) {
    KindHarness bench("Sort");
    bench.limitMemory(1'000'000).set("by", "x").wire("table", manyRows(100'000, 5)).run();
    EXPECT_LE(bench.memory()->used(), 1'000'000U);
}

TEST(Sort, comparesNumbersByValueAndTextsByTheirBytes) {
    KindHarness numbers("Sort");
    numbers.set("by", "x").wire("table", tableOf({{"x", {infinity, 0.0, nan, -0.0, -infinity, -1e-300, 2}}}, 3)).run();
    const Reals x = numbers.table().column("x");
    EXPECT_EQ(Reals(x.begin(), x.end() - 1), (Reals{-infinity, -1e-300, 0.0, -0.0, 2, infinity}));
    EXPECT_FALSE(std::signbit(x[2]));  // Zeros are equal, so that they stay in their order.
    EXPECT_TRUE(std::signbit(x[3]));
    const std::string withZero("a\0b", 3);
    KindHarness texts("Sort");
    texts.set("by", "name").wire("table", textTable({"b", "", "a", "Z", "ab", withZero, "\xC3\xA9"})).run();
    EXPECT_EQ(textsOf(texts.table()), (Column::Texts{"Z", "a", withZero, "ab", "b", "\xC3\xA9", ""}));
    EXPECT_EQ(texts.number("missing"), 1);
    KindHarness descending("Sort");
    descending.set("by", "name descending").wire("table", textTable({"b", "", "a", "ab", "a long text", "a"})).run();
    EXPECT_EQ(textsOf(descending.table()), (Column::Texts{"b", "ab", "a long text", "a", "a", ""}));
}

TEST(Sort, keepsLargeIntegersApart) {
    constexpr std::int64_t large = 9007199254740993;  // Not a double.
    SmallTable table;
    table.schema = Schema({{"n", ColumnType::Integer, false, ""}});
    const Column::Integers given{large, large - 1, -large, large + 1};
    table.chunks.push_back({.number = 0, .firstRow = 0, .rows = 4, .columns = {columnOf(given)}});
    KindHarness bench("Sort");
    bench.set("by", "n").wire("table", table).run();
    EXPECT_EQ(bench.table().chunks.front().columns.front()->integers(),
              (Column::Integers{-large, large - 1, large, large + 1}));
}

SmallTable withLists(std::size_t rows) {
    SmallTable table;
    table.schema = Schema({{"n", ColumnType::Integer, false, ""},
                           {"pt", ColumnType::Real, true, "GeV"},
                           {"tag", ColumnType::Text, true, ""}});
    for (std::size_t first = 0; first < rows; first += 10) {
        Column n{Column::Integers{}, {}};
        Column pt{Column::Reals{}, {0}};
        Column tag{Column::Texts{}, {0}};
        for (std::size_t row = first; row < first + 10; ++row) {
            std::get<Column::Integers>(n.values).push_back(static_cast<std::int64_t>(row));
            for (std::size_t i = 0; i < row % 4; ++i) {
                std::get<Column::Reals>(pt.values).push_back(static_cast<double>(10 * row + i));
                std::get<Column::Texts>(tag.values).push_back("tag" + std::to_string(row));
            }
            pt.offsets.push_back(pt.valueCount());
            tag.offsets.push_back(tag.valueCount());
        }
        const auto kept = [](Column& column) { return std::make_shared<const Column>(std::move(column)); };
        table.chunks.push_back(
            {.number = first / 10, .firstRow = first, .rows = 10, .columns = {kept(n), kept(pt), kept(tag)}});
    }
    return table;
}

TEST(Sort, carriesListsAlongAlsoThroughFiles) {
    for (const std::size_t limit : {std::size_t{1} << 30U, std::size_t{100}}) {
        KindHarness bench("Sort");
        bench.limitMemory(limit).set("by", "n descending").wire("table", withLists(40)).run();
        ASSERT_EQ(bench.table().chunks.size(), 1U);
        const std::vector<ColumnPtr>& columns = bench.table().chunks.front().columns;
        EXPECT_EQ(columns[0]->integers().front(), 39);
        const std::vector<std::uint64_t>& offsets = columns[1]->offsets;
        EXPECT_EQ(columns[2]->offsets, offsets);
        EXPECT_EQ((std::vector<std::uint64_t>{offsets[0], offsets[1], offsets[2], offsets[3], offsets[4]}),
                  (std::vector<std::uint64_t>{0, 3, 5, 6, 6}));  // Rows 39, 38, 37 and 36.
        EXPECT_EQ(columns[1]->reals()[1], 391);
        EXPECT_EQ(columns[2]->texts()[3], "tag38");
    }
}

TEST(Sort, takesAnEmptyTable) {
    SmallTable none;
    none.schema = Schema({{"x", ColumnType::Real, false, ""}});
    KindHarness bench("Sort");
    bench.set("by", "x").wire("table", none).run();
    EXPECT_TRUE(bench.table().chunks.empty());
    EXPECT_EQ(bench.table().schema.size(), 1U);
}

TEST(Sort, saysWhatIsWrongWithItsKeys) {
    KindHarness bench("Sort");
    bench.wire("table", withLists(10));
    EXPECT_EQ(bench.failure(), "by: no expression to sort by is given, for example: pt descending");
    EXPECT_EQ(bench.set("by", "pt").failure(), "by: \"pt\" is a list in each row; expected a single value");
    EXPECT_NE(bench.kind().refusal("by", "n +").size(), 0U);
    EXPECT_EQ(bench.kind().refusal("by", "n descending; -n"), "");
}

}  // namespace
