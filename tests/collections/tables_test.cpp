#include "KindHarness.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using namespace velmorak;
using test::KindHarness;
using test::SmallTable;
using test::tableOf;

using Reals = std::vector<double>;

SmallTable withLists() {
    SmallTable table;
    table.schema = Schema({{"n", ColumnType::Integer, false, ""},
                           {"pt", ColumnType::Real, true, "GeV"},
                           {"charge", ColumnType::Integer, true, ""}});
    const auto column = [](auto values, std::vector<std::uint64_t> offsets) {
        return std::make_shared<const Column>(Column{std::move(values), std::move(offsets)});
    };
    table.chunks.push_back(
        {.number = 0,
         .firstRow = 0,
         .rows = 3,
         .columns = {column(Column::Integers{7, 8, 9}, {}), column(Column::Reals{1, 2, 3}, {0, 2, 2, 3}),
                     column(Column::Integers{-1, 1, -1}, {0, 2, 2, 3})}});
    return table;
}

std::vector<std::string> columnNames(const SmallTable& table) {
    std::vector<std::string> names;
    for (const ColumnInfo& column : table.schema.columns()) {
        names.push_back(column.name);
    }
    return names;
}

TEST(Select, keepsColumnsInTheOrderOfTheList) {
    KindHarness bench("Select");
    bench.set("columns", "z, `x y`").wire("table", tableOf({{"x y", {1, 2}}, {"y", {3, 4}}, {"z", {5, 6}}}, 2)).run();
    EXPECT_EQ(columnNames(bench.table()), (std::vector<std::string>{"z", "x y"}));
    EXPECT_EQ(bench.table().column("x y"), (Reals{1, 2}));
    EXPECT_EQ(bench.table().column("z"), (Reals{5, 6}));
}

TEST(Select, dropsColumnsAndKeepsTheOthers) {
    KindHarness bench("Select");
    bench.set("columns", "y").set("mode", "drop").wire("table", tableOf({{"x", {1}}, {"y", {3}}, {"z", {5}}}, 2)).run();
    EXPECT_EQ(columnNames(bench.table()), (std::vector<std::string>{"x", "z"}));
}

TEST(Select, saysWhichColumnIsNotThere) {
    KindHarness bench("Select");
    bench.wire("table", tableOf({{"x", {1}}}, 2));
    EXPECT_EQ(bench.set("columns", "w").failure(), "columns: there is no column \"w\"; the only column is \"x\"");
    EXPECT_EQ(bench.set("columns", "x x").failure(), "columns: column \"x\" is listed twice");
    EXPECT_EQ(bench.set("columns", " ").failure(), "columns: no column is left");
    EXPECT_EQ(bench.kind().refusal("columns", "`x"), "a back quote is not closed");
}

TEST(Range, keepsRowsBetweenPositionsInAllChunks) {
    KindHarness bench("Range");
    bench.set("first", "1").set("last", "4").wire("table", tableOf({{"x", {0, 1, 2, 3, 4, 5, 6}}}, 2)).run();
    EXPECT_EQ(bench.table().column("x"), (Reals{1, 2, 3, 4}));
}

TEST(Range, everyNthRowIsCountedFromTheFirst) {
    KindHarness bench("Range");
    bench.set("first", "1").set("every", "3").wire("table", tableOf({{"x", {0, 1, 2, 3, 4, 5, 6, 7}}}, 3)).run();
    EXPECT_EQ(bench.table().column("x"), (Reals{1, 4, 7}));
}

TEST(Range, keepsAllRowsUnlessItIsToldOtherwise) {
    KindHarness bench("Range");
    bench.wire("table", tableOf({{"x", {0, 1, 2}}}, 2)).run();
    EXPECT_EQ(bench.table().column("x"), (Reals{0, 1, 2}));
}

TEST(Range, aFirstBehindTheLastKeepsNothing) {
    KindHarness bench("Range");
    bench.set("first", "2").set("last", "1").wire("table", tableOf({{"x", {0, 1, 2}}}, 2)).run();
    EXPECT_EQ(bench.table().column("x"), Reals{});
}

