#include "KindHarness.h"

#include <velmorak/ElementaryFunctions.h>
#include <velmorak/FileFormat.h>
#include <velmorak/ShortKinds.h>

#include <gmock/gmock.h>

#include <array>
#include <cmath>
#include <fstream>
#include <limits>
#include <memory>
#include <optional>
#include <random>
#include <span>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace {

using namespace velmorak;
using test::KindHarness;
using test::SmallTable;
using testing::ElementsAre;
using testing::HasSubstr;

class OneKind : public Registry {
public:
    void group(const std::string& /*name*/) override {}
    void add(std::unique_ptr<Kind> kind) override { registered = std::move(kind); }
    void addFormat(std::unique_ptr<FileFormat> /*format*/) override {}
    const FileFormats& formats() const override { return none; }
    const Kind& kind() const { return *registered; }

private:
    std::unique_ptr<Kind> registered;
    FileFormats none;
};

void registerPolar(Registry& registry) {
    rowWise(registry, {"Polar", "Adds radius and angle of two columns."},
            {{"x", "First column."}, {"y", "Second column."}}, {{"r"}, {"phi", "rad"}}, [](double x, double y) {
                return std::array{elementary::hypot(x, y), elementary::atan2(y, x)};
            });
}

SmallTable randomTable(std::size_t rows, std::size_t chunkLength) {
    std::mt19937_64 random(1);
    std::normal_distribution<double> gauss;
    std::vector<double> x;
    std::vector<double> y;
    for (std::size_t row = 0; row < rows; ++row) {
        x.push_back(gauss(random));
        y.push_back(row % 11 == 0 ? std::numeric_limits<double>::quiet_NaN() : gauss(random));
    }
    return test::tableOf({{"x", x}, {"y", y}}, chunkLength);
}

/// Count, mean and largest of a column above a threshold.
struct Above {
    explicit Above(double threshold = 0.0) : threshold(threshold) {}

    void fill(double x) {
        if (x > threshold) {
            ++count;
            sum += x;
            largest = std::max(largest, x);
        }
    }
    void merge(const Above& other) {
        count += other.count;
        sum += other.sum;
        largest = std::max(largest, other.largest);
    }
    std::tuple<std::int64_t, double, double> finish() const {
        return {count, sum / static_cast<double>(count), largest};
    }
    auto fields() { return std::tie(count, sum, largest); }

    double threshold;
    std::int64_t count = 0;
    double sum = 0.0;
    double largest = -std::numeric_limits<double>::infinity();
};

void registerAbove(Registry& registry) {
    accumulate(registry, {"Above", "Counts values above a threshold."},
               {{"x", "What to count."}, {"threshold", "Smallest value, in the unit of x.", "0.5"}},
               {{"count", "Number of values."}, {"mean", "Their mean."}, {"largest", "The largest."}},
               [](double threshold) { return Above(threshold); });
}

TEST(ShortRowWise, addsTheColumnsThatItsFunctionReturns) {
    OneKind polar;
    registerPolar(polar);
    KindHarness bench(polar.kind());
    bench.wire("table", test::tableOf({{"x", {3, 0}}, {"y", {4, 2}}}, 1)).run();
    EXPECT_THAT(bench.table().column("r"), ElementsAre(5.0, 2.0));
    EXPECT_THAT(bench.table().column("phi"), ElementsAre(elementary::atan2(4.0, 3.0), elementary::atan2(2.0, 0.0)));
    EXPECT_EQ(bench.table().schema[3].unit, "rad");
    EXPECT_EQ(bench.ports().inputs[1].value, "x");
}

TEST(ShortRowWise, takesExpressionsAndRefusesThemWhenTheyAreSet) {
    OneKind polar;
    registerPolar(polar);
    EXPECT_THAT(polar.kind().refusal("x", "x +"), HasSubstr("^"));
    EXPECT_EQ(polar.kind().refusal("x", "2 * x"), "");
    KindHarness bench(polar.kind());
    bench.set("x", "3 * x").set("y", "4 * x").wire("table", test::tableOf({{"x", {1, 2}}}, 2)).run();
    EXPECT_THAT(bench.table().column("r"), ElementsAre(5.0, 10.0));
}

