#include "KindHarness.h"

#include <velmorak/Aida.h>
#include <velmorak/Histogram.h>

#include <gmock/gmock.h>

#include <cmath>

namespace {

using namespace velmorak;
using test::KindHarness;
using test::SmallTable;
using testing::HasSubstr;

using Labels = std::vector<std::string>;
using Numbers = std::vector<double>;

/// A table with one column of the given type, and weights.
SmallTable tableWith(ColumnType type, const std::vector<Column>& parts, const std::vector<Numbers>& weights) {
    SmallTable table;
    table.schema = Schema({{.name = "k", .type = type, .isList = false, .unit = ""}, {.name = "w"}});
    for (std::size_t i = 0; i < parts.size(); ++i) {
        Chunk chunk{.number = i, .firstRow = 0, .rows = weights[i].size(), .columns = {}};
        chunk.columns = {std::make_shared<const Column>(parts[i]),
                         std::make_shared<const Column>(Column{.values = weights[i], .offsets = {}})};
        table.chunks.push_back(chunk);
    }
    return table;
}

SmallTable particles() {
    return tableWith(ColumnType::Text,
                     {{.values = Column::Texts{"pion", "muon", "pion"}, .offsets = {}},
                      {.values = Column::Texts{"kaon", "muon", ""}, .offsets = {}}},
                     {{1, 2, 4}, {8, 16, 32}});
}

Numbers heights(const Histogram1D& histogram) {
    Numbers all;
    for (const BinSums& cell : histogram.cells()) {
        all.push_back(cell.w);
    }
    return all;
}

TEST(CategoryHistogramKind, hasABinForEachTextInAscendingOrder) {
    KindHarness bench("CategoryHistogram");
    bench.set("expression", "k").set("weight", "w").set("axis", "particle").wire("table", particles()).run();
    const HistogramPtr histogram = bench.histogram("histogram");
    EXPECT_EQ(histogram->axis().labels, (Labels{"", "kaon", "muon", "pion"}));
    EXPECT_EQ(heights(*histogram), (Numbers{0, 32, 8, 18, 5, 0}));
    EXPECT_EQ(histogram->bin(3).entries, 2);
    EXPECT_EQ(histogram->bin(3).ww, 17);
    EXPECT_EQ(histogram->bin(3).mean(0), 3);
    EXPECT_EQ(histogram->axis().title, "particle");
}

TEST(CategoryHistogramKind, canKeepTheOrderOfAppearance) {
    KindHarness bench("CategoryHistogram");
    bench.set("expression", "k").set("order", "appearance").wire("table", particles()).run();
    EXPECT_EQ(bench.histogram("histogram")->axis().labels, (Labels{"pion", "muon", "kaon", ""}));
    EXPECT_EQ(heights(*bench.histogram("histogram")), (Numbers{0, 2, 2, 1, 1, 0}));
}

TEST(CategoryHistogramKind, sortsIntegersByValue) {
    const SmallTable table = tableWith(
        ColumnType::Integer, {{.values = Column::Integers{10, -2, 9, 10}, .offsets = {}}}, {{1, 1, std::nan(""), 1}});
    KindHarness bench("CategoryHistogram");
    bench.set("expression", "k").set("weight", "w").wire("table", table).run();
    EXPECT_EQ(bench.histogram("histogram")->axis().labels, (Labels{"-2", "10"}));
    EXPECT_EQ(bench.histogram("histogram")->nanEntries(), 1);
}

TEST(CategoryHistogramKind, refusesRealNumbers) {
    KindHarness bench("CategoryHistogram");
    bench.set("expression", "w").wire("table", particles());
    EXPECT_EQ(bench.failure(),
              "expression: \"w\" gives real numbers, but categories are texts, integers or truth values; Histogram1D "
              "fills real numbers");
}

TEST(CategoryHistogramKind, ofATableWithoutRowsHasOneEmptyBin) {
    KindHarness bench("CategoryHistogram");
    bench.set("expression", "k").wire("table", tableWith(ColumnType::Text, {}, {})).expectWarnings().run();
    EXPECT_EQ(heights(*bench.histogram("histogram")), (Numbers{0, 0, 0}));
}

TEST(CategoryHistogramKind, isNotCombinedWithOtherCategories) {
    KindHarness texts("CategoryHistogram");
    texts.set("expression", "k").wire("table", particles()).run();
    auto other = std::make_shared<Histogram1D>(Axis(4, -0.5, 3.5));
    KindHarness bench("Combine");
    bench.wire("first", texts.value("histogram")).wire("second", DataObjectPtr(other));
    EXPECT_THAT(bench.failure(), HasSubstr("4 categories"));
}

TEST(CategoryHistogramKind, keepsItsLabelsInFiles) {
    KindHarness texts("CategoryHistogram");
    texts.set("expression", "k").wire("table", particles()).run();
    const auto file = texts.folder() / "k.aida";
    AidaFileWriter writer(file);
    writer.write(*texts.histogram("histogram"), "/");
    writer.close();
    const DataObjectPtr back = readAidaObject(file, "", ValueType::Histogram, texts);
    EXPECT_EQ(dynamic_cast<const Histogram1D&>(*back).axis(), texts.histogram("histogram")->axis());
    KindHarness print("Print");
    print.wire("object", texts.value("histogram")).run();
    EXPECT_THAT(print.printed(), HasSubstr("category"));
    EXPECT_THAT(print.printed(), HasSubstr("muon"));
}

}  // namespace
