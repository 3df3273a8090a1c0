#include "StoredTables.h"

#include <velmorak/StateBytes.h>

#include <gmock/gmock.h>

#include <bit>
#include <cmath>
#include <limits>
#include <map>
#include <random>

namespace {

using namespace velmorak;
using test::KindHarness;
using test::SmallTable;
using test::tableOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsNan;

using Reals = std::vector<double>;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

SmallTable grouped(KindHarness& bench, const SmallTable& table) {
    bench.wire("table", table).run();
    return test::rowsOf(bench.value("table"));
}

SmallTable grouped(const std::string& keys, const std::string& aggregates, const SmallTable& table) {
    KindHarness bench("GroupBy");
    bench.set("keys", keys).set("aggregates", aggregates);
    return grouped(bench, table);
}

SmallTable tableOfTexts(const Column::Texts& texts) {
    SmallTable table{Schema({{.name = "k", .type = ColumnType::Text}}), {}};
    table.chunks.push_back({.rows = texts.size(), .columns = {columnOf(texts)}});
    return table;
}

TEST(GroupBy, givesOneRowForEachKeyInAscendingOrder) {
    const SmallTable made = grouped("run", "count; sum(x); mean(x); spread(x); min(x); max(x); first(x); last(x)",
                                    tableOf({{"run", {3, 1, 3, 1, 3}}, {"x", {5, 1, 7, 2, 12}}}, 2));
    EXPECT_EQ(made.column("run"), (Reals{1, 3}));
    EXPECT_EQ(made.column("count"), (Reals{2, 3}));
    EXPECT_EQ(made.column("sum_x"), (Reals{3, 24}));
    EXPECT_EQ(made.column("mean_x"), (Reals{1.5, 8}));
    EXPECT_DOUBLE_EQ(made.column("spread_x")[1], std::sqrt(26.0 / 3.0));
    EXPECT_DOUBLE_EQ(made.column("mean_x_error")[1], std::sqrt(26.0 / 3.0) / std::sqrt(3.0));
    EXPECT_EQ(made.column("min_x"), (Reals{1, 5}));
    EXPECT_EQ(made.column("max_x"), (Reals{2, 12}));
    EXPECT_EQ(made.column("first_x"), (Reals{1, 5}));
    EXPECT_EQ(made.column("last_x"), (Reals{2, 12}));
}

TEST(GroupBy, medianIsExactOverAllChunks) {
    const SmallTable made =
        grouped("k", "median(x)", tableOf({{"k", {1, 1, 2, 1, 1, 2, 2}}, {"x", {9, 1, 5, 4, 6, 3, 8}}}, 2));
    EXPECT_EQ(made.column("median_x"), (Reals{5, 5}));
}

TEST(GroupBy, valuesThatAreMissingAreLeftOutAndCounted) {
    KindHarness bench("GroupBy");
    bench.set("keys", "k").set("aggregates", "count; count(x); mean(x); median(x); min(x)");
    const SmallTable made = grouped(bench, tableOf({{"k", {1, 1, 2}}, {"x", {4, nan, nan}}}, 2));
    EXPECT_EQ(made.column("count"), (Reals{2, 1}));
    EXPECT_EQ(made.column("count_x"), (Reals{1, 0}));
    EXPECT_THAT(made.column("mean_x"), ElementsAre(4.0, IsNan()));
    EXPECT_THAT(made.column("median_x"), ElementsAre(4.0, IsNan()));
    EXPECT_THAT(made.column("min_x"), ElementsAre(4.0, IsNan()));
    EXPECT_EQ(bench.number("missing"), 2.0);
    EXPECT_EQ(bench.number("groups"), 2.0);
    EXPECT_THAT(bench.printed(), HasSubstr("2 values are missing"));
}

TEST(GroupBy, missingKeysAreTheLastGroupAndZerosAreOne) {
    const SmallTable made = grouped("k", "count", tableOf({{"k", {nan, -infinity, 0.0, -0.0, -nan, infinity, -3}}}, 3));
    EXPECT_THAT(made.column("k"), ElementsAre(-infinity, -3.0, 0.0, infinity, IsNan()));
    EXPECT_EQ(made.column("count"), (Reals{1, 1, 2, 1, 2}));
}

TEST(GroupBy, textsAreOrderedByteByByteWithTheEmptyOneLast) {
    const std::string zero("a\0b", 3);
    const SmallTable made = grouped("k", "count; first(k)", tableOfTexts({"b", "", "a", "ab", zero, "a", "\xc3\xa9"}));
    EXPECT_EQ(test::textsIn(made, "k"), (Column::Texts{"a", zero, "ab", "b", "\xc3\xa9", ""}));
    EXPECT_EQ(made.column("count"), (Reals{2, 1, 1, 1, 1, 1}));
    EXPECT_EQ(test::textsIn(made, "first_k"), (Column::Texts{"a", zero, "ab", "b", "\xc3\xa9", ""}));
}

TEST(GroupBy, groupsBySeveralKeysAndByExpressions) {
    const SmallTable made = grouped("run; side: x > 0", "n: count; total: sum(2 * x)",
                                    tableOf({{"run", {2, 1, 2, 1, 2}}, {"x", {1, -1, -2, -3, 4}}}, 2));
    EXPECT_EQ(made.column("run"), (Reals{1, 2, 2}));
    EXPECT_EQ(made.column("side"), (Reals{0, 0, 1}));
    EXPECT_EQ(made.column("n"), (Reals{2, 1, 2}));
    EXPECT_EQ(made.column("total"), (Reals{-8, -4, 10}));
    EXPECT_EQ(made.schema[1].type, ColumnType::Boolean);
}

TEST(GroupBy, binnedKeysHaveTheirEdges) {
    KindHarness bench("GroupBy");
    bench.set("keys", "x").set("edges", "0 10 20").set("aggregates", "count");
    const SmallTable made = grouped(bench, tableOf({{"x", {5, -1, 10, 19.5, 20, nan, 0}}}, 3));
    EXPECT_THAT(made.column("x_low"), ElementsAre(-infinity, 0.0, 10.0, 20.0, IsNan()));
    EXPECT_THAT(made.column("x_high"), ElementsAre(0.0, 10.0, 20.0, infinity, IsNan()));
    EXPECT_EQ(made.column("count"), (Reals{1, 2, 2, 1, 1}));
}

TEST(GroupBy, integersBeyondThoseOfRealsStayExact) {
    const std::int64_t large = (std::int64_t{1} << 53U) + 1;
    SmallTable table{Schema({{.name = "event", .type = ColumnType::Integer}}), {}};
    table.chunks.push_back({.rows = 3, .columns = {columnOf(std::vector<std::int64_t>{large, large - 1, large})}});
    const SmallTable made = grouped("event", "count; max(event)", table);
    EXPECT_EQ(made.chunks.at(0).columns[0]->integers(), (Column::Integers{large - 1, large}));
    EXPECT_EQ(made.chunks.at(0).columns[2]->integers(), (Column::Integers{large - 1, large}));
}

TEST(GroupBy, aMeanOfTruthValuesIsAnEfficiency) {
    const SmallTable made =
        grouped("run", "efficiency: mean(x > 2)", tableOf({{"run", {1, 1, 1, 1}}, {"x", {1, 3, 4, 5}}}, 3));
    EXPECT_EQ(made.column("efficiency"), (Reals{0.75}));
    EXPECT_DOUBLE_EQ(made.column("efficiency_error")[0], std::sqrt(0.75 * 0.25 / 4.0));
}

TEST(GroupBy, withoutKeysAllRowsAreOneGroupAndWithoutRowsThereIsNone) {
    EXPECT_EQ(grouped("", "count", tableOf({{"x", {4, 5, 6}}}, 2)).column("count"), (Reals{3}));
    EXPECT_TRUE(grouped("", "count", tableOf({{"x", {}}}, 2)).chunks.empty());
    const SmallTable none = grouped("x", "mean(x)", tableOf({{"x", {}}}, 2));
    EXPECT_TRUE(none.chunks.empty());
    EXPECT_EQ(none.schema.size(), 3U);
}

TEST(GroupBy, infinitiesGiveAnInfiniteMean) {
    const SmallTable made = grouped("k", "sum(x); mean(x); spread(x)",
                                    tableOf({{"k", {1, 1, 1, 2, 2}}, {"x", {1, infinity, 3, infinity, -infinity}}}, 2));
    EXPECT_THAT(made.column("sum_x"), ElementsAre(infinity, IsNan()));
    EXPECT_THAT(made.column("mean_x"), ElementsAre(infinity, IsNan()));
    EXPECT_THAT(made.column("spread_x"), ElementsAre(IsNan(), IsNan()));
}

TEST(GroupBy, sumsAndSpreadsAgreeWithExtendedPrecision) {
    std::mt19937_64 random(5);
    std::normal_distribution<double> gauss(1e6, 1.0);
    Reals keys;
    Reals values;
    std::map<double, std::vector<long double>> expected;
    for (int row = 0; row < 30000; ++row) {
        keys.push_back(static_cast<double>(random() % 17));
        values.push_back(gauss(random) * (row % 2 == 0 ? 1.0 : -1.0));
        expected[keys.back()].push_back(values.back());
    }
    const SmallTable made = grouped("k", "sum(x); mean(x); spread(x)", tableOf({{"k", keys}, {"x", values}}, 1000));
    ASSERT_EQ(made.column("k").size(), expected.size());
    std::size_t group = 0;
    for (const auto& [key, numbers] : expected) {
        long double sum = 0;
        for (const long double number : numbers) {
            sum += number;
        }
        const auto count = static_cast<long double>(numbers.size());
        long double squares = 0;
        for (const long double number : numbers) {
            squares += (number - sum / count) * (number - sum / count);
        }
        EXPECT_NEAR(made.column("sum_x")[group], static_cast<double>(sum), 1e-9);
        EXPECT_NEAR(made.column("spread_x")[group] / static_cast<double>(std::sqrt(squares / count)), 1.0, 1e-14);
        ++group;
    }
}

SmallTable manyGroups() {
    std::mt19937_64 random(11);
    Reals keys;
    Reals values;
    for (int row = 0; row < 20000; ++row) {
        keys.push_back(static_cast<double>(random() % 5000));
        values.push_back(std::exp(static_cast<double>(random() % 1000) / 50.0));
    }
    return tableOf({{"k", keys}, {"x", values}}, 700);
}

std::vector<std::uint64_t> bitsOf(const SmallTable& table) {
    std::vector<std::uint64_t> bits;
    for (const ColumnInfo& column : table.schema.columns()) {
        for (const double value : table.column(column.name)) {
            bits.push_back(std::bit_cast<std::uint64_t>(value));
        }
    }
    return bits;
}

TEST(GroupBy, hasTheSameBitsWhereverTheMemoryEnds) {
    const std::string aggregates = "count; sum(x); mean(x); spread(x); median(x); first(x); last(x)";
    const SmallTable expected = grouped("k", aggregates, manyGroups());
    for (const std::size_t bytes : {std::size_t{0}, std::size_t{40'000}, std::size_t{400'000}}) {
        KindHarness bench("GroupBy");
        bench.limitMemory(bytes).set("keys", "k").set("aggregates", aggregates);
        const SmallTable made = grouped(bench, manyGroups());
        EXPECT_EQ(bitsOf(made), bitsOf(expected)) << bytes;
        EXPECT_EQ(bench.number("groups"), static_cast<double>(expected.column("k").size()));
        EXPECT_LE(bench.memory()->used(), bytes);
    }
}

TEST(GroupBy, aStateThatWasSavedAndLoadedGoesOn) {
    const SmallTable table = manyGroups();
    const auto prepare = [&](KindHarness& bench) {
        bench.set("keys", "k; t: k > 100").set("aggregates", "sum(x); median(x); last(x)").wire("table", table);
        return bench.accumulation();
    };
    KindHarness one("GroupBy");
    KindHarness other("GroupBy");
    const auto direct = prepare(one);
    const auto saved = prepare(other);
    auto state = direct->newState();
    auto loaded = saved->newState();
    for (const Chunk& chunk : table.chunks) {
        auto next = direct->newState();
        next->fill(chunk);
        state->merge(*next);
        auto more = saved->newState();
        loadState(*more, savedState(*next, "GroupBy"), "GroupBy");
        auto before = saved->newState();
        loadState(*before, savedState(*loaded, "GroupBy"), "GroupBy");
        before->merge(*more);
        loaded = std::move(before);
    }
    one.finish(*direct, *state);
    other.finish(*saved, *loaded);
    EXPECT_EQ(bitsOf(test::rowsOf(one.value("table"))), bitsOf(test::rowsOf(other.value("table"))));
}

TEST(GroupBy, damagedStatesAreRefusedOrLoaded) {
    KindHarness bench("GroupBy");
    bench.set("keys", "k")
        .set("aggregates", "median(x); count")
        .wire("table", tableOf({{"k", {1, 2}}, {"x", {3, 4}}}, 2));
    const auto prepared = bench.accumulation();
    auto state = prepared->newState();
    state->fill(tableOf({{"k", {1, 2}}, {"x", {3, 4}}}, 2).chunks[0]);
    const std::string bytes = savedState(*state, "GroupBy");
    for (std::size_t length = 0; length < bytes.size(); ++length) {
        auto loaded = prepared->newState();
        EXPECT_THROW(loadState(*loaded, bytes.substr(0, length), "GroupBy"), Failure) << length;
    }
}

std::string failureOf(const std::string& keys, const std::string& edges, const std::string& aggregates) {
    SmallTable table = tableOf({{"run", {1}}, {"x", {2}}}, 2);
    table.schema.add({.name = "jets", .type = ColumnType::Real, .isList = true});
    table.schema.add({.name = "name", .type = ColumnType::Text});
    KindHarness bench("GroupBy");
    bench.set("keys", keys).set("edges", edges).set("aggregates", aggregates).wire("table", table);
    try {
        bench.accumulation();
        return "";
    } catch (const Failure& failure) {
        return failure.input() + ": " + failure.what();
    }
}

TEST(GroupBy, mistakesAreToldWithTheirInput) {
    EXPECT_THAT(failureOf("rum", "", "count"), HasSubstr("keys: "));
    EXPECT_THAT(failureOf("rum", "", "count"), HasSubstr("run"));
    EXPECT_THAT(failureOf("jets", "", "count"), HasSubstr("\"jets\" is a list in each row"));
    EXPECT_THAT(failureOf("run", "", "mean(jets)"), HasSubstr("is a list in each row"));
    EXPECT_THAT(failureOf("run + 1", "", "count"), HasSubstr("needs a name"));
    EXPECT_THAT(failureOf("run", "", "mean(2 * x)"), HasSubstr("aggregates: \"mean(2 * x)\" needs a name"));
    EXPECT_THAT(failureOf("run", "", "meen(x)"), HasSubstr("did you mean \"mean\"?"));
    EXPECT_THAT(failureOf("run", "", "mean"), HasSubstr("needs an expression, as in mean(x)"));
    EXPECT_THAT(failureOf("run", "", "mean(name)"), HasSubstr("\"name\" is a text"));
    EXPECT_THAT(failureOf("run", "", "count; count"), HasSubstr("two columns of the result are called \"count\""));
    EXPECT_THAT(failureOf("run", "", ""), HasSubstr("nothing is to be computed"));
    EXPECT_THAT(failureOf("run", "3 2 1", "count"), HasSubstr("must be at least two ascending numbers"));
    EXPECT_THAT(failureOf("name", "0 1", "count"), HasSubstr("is a text, which has no bins"));
    EXPECT_THAT(failureOf("run; x", "0 1", "count"), HasSubstr("say which key the edges are of"));
    EXPECT_THAT(failureOf("run; x", "y: 0 1", "count"), HasSubstr("there is no key \"y\""));
}

}  // namespace
