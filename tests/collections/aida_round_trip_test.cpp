#include "KindHarness.h"

#include <gtest/gtest.h>

#include <velmorak/Aida.h>
#include <velmorak/FunctionObject.h>
#include <velmorak/Histogram.h>
#include <velmorak/Points.h>
#include <velmorak/Profile.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

namespace {

using namespace velmorak;
using test::KindHarness;
using test::SmallTable;

namespace fs = std::filesystem;

/// Numbers that need all of their digits, the same in every run.
class Numbers {
public:
    double operator()() {
        state = state * 6364136223846793005U + 1442695040888963407U;
        return static_cast<double>(state >> 11U) * 0x1p-53 * 5.0 - 1.0;
    }

private:
    std::uint64_t state = 42;
};

void name(DataObject& object) {
    object.name = "object";
    object.title = "A <title> & \"more\" µ";
    object.annotation = {{.key = "Comment", .value = "one\ttwo", .isSticky = false}};
}

/// Writes the object by itself and reads it again.
template <typename Class>
std::shared_ptr<const Class> again(const std::shared_ptr<Class>& object) {
    KindHarness bench("AidaWriter", "out");
    bench.set("folder", "/run 1").wire("object", DataObjectPtr(object)).run();
    const DataObjectPtr read = readAidaObject(bench.folder() / "out.aida", "/run 1/object", object->type(), bench);
    return std::dynamic_pointer_cast<const Class>(read);
}

template <typename Object>
void expectSameHead(const Object& one, const Object& other) {
    EXPECT_EQ(one.name, other.name);
    EXPECT_EQ(one.title, other.title);
}

template <std::size_t dimensions, typename Class, typename Fill>
void expectSameGrid(Numbers& numbers, const Fill& fill) {
    const Axis equal(3, 0.1, 2.9);
    const Axis edges(std::vector<double>{-1, 0.3, 1.0 / 3.0, 2});
    std::shared_ptr<Class> object;
    if constexpr (dimensions == 3) {
        object = std::make_shared<Class>(Grid<3>({equal, edges, Axis(2, 0, 1)}));
    } else {
        object = std::make_shared<Class>(Grid<2>({equal, edges}));
    }
    name(*object);
    object->setAxisTitle(0, "x [cm]");
    for (int i = 0; i < 300; ++i) {
        fill(*object, numbers);
    }
    const auto read = again(object);
    ASSERT_TRUE(read);
    expectSameHead(*read, *object);
    EXPECT_EQ(read->grid(), object->grid());
    EXPECT_EQ(read->grid().axis(0).title, "x [cm]");
    EXPECT_TRUE(read->cells() == object->cells());
}

TEST(AidaRoundTrip, histogramsOfTwoAndThreeDimensions) {
    Numbers numbers;
    expectSameGrid<2, Histogram2D>(numbers, [](Histogram2D& h, Numbers& n) { h.fill({n(), n()}, n()); });
    expectSameGrid<3, Histogram3D>(numbers, [](Histogram3D& h, Numbers& n) { h.fill({n(), n(), n()}, n()); });
}

TEST(AidaRoundTrip, histogramsOfOneDimension) {
    Numbers numbers;
    auto histogram = std::make_shared<Histogram1D>(Axis(7, 0.1, 3.1));
    name(*histogram);
    for (int i = 0; i < 300; ++i) {
        histogram->fill(numbers(), numbers());
    }
    const auto read = again(histogram);
    ASSERT_TRUE(read);
    expectSameHead(*read, *histogram);
    EXPECT_EQ(read->axis(), histogram->axis());
    EXPECT_EQ(read->cells(), histogram->cells());
}

TEST(AidaRoundTrip, profiles) {
    Numbers numbers;
    auto profile = std::make_shared<Profile1D>(Grid<1>({Axis(5, 0, 3)}));
    name(*profile);
    for (int i = 0; i < 300; ++i) {
        profile->fill({numbers()}, numbers(), numbers() + 1.5);
    }
    const auto read = again(profile);
    ASSERT_TRUE(read);
    expectSameHead(*read, *profile);
    for (std::size_t cell = 0; cell < profile->cells().size(); ++cell) {
        EXPECT_EQ(std::bit_cast<std::uint64_t>(read->height(cell)),
                  std::bit_cast<std::uint64_t>(profile->height(cell)));
        EXPECT_EQ(std::bit_cast<std::uint64_t>(read->rms(cell)), std::bit_cast<std::uint64_t>(profile->rms(cell)));
        EXPECT_EQ(read->cells()[cell].entries, profile->cells()[cell].entries);
    }
    expectSameGrid<2, Profile2D>(numbers, [](Profile2D& p, Numbers& n) { p.fill({n(), n()}, n()); });
}

TEST(AidaRoundTrip, points) {
    Numbers numbers;
    for (const std::size_t dimension : {1U, 2U, 3U, 5U}) {
        std::vector<Measurement> all(4 * dimension);
        for (Measurement& measured : all) {
            measured = {.value = numbers(), .errorPlus = numbers(), .errorMinus = numbers()};
        }
        all.front() = {.value = -0.0, .errorPlus = std::numeric_limits<double>::infinity(), .errorMinus = 5e-324};
        auto points = std::make_shared<Points>(dimension, all);
        name(*points);
        const auto read = again(points);
        ASSERT_TRUE(read);
        expectSameHead(*read, *points);
        EXPECT_EQ(read->dimension(), dimension);
        EXPECT_EQ(read->all(), all);
        EXPECT_TRUE(std::signbit(read->all().front().value));
    }
}

TEST(AidaRoundTrip, functions) {
    auto function = std::make_shared<FunctionObject>();
    name(*function);
    function->codelet = "codelet:object:verbatim:jel : 1 : a*exp(-x[0]/b) : a,b : null";
    function->isNormalized = true;
    function->arguments = {{.name = "x", .ranges = {{.low = 0.1, .high = 1.0 / 3.0}, {.low = 2, .high = 3}}}};
    function->parameters = {{.name = "a", .value = 1.0 / 3.0}, {.name = "b", .value = -0.0}};
    const auto read = again(function);
    ASSERT_TRUE(read);
    expectSameHead(*read, *function);
    EXPECT_EQ(read->codelet, function->codelet);
    EXPECT_EQ(read->isNormalized, function->isNormalized);
    EXPECT_EQ(read->arguments, function->arguments);
    EXPECT_EQ(read->parameters, function->parameters);
    EXPECT_TRUE(std::signbit(read->parameters[1].value));
}

TEST(AidaRoundTrip, tablesWithColumnsOfEveryType) {
    const auto column = [](decltype(Column::values) values, std::vector<std::uint64_t> offsets) {
        return std::make_shared<const Column>(Column{.values = std::move(values), .offsets = std::move(offsets)});
    };
    SmallTable table;
    table.schema = Schema({{.name = "real"},
                           {.name = "whole", .type = ColumnType::Integer},
                           {.name = "flag", .type = ColumnType::Boolean},
                           {.name = "text", .type = ColumnType::Text},
                           {.name = "list", .type = ColumnType::Real, .isList = true}});
    const Column::Reals reals = {1.0 / 3.0, -0.0, 5e-324};
    const Column::Integers integers = {std::numeric_limits<std::int64_t>::min(), 0,
                                       std::numeric_limits<std::int64_t>::max()};
    const Column::Texts texts = {"a <b> & \"c\"", "", " blanks "};
    const Column::Reals values = {0.1, 0.2, 0.3};
    table.chunks.push_back({.number = 0,
                            .firstRow = 0,
                            .rows = 3,
                            .columns = {column(reals, {}), column(integers, {}), column(Column::Booleans{1, 0, 1}, {}),
                                        column(texts, {}), column(values, {0, 2, 2, 3})}});
    KindHarness writer("AidaWriter", "out");
    writer.wire("object", table).run();
    KindHarness reader("AidaTable");
    reader.set("file", (writer.folder() / "out.aida").string()).run();
    const SmallTable& read = reader.table();
    ASSERT_EQ(read.schema.size(), 5U);
    const Chunk& chunk = read.chunks.at(0);
    EXPECT_EQ(chunk.columns[0]->reals(), reals);
    EXPECT_TRUE(std::signbit(chunk.columns[0]->reals()[1]));
    EXPECT_EQ(chunk.columns[1]->integers(), integers);
    EXPECT_EQ(chunk.columns[2]->booleans(), (Column::Booleans{1, 0, 1}));
    EXPECT_EQ(chunk.columns[3]->texts(), texts);
    EXPECT_EQ(chunk.columns[4]->reals(), values);
    EXPECT_EQ(chunk.columns[4]->offsets, (std::vector<std::uint64_t>{0, 2, 2, 3}));
}

}  // namespace
