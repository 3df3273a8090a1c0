#include "KindHarness.h"

#include <velmorak/HistogramList.h>
#include <velmorak/ObjectBytes.h>

#include <gmock/gmock.h>

#include <limits>
#include <memory>
#include <random>
#include <utility>

namespace {

using namespace velmorak;
using test::KindHarness;
using test::SmallTable;
using test::tableOf;
using testing::ElementsAre;
using testing::HasSubstr;

using Numbers = std::vector<double>;
using Words = std::vector<std::string>;
using ListPtr = std::shared_ptr<const HistogramList>;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

/// Fills x into four bins from 0 to 4.
struct Bench : KindHarness {
    explicit Bench(const std::string& key) : KindHarness("GroupedHistogram", "Energy") {
        set("key", key).set("expression", "x").set("bins", "4").set("low", "0").set("high", "4");
    }
};

ListPtr listOf(KindHarness& bench, const SmallTable& table) {
    bench.wire("table", table).run();
    return bench.object<HistogramList>("histograms");
}

Words keysOf(const HistogramList& list) {
    Words keys;
    for (const HistogramList::Group& group : list.groups()) {
        keys.push_back(group.key);
    }
    return keys;
}

Words labelsOf(const HistogramList& list) {
    Words labels;
    for (const HistogramList::Group& group : list.groups()) {
        labels.push_back(group.label);
    }
    return labels;
}

Numbers heights(const HistogramList& list, std::size_t group) {
    Numbers all;
    for (const BinSums& cell : list.groups().at(group).histogram->cells()) {
        all.push_back(cell.w);
    }
    return all;
}

Chunk chunkOf(std::vector<Column> columns, std::size_t rows) {
    Chunk chunk{.rows = rows, .columns = {}};
    for (Column& column : columns) {
        chunk.columns.push_back(std::make_shared<const Column>(std::move(column)));
    }
    return chunk;
}

/// Texts k, lists x and the number n of each row.
SmallTable events() {
    SmallTable table{Schema({{.name = "k", .type = ColumnType::Text},
                             {.name = "x", .type = ColumnType::Real, .isList = true, .unit = "MeV"},
                             {.name = "n"}}),
                     {}};
    table.chunks.push_back(chunkOf({{Column::Texts{"muon", "", "jet"}, {}},
                                    {Column::Reals{0.5, 1.5, 2.5, 3.5, 3.5}, {0, 2, 3, 5}},
                                    {Column::Reals{1, 2, 4}, {}}},
                                   3));
    table.chunks.push_back(chunkOf(
        {{Column::Texts{"jet", "tau"}, {}}, {Column::Reals{nan, 0.5}, {0, 2, 2}}, {Column::Reals{8, 16}, {}}}, 2));
    return table;
}

TEST(GroupedHistogramKind, fillsAHistogramForEachNumberInAscendingOrder) {
    Bench bench("run");
    const ListPtr list =
        listOf(bench, tableOf({{"run", {10, 9, 10, -1, 9, 10}}, {"x", {0.5, 1.5, 0.5, 2.5, 9, -3}}}, 2));
    EXPECT_EQ(keysOf(*list), (Words{"-1", "9", "10"}));
    EXPECT_EQ(labelsOf(*list), (Words{"run = -1", "run = 9", "run = 10"}));
    EXPECT_EQ(heights(*list, 0), (Numbers{0, 0, 0, 1, 0, 0}));
    EXPECT_EQ(heights(*list, 1), (Numbers{0, 0, 1, 0, 0, 1}));
    EXPECT_EQ(heights(*list, 2), (Numbers{1, 2, 0, 0, 0, 0}));
    EXPECT_EQ(bench.number("groups"), 3.0);
    EXPECT_EQ(bench.number("missing"), 0.0);
    EXPECT_EQ(bench.printed(), "");
}

TEST(GroupedHistogramKind, namesTheListItsHistogramsAndTheirAxis) {
    Bench bench("run");
    bench.set("title", "Signal").set("keytitle", "Run").set("axis", "E [MeV]");
    const ListPtr list = listOf(bench, tableOf({{"run", {7}}, {"x", {0.5}}}, 1));
    EXPECT_EQ(list->type(), ValueType::Histograms);
    EXPECT_EQ(list->name, "Energy");
    EXPECT_EQ(list->title, "Signal");
    EXPECT_EQ(list->keyTitle(), "Run");
    const Histogram1D& histogram = *list->groups().at(0).histogram;
    EXPECT_EQ(histogram.name, "Energy_7");
    EXPECT_EQ(histogram.title, "Signal, Run = 7");
    EXPECT_EQ(histogram.axis().title, "E [MeV]");
}

TEST(GroupedHistogramKind, textsAreKeysOfListsWithWeights) {
    Bench bench("k");
    bench.set("weight", "n");
    const ListPtr list = listOf(bench, events());
    EXPECT_EQ(keysOf(*list), (Words{"jet", "muon", "tau"}));
    EXPECT_EQ(heights(*list, 0), (Numbers{0, 8, 0, 0, 8, 0}));
    EXPECT_EQ(heights(*list, 1), (Numbers{0, 1, 1, 0, 0, 0}));
    EXPECT_EQ(heights(*list, 2), (Numbers{0, 0, 0, 0, 0, 0})) << "a row with an empty list has a key";
    EXPECT_EQ(list->groups()[0].histogram->nanEntries(), 1);
    EXPECT_EQ(list->groups()[0].histogram->axis().title, "x [MeV]");
}

TEST(GroupedHistogramKind, rowsWithoutAKeyAreCountedAndTold) {
    Bench texts("k");
    listOf(texts, events());
    EXPECT_EQ(texts.number("missing"), 1.0);
    EXPECT_EQ(texts.printed(), "1 row has no key (NaN or an empty text) and is in no histogram\n");
    Bench numbers("run");
    const ListPtr list = listOf(numbers, tableOf({{"run", {nan, 0.0, -nan, -0.0}}, {"x", {1, 1, 1, 1}}}, 3));
    EXPECT_EQ(keysOf(*list), Words{"0"});
    EXPECT_EQ(heights(*list, 0), (Numbers{0, 0, 2, 0, 0, 0}));
    EXPECT_EQ(numbers.number("missing"), 2.0);
    EXPECT_EQ(numbers.printed(), "2 rows have no key (NaN or an empty text) and are in no histogram\n");
}

TEST(GroupedHistogramKind, binnedKeysIncludeWhatIsOutsideOfTheirEdges) {
    SmallTable table = tableOf({{"pt", {5, -1, 10, 19.5, 20, nan, infinity}}, {"x", {0, 0, 1, 1, 2, 3, 3}}}, 3);
    table.schema = Schema({{.name = "pt", .unit = "GeV"}, {.name = "x"}});
    Bench bench("pt");
    bench.set("keyedges", "0, 10 20");
    const ListPtr list = listOf(bench, table);
    EXPECT_EQ(keysOf(*list), (Words{"below 0", "0 to 10", "10 to 20", "from 20"}));
    EXPECT_EQ(labelsOf(*list), (Words{"pt < 0 GeV", "0 ≤ pt < 10 GeV", "10 ≤ pt < 20 GeV", "pt ≥ 20 GeV"}));
    EXPECT_EQ(heights(*list, 2), (Numbers{0, 0, 2, 0, 0, 0}));
    EXPECT_EQ(heights(*list, 3), (Numbers{0, 0, 0, 1, 1, 0}));
    EXPECT_EQ(list->groups()[1].histogram->name, "Energy_0_to_10");
    EXPECT_EQ(bench.number("missing"), 1.0);
}

TEST(GroupedHistogramKind, aKeyMayBeATruthValueOrAnExpression) {
    Bench bench("run > 2");
    EXPECT_EQ(keysOf(*listOf(bench, tableOf({{"run", {3, 1}}, {"x", {1, 1}}}, 2))), (Words{"false", "true"}));
    Bench halves("run / 2");
    EXPECT_EQ(keysOf(*listOf(halves, tableOf({{"run", {3, 1, 2}}, {"x", {1, 1, 1}}}, 2))), (Words{"0.5", "1", "1.5"}));
}

TEST(GroupedHistogramKind, eachHistogramIsTheOneOfItsRowsAlone) {
    std::mt19937_64 random(3);
    std::normal_distribution<double> gauss(2.0, 1.0);
    Numbers keys;
    Numbers values;
    Numbers weights;
    std::map<double, std::pair<Numbers, Numbers>> byKey;
    for (int row = 0; row < 5000; ++row) {
        keys.push_back(static_cast<double>(random() % 7));
        values.push_back(gauss(random));
        weights.push_back(gauss(random));
        byKey[keys.back()].first.push_back(values.back());
        byKey[keys.back()].second.push_back(weights.back());
    }
    Bench bench("run");
    bench.set("weight", "w");
    const ListPtr list = listOf(bench, tableOf({{"run", keys}, {"x", values}, {"w", weights}}, 333));
    ASSERT_EQ(list->groups().size(), byKey.size());
    std::size_t group = 0;
    for (const auto& [key, fills] : byKey) {
        Histogram1D expected(Axis(4, 0, 4));
        expected.fill(fills.first.data(), fills.second.data(), fills.first.size());
        Histogram1D found = *list->groups()[group++].histogram;
        found.name.clear();
        found.title.clear();
        found.setAxisTitle("");
        EXPECT_EQ(bytesOf(found), bytesOf(expected)) << key;
    }
}

TEST(GroupedHistogramKind, tooManyValuesOrCellsAreRefused) {
    Numbers keys(1001);
    for (std::size_t i = 0; i < keys.size(); ++i) {
        keys[i] = static_cast<double>(i);
    }
    const SmallTable apart = tableOf({{"run", keys}, {"x", keys}}, 600);
    const std::string sentence =
        "key: it has more than 1000 different values, and each would get a histogram; bin the key with keyedges, fill "
        "a Histogram2D, or use GroupBy";
    EXPECT_EQ(Bench("run").wire("table", apart).failure(), sentence);
    EXPECT_EQ(Bench("run").wire("table", tableOf({{"run", keys}, {"x", keys}}, 2000)).failure(), sentence);
    keys.pop_back();
    Bench most("run");
    EXPECT_EQ(listOf(most, tableOf({{"run", keys}, {"x", keys}}, 600))->groups().size(), 1000U);
    Bench wide("run");
    wide.set("bins", "1000000").wire("table", tableOf({{"run", {1, 2, 3, 4}}, {"x", {1, 1, 1, 1}}}, 2));
    EXPECT_EQ(wide.failure(),
              "bins: 4 histograms of 1000000 bins have more than 4000000 cells together; use fewer bins, or bin the "
              "key with keyedges");
}

TEST(GroupedHistogramKind, whatCannotBeAKeyIsRefused) {
    const SmallTable table = events();
    EXPECT_THAT(Bench("").wire("table", table).failure(), HasSubstr("key: the expression is empty"));
    EXPECT_EQ(Bench("x").wire("table", table).failure(),
              "key: \"x\" is a list in each row; use Explode before, or first(x)");
    EXPECT_EQ(Bench("k").set("keyedges", "0 1").wire("table", table).failure(),
              "keyedges: the key \"k\" is a text, which has no bins");
    EXPECT_THAT(Bench("n").set("keyedges", "1 0").wire("table", table).failure(), HasSubstr("must ascend"));
    EXPECT_THAT(Bench("z").wire("table", table).failure(), HasSubstr("key: "));
    const Kind& kind = test::shippedKind("GroupedHistogram");
    EXPECT_NE(kind.refusal("key", "run +"), "");
    EXPECT_NE(kind.refusal("keyedges", "2 1"), "");
    EXPECT_EQ(kind.refusal("keyedges", ""), "");
}

TEST(GroupedHistogramKind, warnsWhenNothingIsFilled) {
    Bench none("run");
    none.expectWarnings();
    EXPECT_TRUE(listOf(none, tableOf({{"run", {}}, {"x", {}}}, 2))->groups().empty());
    EXPECT_THAT(none.warnings(), ElementsAre(HasSubstr("there is no histogram, because no row has a key")));
    Bench outside("run");
    outside.expectWarnings();
    listOf(outside, tableOf({{"run", {1, 2}}, {"x", {-5, 50}}}, 2));
    EXPECT_THAT(outside.warnings(), ElementsAre(HasSubstr("no histogram has entries in its range")));
}

}  // namespace
