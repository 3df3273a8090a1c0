#include "StoredTables.h"

#include <gmock/gmock.h>

#include <limits>
#include <random>

namespace {

using namespace velmorak;
using test::KindHarness;
using test::SmallTable;
using test::stored;
using test::tableOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsNan;

using Reals = std::vector<double>;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

SmallTable events() {
    return tableOf({{"run", {2, 1, 3, 2, nan}}, {"x", {10, 20, 30, 40, 50}}}, 2);
}

SmallTable constants() {
    return tableOf({{"run", {1, 2, 4, nan}}, {"gain", {0.5, 0.25, 0.125, 7}}}, 3);
}

SmallTable withTexts(const std::string& name, const Column::Texts& texts, const std::string& other,
                     const std::vector<std::int64_t>& numbers) {
    SmallTable table{Schema({{.name = name, .type = ColumnType::Text}, {.name = other, .type = ColumnType::Integer}}),
                     {}};
    table.chunks.push_back({.rows = texts.size(), .columns = {columnOf(texts), columnOf(numbers)}});
    return table;
}

SmallTable joined(KindHarness& bench, const SmallTable& first, const SmallTable& second) {
    bench.wire("table", first).wire("with", stored(second)).run();
    return bench.table();
}

TEST(Join, addsTheColumnsOfTheRowWithTheSameKey) {
    KindHarness bench("Join");
    bench.set("keys", "run");
    const SmallTable made = joined(bench, events(), constants());
    EXPECT_EQ(made.schema.size(), 3U);
    EXPECT_THAT(made.column("x"), ElementsAre(10, 20, 30, 40, 50));
    EXPECT_THAT(made.column("gain"), ElementsAre(0.25, 0.5, IsNan(), 0.25, IsNan()));
}

TEST(Join, innerKeepsOnlyRowsThatMatchAndAntiTheOthers) {
    KindHarness inner("Join");
    inner.set("keys", "run").set("rows", "inner");
    EXPECT_EQ(joined(inner, events(), constants()).column("x"), (Reals{10, 20, 40}));
    KindHarness anti("Join");
    anti.set("keys", "run").set("rows", "anti");
    const SmallTable others = joined(anti, events(), constants());
    EXPECT_EQ(others.column("x"), (Reals{30, 50}));
    EXPECT_EQ(others.schema.size(), 2U);
}

TEST(Join, aRowComesOnceWithEachRowThatMatches) {
    const SmallTable second = tableOf({{"run", {2, 1, 2}}, {"part", {7, 8, 9}}}, 2);
    KindHarness bench("Join");
    bench.set("keys", "run").set("matches", "n");
    const SmallTable made = joined(bench, events(), second);
    EXPECT_THAT(made.column("x"), ElementsAre(10, 10, 20, 30, 40, 40, 50));
    EXPECT_THAT(made.column("part"), ElementsAre(7, 9, 8, IsNan(), 7, 9, IsNan()));
    EXPECT_THAT(made.column("n"), ElementsAre(2, 2, 1, 0, 2, 2, 0));
}

TEST(Join, keysMayHaveOtherNamesAndTypes) {
    SmallTable second{
        Schema({{.name = "number", .type = ColumnType::Integer}, {.name = "name", .type = ColumnType::Text}}), {}};
    second.chunks.push_back(
        {.rows = 2, .columns = {columnOf(std::vector<std::int64_t>{2, 3}), columnOf(Column::Texts{"two", "three"})}});
    KindHarness bench("Join");
    bench.set("keys", "run = number").set("columns", "name").set("prefix", "run_");
    const SmallTable made = joined(bench, events(), second);
    EXPECT_EQ(test::textsIn(made, "run_name"), (Column::Texts{"two", "", "three", "two", ""}));
}

TEST(Join, joinsBySeveralKeysWithTexts) {
    const SmallTable first = withTexts("side", {"a", "b", "a", ""}, "run", {1, 1, 2, 1});
    SmallTable second{Schema({{.name = "side", .type = ColumnType::Text},
                              {.name = "run", .type = ColumnType::Integer},
                              {.name = "n", .type = ColumnType::Integer}}),
                      {}};
    second.chunks.push_back(
        {.rows = 4,
         .columns = {columnOf(Column::Texts{"b", "a", "a", ""}), columnOf(std::vector<std::int64_t>{1, 2, 1, 1}),
                     columnOf(std::vector<std::int64_t>{10, 20, 30, 40})}});
    KindHarness bench("Join");
    bench.set("keys", "side; run");
    const SmallTable made = joined(bench, first, second);
    EXPECT_THAT(made.column("n"), ElementsAre(30, 10, 20, IsNan()));
    EXPECT_EQ(made.schema[2].type, ColumnType::Real);
}

TEST(Join, negativeIntegersAreKeysLikeOthers) {
    const SmallTable first = withTexts("t", {"p", "q", "r"}, "k", {-2, -1, 0});
    const SmallTable second = withTexts("u", {"minus two", "minus one", "zero"}, "k", {-2, -1, 0});
    KindHarness bench("Join");
    bench.set("keys", "k").set("rows", "inner");
    EXPECT_EQ(test::textsIn(joined(bench, first, second), "u"), (Column::Texts{"minus two", "minus one", "zero"}));
}

TEST(Join, findsTheRangeInWhichAValueLies) {
    const SmallTable ranges = tableOf({{"from", {100, 1, 10}}, {"to", {199, 9, 20}}, {"gain", {3, 1, 2}}}, 2);
    KindHarness bench("Join");
    bench.set("value", "run").set("from", "from").set("to", "to").set("columns", "gain");
    const SmallTable made = joined(bench, tableOf({{"run", {1, 9, 9.5, 20, 150, 0, 200, nan}}}, 3), ranges);
    EXPECT_THAT(made.column("gain"), ElementsAre(1, 1, IsNan(), 2, 3, IsNan(), IsNan(), IsNan()));
}

TEST(Join, aRangeWithoutEndEndsWhereTheNextBegins) {
    const SmallTable ranges = tableOf({{"detector", {1, 1, 2}}, {"since", {10, 20, 15}}, {"gain", {0.1, 0.2, 0.3}}}, 2);
    KindHarness bench("Join");
    bench.set("keys", "detector").set("value", "run").set("from", "since").set("columns", "gain");
    const SmallTable made =
        joined(bench, tableOf({{"detector", {1, 1, 1, 2, 2}}, {"run", {9, 19, 20, 14, 99}}}, 2), ranges);
    EXPECT_THAT(made.column("gain"), ElementsAre(IsNan(), 0.1, 0.2, IsNan(), 0.3));
}

TEST(Join, rangesMayOverlapAndHaveAnOpenEnd) {
    const SmallTable ranges = tableOf({{"a", {0, 5, 2}}, {"b", {100, 6, nan}}, {"n", {1, 2, 3}}}, 5);
    KindHarness bench("Join");
    bench.set("value", "x").set("from", "a").set("to", "b").set("columns", "n").set("rows", "inner");
    const SmallTable made = joined(bench, tableOf({{"x", {1, 5, 7, 500}}}, 5), ranges);
    EXPECT_EQ(made.column("x"), (Reals{1, 5, 5, 5, 7, 7, 500}));
    EXPECT_EQ(made.column("n"), (Reals{1, 1, 2, 3, 1, 3, 3}));
}

TEST(Join, anEmptySecondTableMatchesNothing) {
    KindHarness bench("Join");
    bench.set("keys", "run");
    const SmallTable made = joined(bench, events(), tableOf({{"run", {}}, {"gain", {}}}, 3));
    EXPECT_THAT(made.column("gain"), ElementsAre(IsNan(), IsNan(), IsNan(), IsNan(), IsNan()));
    KindHarness none("Join");
    none.set("keys", "run");
    EXPECT_TRUE(joined(none, tableOf({{"run", {}}, {"x", {}}}, 3), constants()).chunks.empty());
}

TEST(Join, listsOfTheSecondTableComeWhole) {
    SmallTable second = tableOf({{"run", {1, 2}}}, 2);
    second.schema.add({.name = "hits", .type = ColumnType::Real, .isList = true});
    second.chunks[0].columns.push_back(std::make_shared<const Column>(Column{Column::Reals{7, 8, 9}, {0, 1, 3}}));
    KindHarness bench("Join");
    bench.set("keys", "run");
    const SmallTable made = joined(bench, tableOf({{"run", {2, 3, 1}}}, 3), second);
    EXPECT_EQ(made.chunks[0].columns[1]->offsets, (std::vector<std::uint64_t>{0, 2, 2, 3}));
    EXPECT_EQ(made.chunks[0].columns[1]->reals(), (Reals{8, 9, 7}));
}

TEST(Join, isTheSameWithItsRowsOnDisk) {
    std::mt19937_64 random(3);
    std::vector<std::pair<std::string, Reals>> second = {{"k", {}}, {"a", {}}, {"b", {}}};
    Reals keys;
    for (int row = 0; row < 9000; ++row) {
        second[0].second.push_back(static_cast<double>(row % 4000));
        second[1].second.push_back(static_cast<double>(random() % 1000));
        second[2].second.push_back(static_cast<double>(row));
        keys.push_back(static_cast<double>(random() % 5000));
    }
    const auto made = [&](KindHarness& bench) {
        bench.set("keys", "k");
        return joined(bench, tableOf({{"k", keys}}, 1000), tableOf(second, 700));
    };
    KindHarness inMemory("Join");
    const SmallTable expected = made(inMemory);
    for (const std::size_t bytes : {std::size_t{0}, std::size_t{50'000}}) {
        KindHarness bench("Join");
        bench.limitMemory(bytes);
        const SmallTable found = made(bench);
        for (const char* column : {"k", "a", "b"}) {
            EXPECT_THAT(found.column(column),
                        testing::Pointwise(testing::NanSensitiveDoubleEq(), expected.column(column)));
        }
    }
}

std::string failureOf(const ValueTexts& values, const SmallTable& second) {
    KindHarness bench("Join");
    for (const auto& [input, value] : values) {
        bench.set(input, value);
    }
    bench.wire("table", events()).wire("with", stored(second));
    return bench.failure();
}

TEST(Join, mistakesAreToldWithTheirInput) {
    EXPECT_THAT(failureOf({}, constants()), HasSubstr("keys: nothing says which rows belong together"));
    EXPECT_THAT(failureOf({{"keys", "ran"}}, constants()), HasSubstr("keys: in the first table: "));
    EXPECT_THAT(failureOf({{"keys", "run = ran"}}, constants()), HasSubstr("keys: in the second table: "));
    EXPECT_THAT(failureOf({{"keys", "run = name"}}, withTexts("name", {"a"}, "n", {1})),
                HasSubstr("\"name\" is a text and \"run\" a number"));
    EXPECT_THAT(failureOf({{"keys", "run = gain"}}, constants()),
                HasSubstr("prefix: both tables have a column \"run\""));
    EXPECT_THAT(failureOf({{"value", "run"}}, constants()), HasSubstr("from: a range needs both value and from"));
    EXPECT_THAT(failureOf({{"value", "x"}, {"from", "run"}, {"to", "gain"}, {"columns", "gain"}}, constants()),
                HasSubstr("to: the range in row 0 of the second table, counted from 0, ends before it begins"));
    EXPECT_THAT(failureOf({{"keys", "run"}, {"columns", "gian"}}, constants()),
                HasSubstr("columns: there is no column"));
    EXPECT_THAT(failureOf({{"keys", "run"}, {"matches", "x"}}, constants()),
                HasSubstr("matches: the result already has"));
}

TEST(Join, tooManyMatchesAreRefusedBeforeTheMemoryIsFull) {
    const SmallTable many = tableOf({{"k", Reals(3000, 1.0)}, {"n", Reals(3000, 2.0)}}, 3000);
    KindHarness bench("Join");
    bench.set("keys", "k").wire("table", tableOf({{"k", Reals(3000, 1.0)}}, 3000)).wire("with", stored(many));
    EXPECT_THAT(bench.failure(), HasSubstr("more than 4000000 rows match the rows 0 to 2999 of the first table"));
}

TEST(Join, saysHowManyRowsHaveNoMatch) {
    KindHarness bench("Join");
    bench.set("keys", "run");
    joined(bench, events(), constants());
    EXPECT_THAT(bench.printed(), HasSubstr("2 of 5 rows have no row of the second table"));
}

}  // namespace