TEST(ShortRowWise, doesNotReplaceAColumn) {
    OneKind polar;
    registerPolar(polar);
    KindHarness bench(polar.kind());
    bench.set("y", "x").wire("table", test::tableOf({{"x", {1}}, {"phi", {1}}}, 1));
    EXPECT_THAT(bench.failure(), HasSubstr("already has a column \"phi\""));
}

TEST(ShortRowWise, dropsRowsWithoutAResult) {
    OneKind inverse;
    rowWise(inverse, {"Inverse", "Divides."}, {{"x", "Divisor."}, {"by", "Dividend.", "1"}}, {{"inverse"}},
            [](double x, Constant<double> by) -> std::optional<double> {
                return x == 0.0 ? std::nullopt : std::optional(by / x);
            });
    KindHarness bench(inverse.kind());
    bench.set("by", "8").wire("table", test::tableOf({{"x", {1, 0, 2, 0, 4}}}, 2)).run();
    EXPECT_THAT(bench.table().column("inverse"), ElementsAre(8.0, 4.0, 2.0));
    EXPECT_THAT(bench.table().column("x"), ElementsAre(1.0, 2.0, 4.0));
}

TEST(ShortRowWise, takesAndReturnsTextsIntegersBooleansAndLists) {
    OneKind mixed;
    rowWise(mixed, {"Mixed", "Mixes."},
            {{"t", "Text."}, {"n", "Integer."}, {"b", "Truth value."}, {"l", "List."}, {"suffix", "Appended.", "!"}},
            {{"text"}, {"integer"}, {"boolean"}, {"list"}},
            [](std::string_view t, std::int64_t n, bool b, std::span<const double> l, Constant<std::string> suffix) {
                return std::tuple(std::string(t) + suffix.value(), n + 1, !b,
                                  std::vector<double>(l.rbegin(), l.rend()));
            });
    SmallTable table;
    table.schema = Schema({{"t", ColumnType::Text},
                           {"n", ColumnType::Integer},
                           {"b", ColumnType::Boolean},
                           {.name = "l", .type = ColumnType::Real, .isList = true}});
    Chunk chunk;
    chunk.rows = 2;
    chunk.columns = {columnOf(std::vector<std::string>{"a", "b"}), columnOf(std::vector<int>{1, 2}),
                     columnOf(std::vector<bool>{true, false}),
                     std::make_shared<Column>(Column{Column::Reals{1, 2, 3}, {0, 2, 3}})};
    table.chunks = {chunk};
    KindHarness bench(mixed.kind());
    bench.wire("table", table).run();
    const Chunk& made = bench.table().chunks[0];
    EXPECT_THAT(made.columns[4]->texts(), ElementsAre("a!", "b!"));
    EXPECT_THAT(made.columns[5]->integers(), ElementsAre(2, 3));
    EXPECT_THAT(made.columns[6]->booleans(), ElementsAre(0, 1));
    EXPECT_THAT(made.columns[7]->reals(), ElementsAre(2, 1, 3));
    EXPECT_THAT(made.columns[7]->offsets, ElementsAre(0, 2, 3));
}

TEST(ShortRowWise, refusesAnExpressionOfAnotherType) {
    OneKind polar;
    registerPolar(polar);
    KindHarness bench(polar.kind());
    SmallTable table;
    table.schema = Schema({{"x", ColumnType::Text}, {.name = "y", .type = ColumnType::Real, .isList = true}});
    bench.set("y", "1").wire("table", table);
    EXPECT_EQ(bench.failure(), "x: expected real values, but the expression is text");
    bench.set("x", "y");
    EXPECT_EQ(bench.failure(), "x: expected one value in each row, not a list");
    bench.set("x", "");
    EXPECT_EQ(bench.failure(), "x: the expression is empty");
}

TEST(ShortAccumulator, fillsMergesAndFinishes) {
    OneKind above;
    registerAbove(above);
    KindHarness bench(above.kind());
    bench.wire("table", test::tableOf({{"x", {0.1, 1, 2, 3, 0.5}}}, 2)).run();
    EXPECT_EQ(bench.number("count"), 3.0);
    EXPECT_EQ(bench.number("mean"), 2.0);
    EXPECT_EQ(bench.number("largest"), 3.0);
    bench.set("threshold", "2.5").run();
    EXPECT_EQ(bench.number("count"), 1.0);
}