TEST(Concat, rowsFollowEachOther) {
    KindHarness bench("Concat");
    bench.wire("table", tableOf({{"x", {1, 2, 3}}, {"y", {4, 5, 6}}}, 2));
    bench.wire("table2", tableOf({{"y", {8}}, {"x", {7}}}, 2)).run();
    EXPECT_EQ(columnNames(bench.table()), (std::vector<std::string>{"x", "y"}));
    EXPECT_EQ(bench.table().column("x"), (Reals{1, 2, 3, 7}));
    EXPECT_EQ(bench.table().column("y"), (Reals{4, 5, 6, 8}));
}

TEST(Concat, columnsThatAreNotInAllTablesAreSaidOrLeftOut) {
    KindHarness bench("Concat");
    bench.wire("table", tableOf({{"x", {1}}}, 2)).wire("table2", tableOf({{"x", {2}}, {"z", {3}}}, 2));
    EXPECT_EQ(bench.failure(), "table2: the first table has no column \"z\"");
    bench.set("columns", "common").run();
    EXPECT_EQ(columnNames(bench.table()), (std::vector<std::string>{"x"}));
    EXPECT_EQ(bench.table().column("x"), (Reals{1, 2}));
}

TEST(Concat, integersBecomeRealWhereAnotherTableHoldsReals) {
    SmallTable whole = tableOf({{"x", {}}}, 1);
    whole.schema = Schema({{"x", ColumnType::Integer, false, ""}});
    whole.chunks = {{.rows = 2, .columns = {std::make_shared<const Column>(Column{Column::Integers{5, 6}, {}})}}};
    KindHarness bench("Concat");
    bench.wire("table", whole).wire("table2", tableOf({{"x", {0.5}}}, 2)).run();
    EXPECT_EQ(bench.table().schema[0].type, ColumnType::Real);
    EXPECT_EQ(bench.table().chunks[0].columns[0]->reals(), (Reals{5, 6}));
}

TEST(Concat, otherTypesDoNotGoTogether) {
    KindHarness bench("Concat");
    bench.set("columns", "common").wire("table", tableOf({{"pt", {1}}}, 2)).wire("table2", withLists());
    EXPECT_EQ(bench.failure(), "table2: column \"pt\" is a list of real here and real in the previous tables");
    KindHarness none("Concat");
    none.set("columns", "common").wire("table", tableOf({{"a", {1}}}, 2)).wire("table2", tableOf({{"b", {1}}}, 2));
    EXPECT_EQ(none.failure(), "columns: the tables have no column in common");
}

TEST(Concat, hasAnInputForEachTable) {
    const Kind& concat = test::shippedKind("Concat");
    EXPECT_EQ(concat.ports({}).inputs.size(), 4U);
    const Ports four = concat.ports({{"tables", "4"}});
    ASSERT_EQ(four.inputs.size(), 6U);
    EXPECT_EQ(four.inputs[1].name, "table2");
    EXPECT_EQ(four.inputs[5].name, "table4");
    EXPECT_EQ(concat.ports({{"tables", "NaN"}}).inputs.size(), 4U);
    EXPECT_EQ(concat.ports({{"tables", "500"}}).inputs.size(), 502U);
    EXPECT_EQ(concat.ports({{"tables", "500"}}).inputs.back().name, "table500");
    EXPECT_EQ(concat.ports({{"tables", "1e300"}}).inputs.size(), 10002U);
}

TEST(Concat, joinsManyTables) {
    KindHarness bench("Concat");
    bench.set("tables", "40");
    for (int i = 1; i <= 40; ++i) {
        bench.wire(i == 1 ? "table" : "table" + std::to_string(i), tableOf({{"x", {static_cast<double>(i)}}}, 1));
    }
    bench.run();
    ASSERT_EQ(bench.table().chunks.size(), 40U);
    EXPECT_EQ(bench.table().chunks[39].columns[0]->reals(), (Reals{40}));
}