TEST(ShortAccumulator, goesOnAfterItsStateWasSavedAndLoaded) {
    OneKind above;
    registerAbove(above);
    const SmallTable table = randomTable(100, 10);
    KindHarness whole(above.kind());
    whole.wire("table", table).run();
    KindHarness resumed(above.kind());
    resumed.wire("table", table);
    const auto accumulation = resumed.accumulation();
    std::unique_ptr<AccumulatorState> state = accumulation->newState();
    for (const Chunk& chunk : table.chunks) {
        std::unique_ptr<AccumulatorState> next = accumulation->newState();
        next->fill(chunk);
        state->merge(*next);
        const std::string bytes = savedState(*state, "Above");
        state = accumulation->newState();
        loadState(*state, bytes, "Above");
    }
    resumed.finish(*accumulation, *state);
    EXPECT_EQ(resumed.number("mean"), whole.number("mean"));
    EXPECT_EQ(resumed.number("count"), whole.number("count"));
    EXPECT_EQ(resumed.number("largest"), whole.number("largest"));
}

TEST(ShortAccumulator, refusesADamagedState) {
    OneKind above;
    registerAbove(above);
    KindHarness bench(above.kind());
    bench.wire("table", randomTable(10, 10));
    const auto accumulation = bench.accumulation();
    const std::string bytes = savedState(*accumulation->newState(), "Above");
    EXPECT_THROW(loadState(*accumulation->newState(), bytes.substr(0, bytes.size() - 9), "Above"), Failure);
}

/// Without fields, save and load.
struct Rows {
    void fill(double /*x*/) { ++count; }
    void merge(const Rows& other) { count += other.count; }
    int finish() const { return count; }
    int count = 0;
};

TEST(ShortAccumulator, withoutFieldsCannotBeSaved) {
    OneKind rows;
    accumulate<Rows>(rows, {"Rows", "Counts rows."}, {{"x", "Anything."}}, {{"count", "Number of rows."}});
    KindHarness bench(rows.kind());
    bench.wire("table", randomTable(10, 3)).run();
    EXPECT_EQ(bench.number("count"), 10.0);
    EXPECT_THROW(savedState(*bench.accumulation()->newState(), "Rows"), Failure);
}

TEST(ShortFunction, computesValuesFromNumbersTextsAndObjects) {
    OneKind peak;
    fromValues(
        peak, {"Peak", "Finds the highest bin."},
        {{"histogram", "Where to look."}, {"scale", "Factor.", "2"}, {"label", "Text."}, {"other", "Not needed."}},
        {{"position", "Centre of the bin."}, {"text", "The label."}},
        [](const Histogram1D& histogram, NumberWithError scale, const std::string& label, const Histogram1D* other) {
            return std::pair(histogram.axis().low() * scale.value(), label + (other ? "+" : "-"));
        });
    EXPECT_TRUE(peak.kind().ports({}).inputs[3].isOptional);
    KindHarness bench(peak.kind());
    EXPECT_EQ(bench.failure(), "histogram: nothing is wired");
    bench.wire("histogram", DataObjectPtr(std::make_shared<Histogram1D>(Grid<1>({Axis(2, 3.0, 5.0)}))))
        .set("label", "a");
    bench.run();
    EXPECT_EQ(bench.number("position"), 6.0);
    EXPECT_EQ(bench.text("text"), "a-");
}

TEST(ShortFunction, givesObjects) {
    OneKind empty;
    fromValues(empty, {"Empty", "Makes a histogram."}, {{"bins", "Number of bins.", "5", 1, 100}},
               {{"histogram", "Without entries."}},
               [](int bins) { return Histogram1D(Grid<1>({Axis(static_cast<std::size_t>(bins), 0.0, 1.0)})); });
    EXPECT_TRUE(empty.kind().ports({}).inputs[0].isInteger);
    EXPECT_EQ(empty.kind().ports({}).outputs[0].type, ValueType::Histogram);
    KindHarness bench(empty.kind());
    bench.run();
    EXPECT_EQ(bench.histogram("histogram")->axis().bins(), 5U);
}