TEST(CutFlow, countsWhatIsLeftAfterEachCut) {
    KindHarness bench("CutFlow");
    bench.set("cuts", "above one: x > 1\n\ny < 4 ; last: x == 3").set("weight", "y");
    bench.wire("table", tableOf({{"x", {1, 2, 3, 3}}, {"y", {1, 2, 3, 4}}}, 3)).run();
    EXPECT_EQ(bench.number("rows"), 1.0);
    EXPECT_EQ(bench.number("weights"), 3.0);
    const HistogramPtr flow = bench.histogram("histogram");
    ASSERT_EQ(flow->bins(), 4U);
    const Reals heights{flow->height(0), flow->height(1), flow->height(2), flow->height(3)};
    EXPECT_EQ(heights, (Reals{10, 9, 5, 3}));
    EXPECT_EQ(flow->bin(1).entries, 3);
    EXPECT_EQ(flow->bin(1).ww, 29.0);
    EXPECT_EQ(bench.text("text"),
              "cut\trows\tweights\t% of the rows before\t% of all rows\n"
              "all\t4\t10\t100\t100\n"
              "above one\t3\t9\t75\t75\n"
              "y < 4\t2\t5\t66.67\t50\n"
              "last\t1\t3\t50\t25\n");
}

TEST(CutFlow, rowsWithoutAUsableWeightAreLeftOutOfTheSumsWithAWarning) {
    const double nan = std::nan("");
    const double inf = std::numeric_limits<double>::infinity();
    KindHarness bench("CutFlow");
    bench.set("cuts", "x > 1").set("weight", "w").expectWarnings();
    bench.wire("table", tableOf({{"x", {1, 2, 3, 1, 5, 6}}, {"w", {1, 2, nan, -inf, 4, inf}}}, 2)).run();
    EXPECT_EQ(bench.number("rows"), 4.0);
    EXPECT_EQ(bench.number("weights"), 6.0);
    const HistogramPtr flow = bench.histogram("histogram");
    EXPECT_EQ((Reals{flow->height(0), flow->height(1)}), (Reals{7, 6}));
    EXPECT_EQ(flow->bin(0).entries, 6);
    EXPECT_EQ(flow->bin(0).ww, 21.0);
    EXPECT_EQ(bench.text("text"),
              "cut\trows\tweights\t% of the rows before\t% of all rows\n"
              "all\t6\t7\t100\t100\n"
              "x > 1\t4\t6\t66.67\t66.67\n");
    EXPECT_EQ(bench.warnings(),
              std::vector<std::string>{
                  "the weight of 3 rows is NaN or infinite; the first is row 2 of the table, counted from 0, and 2 of "
                  "them pass all cuts. They are counted as rows and left out of the sums of weights"});
}

TEST(CutFlow, writesCountsAsIntegers) {
    KindHarness bench("CutFlow");
    bench.set("cuts", "x > 1").wire("table", tableOf({{"x", Reals(100000, 2.0)}}, 32768)).run();
    EXPECT_NE(bench.text("text").find("\nall\t100000\t100000\t100\t100\n"), std::string::npos) << bench.text("text");
}

TEST(CutFlow, writesItsTextWhereAFileIsNamed) {
    KindHarness bench("CutFlow");
    bench.set("cuts", "x > 1").set("file", "flow.txt").wire("table", tableOf({{"x", {1, 2}}}, 3)).run();
    EXPECT_EQ(test::textIn(bench.folder() / "flow.txt"), bench.text("text"));
}

TEST(CutFlow, aTableWithoutRowsHasNoPercentages) {
    KindHarness bench("CutFlow");
    bench.set("cuts", "x > 1").wire("table", tableOf({{"x", {}}}, 3)).run();
    EXPECT_EQ(bench.number("rows"), 0.0);
    EXPECT_NE(bench.text("text").find("x > 1\t0\t0\t-\t-\n"), std::string::npos);
}

TEST(CutFlow, colonsAndSemicolonsInsideOfAConditionStay) {
    KindHarness bench("CutFlow");
    bench.set("cuts", "x > 1 ? true : false; quoted: 'a;b' == 'a;b'").wire("table", tableOf({{"x", {1, 2}}}, 3)).run();
    EXPECT_NE(bench.text("text").find("x > 1 ? true : false\t1\t"), std::string::npos);
    EXPECT_NE(bench.text("text").find("quoted\t1\t"), std::string::npos);
}

TEST(CutFlow, namesInCutsAndWeightAreInputs) {
    KindHarness bench("CutFlow");
    bench.set("cuts", "a: x > @low; b: x < high").set("weight", "@scale * @low");
    bench.wire("high", 4.0);
    std::vector<std::string> names;
    for (const InputSpec& input : bench.ports().inputs) {
        names.push_back(input.name);
    }
    EXPECT_EQ(names, (std::vector<std::string>{"table", "cuts", "weight", "file", "low", "high", "scale"}));
    bench.set("low", "1").set("scale", "2");
    bench.wire("table", tableOf({{"x", {1, 2, 3, 4}}}, 3)).run();
    EXPECT_EQ(bench.number("rows"), 2.0);
    EXPECT_EQ(bench.number("weights"), 4.0);
}

TEST(CutFlow, mistakesAreRefused) {
    const Kind& flow = test::shippedKind("CutFlow");
    EXPECT_EQ(flow.refusal("cuts", "good: x > 1; bad:"), "Cut \"bad\" has no condition.");
    EXPECT_NE(flow.refusal("cuts", "good: x > 1; bad: x >"), "");
    EXPECT_EQ(flow.refusal("cuts", "good: x > 1"), "");
    KindHarness bench("CutFlow");
    bench.set("cuts", "x > 1").set("weight", "'a'").wire("table", tableOf({{"x", {1}}}, 3));
    EXPECT_EQ(bench.failure(), "weight: \"'a'\" is not a number");
}

TEST(Explode, makesARowOfEachValue) {
    KindHarness bench("Explode");
    bench.set("index", "i").wire("table", withLists()).run();
    EXPECT_EQ(columnNames(bench.table()), (std::vector<std::string>{"n", "pt", "charge", "i"}));
    EXPECT_FALSE(bench.table().schema[1].isList);
    EXPECT_EQ(bench.table().schema[1].unit, "GeV");
    EXPECT_EQ(bench.table().column("n"), (Reals{7, 7, 9}));
    EXPECT_EQ(bench.table().column("pt"), (Reals{1, 2, 3}));
    EXPECT_EQ(bench.table().column("charge"), (Reals{-1, 1, -1}));
    EXPECT_EQ(bench.table().column("i"), (Reals{0, 1, 0}));
    EXPECT_EQ(bench.table().chunks[0].rows, 3U);
}

TEST(Explode, listsThatAreNotNamedAreRepeatedWhole) {
    KindHarness bench("Explode");
    bench.set("columns", "pt").wire("table", withLists()).run();
    const Column& charge = *bench.table().chunks[0].columns[2];
    EXPECT_EQ(charge.integers(), (Column::Integers{-1, 1, -1, 1, -1}));
    EXPECT_EQ(charge.offsets, (std::vector<std::uint64_t>{0, 2, 4, 5}));
}

TEST(Explode, listsOfOneRowMustBeEquallyLong) {
    SmallTable table = withLists();
    table.chunks[0].columns[2] = std::make_shared<const Column>(Column{Column::Integers{-1, 1, -1}, {0, 2, 3, 3}});
    KindHarness bench("Explode");
    EXPECT_NE(bench.wire("table", table).failure().find("\"pt\" holds 0 and \"charge\" 1 values"), std::string::npos);
}

TEST(Explode, needsAList) {
    KindHarness bench("Explode");
    bench.wire("table", tableOf({{"x", {1}}}, 2));
    EXPECT_EQ(bench.failure(), "table: the table has no list column");
    EXPECT_EQ(bench.set("columns", "x").failure(), "columns: column \"x\" is not a list column");
    KindHarness taken("Explode");
    taken.set("index", "n").wire("table", withLists());
    EXPECT_EQ(taken.failure(), "index: the table already has a column \"n\"");
}

}  // namespace