TEST(ShortSource, computesRowsFromTheirNumbers) {
    OneKind squares;
    rowSource(squares, {"Squares", "Square numbers."}, {{"factor", "Factor.", "3"}}, {{"n"}, {"square", "cm2"}},
              [](std::uint64_t row, double factor) {
                  return std::pair(static_cast<std::int64_t>(row), factor * static_cast<double>(row * row));
              });
    KindHarness bench(squares.kind());
    bench.set("rows", "4").run();
    EXPECT_THAT(bench.table().column("square"), ElementsAre(0.0, 3.0, 12.0, 27.0));
    bench.set("rows", "100000").run();
    EXPECT_EQ(bench.table().column("square").size(), 100000U);
    EXPECT_EQ(bench.table().column("square").back(), 3.0 * 99999.0 * 99999.0);
    bench.set("rows", "0").run();
    EXPECT_TRUE(bench.table().column("square").empty());
}

void registerWords(Registry& registry) {
    fileSource(registry, {"Words", "Reads one word and its number per row."}, {{"word"}, {"number"}},
               [](const std::filesystem::path& file) {
                   return [stream = std::make_shared<std::ifstream>(file)] {
                       std::optional<std::tuple<std::string, double>> row;
                       std::string word;
                       double number = 0.0;
                       if (*stream >> word) {
                           if (!(*stream >> number)) {
                               throw Failure("expected a number after \"" + word + "\"");
                           }
                           row.emplace(word, number);
                       }
                       return row;
                   };
               });
}

TEST(ShortSource, readsAFileRowByRow) {
    OneKind words;
    registerWords(words);
    const TemporaryFolder folder("short");
    const auto file = folder.path() / "words.txt";
    std::ofstream(file) << "one 1 two 2\nthree 3";
    KindHarness bench(words.kind());
    bench.set("file", file.string()).run();
    EXPECT_THAT(bench.table().column("number"), ElementsAre(1.0, 2.0, 3.0));
    EXPECT_THAT(bench.table().chunks[0].columns[0]->texts(), ElementsAre("one", "two", "three"));
}

TEST(ShortSource, namesTheFileAndTheRowOfAFailure) {
    OneKind words;
    registerWords(words);
    const TemporaryFolder folder("short");
    const auto file = folder.path() / "words.txt";
    std::ofstream(file) << "one 1 two";
    KindHarness bench(words.kind());
    bench.set("file", file.string());
    EXPECT_EQ(bench.failure(), ": \"" + file.string() + "\", row 1: expected a number after \"two\"");
    bench.set("file", (folder.path() / "missing").string());
    EXPECT_THAT(bench.failure(), HasSubstr("is not a file that can be read"));
}

TEST(ResultsOfAKind, areSetFromAnyNumber) {
    struct Kept : Results {
        using Results::set;
        void set(const std::string& /*output*/, Value given) override { value = std::move(given); }
        Value value;
    } kept;
    Results& results = kept;
    results.set("n", 5);
    EXPECT_EQ(std::get<double>(kept.value), 5.0);
    results.set("n", std::size_t{7});
    EXPECT_EQ(std::get<double>(kept.value), 7.0);
    results.set("n", 1.5F);
    EXPECT_EQ(std::get<double>(kept.value), 1.5);
    results.set("t", "text");
    EXPECT_EQ(std::get<std::string>(kept.value), "text");
}

TEST(ColumnOf, takesAnyNumbersTruthValuesAndTexts) {
    EXPECT_THAT(columnOf(std::vector<float>{1.5F})->reals(), ElementsAre(1.5));
    EXPECT_THAT(columnOf(std::vector<short>{-3})->integers(), ElementsAre(-3));
    EXPECT_THAT(columnOf(std::vector<bool>{true, false})->booleans(), ElementsAre(1, 0));
    EXPECT_THAT(columnOf(std::vector<std::string>{"a"})->texts(), ElementsAre("a"));
}

}  // namespace
