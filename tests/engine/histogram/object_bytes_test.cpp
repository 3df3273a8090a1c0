#include "histogram/GridBytes.h"

#include <velmorak/CellVector.h>
#include <velmorak/FunctionObject.h>
#include <velmorak/Histogram.h>
#include <velmorak/HistogramList.h>
#include <velmorak/ObjectBytes.h>
#include <velmorak/Points.h>
#include <velmorak/Profile.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

namespace velmorak {
namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

template <typename Object>
DataObjectPtr named(Object object) {
    object.name = "a/b \"c\"";
    object.title = "caf\u00e9 [GeV]";
    object.options = "x=1, y";
    object.annotation = {{"key", "", true}, {"", std::string("with\0zero", 9), false}};
    return std::make_shared<const Object>(std::move(object));
}

FunctionObject line() {
    FunctionObject function;
    function.codelet = "codelet:line:verbatim:jel : 1 : a+b*x[0] : a,b : null";
    function.isNormalized = true;
    function.arguments = {{"x0", {{}, {-1.0, 0.1}}}, {"x1", {}}};
    function.parameters = {{"a", -0.0}, {"b", 0.1}, {"c", nan}};
    return function;
}

/// One of each class, filled so that nothing in it is as it was at the beginning.
std::vector<DataObjectPtr> oneOfEach() {
    const Axis x(std::vector<double>{0.0, 0.1, 10.0});
    const Axis y(3, -1.0, 1.0);
    Histogram1D one(x);
    one.setAxisTitle("m [GeV]");
    Histogram2D two(Grid<2>({x, y}));
    two.setAxisTitle(1, "angle [rad]");
    Histogram3D three(Grid<3>({x, y, x}));
    Profile1D profile(Grid<1>({x}));
    Profile2D wide(Grid<2>({y, x}));
    for (const double value : {-1.0, 0.05, 0.3, 99.0, nan}) {
        one.fill(value, 0.1);
        two.fill({value, 0.3 * value}, -2.5);
        three.fill({value, 0.1, value}, 1e-300);
        profile.fill({value}, 7.1, 0.3);
        wide.fill({0.5, value}, value);
    }
    Points points(2, {{1.5, 0.5, 0.1}, {12.25, nan, -0.0}});
    points.axisTitles = {"x [cm]", ""};
    const HistogramList list("run", {{"3", "run = 3", std::make_shared<Histogram1D>(one)},
                                     {"", "", std::make_shared<Histogram1D>(Grid<1>({x}))}});
    return {named(one),  named(two),    named(three),  named(profile),
            named(wide), named(points), named(line()), named(list)};
}

TEST(ObjectBytes, everyClassComesBackToTheLastBit) {
    for (const DataObjectPtr& object : oneOfEach()) {
        const std::string bytes = bytesOf(*object);
        const DataObjectPtr back = objectFrom(bytes);
        const DataObject& whole = *object;
        const DataObject& read = *back;
        EXPECT_EQ(typeid(read), typeid(whole));
        EXPECT_EQ(bytesOf(read), bytes) << typeid(whole).name();
        EXPECT_EQ(back->name, object->name);
        EXPECT_EQ(back->title, object->title);
        EXPECT_EQ(back->options, object->options);
        EXPECT_EQ(back->annotation, object->annotation);
    }
}

TEST(ObjectBytes, aFunctionKeepsAllThatItSays) {
    const DataObjectPtr kept = objectFrom(bytesOf(*named(line())));
    const auto& back = dynamic_cast<const FunctionObject&>(*kept);
    EXPECT_EQ(back.codelet, line().codelet);
    EXPECT_TRUE(back.isNormalized);
    EXPECT_EQ(back.arguments, line().arguments);
    ASSERT_EQ(back.parameters.size(), 3U);
    EXPECT_EQ(back.parameters[1], line().parameters[1]);
    EXPECT_TRUE(std::signbit(back.parameters[0].value));
    EXPECT_TRUE(std::isnan(back.parameters[2].value));
}

TEST(ObjectBytes, areDamagedByAnyChange) {
    for (const DataObjectPtr& object : oneOfEach()) {
        const std::string bytes = bytesOf(*object);
        for (std::size_t place = 0; place < bytes.size(); place += 7) {
            std::string damaged = bytes;
            damaged[place] = static_cast<char>(damaged[place] ^ 0x10);
            EXPECT_THROW(objectFrom(damaged), std::invalid_argument) << place;
            EXPECT_THROW(objectFrom(bytes.substr(0, place)), std::invalid_argument) << place;
        }
        EXPECT_THROW(objectFrom(bytes + "x"), std::invalid_argument);
    }
}

struct Unknown : DataObject {
    ValueType type() const override { return ValueType::Any; }
};

TEST(ObjectBytes, areNotMadeOfAnObjectThatNobodyKnows) {
    EXPECT_THROW(bytesOf(Unknown()), std::invalid_argument);
}

TEST(ObjectBytes, comeInPiecesOfWhichTheNumberIsKnownBefore) {
    std::vector<DataObjectPtr> objects = oneOfEach();
    Histogram2D large(Grid<2>({Axis(300, 0.0, 1.0), Axis(200, 0.0, 1.0)}));
    for (int i = 0; i < 60'000; ++i) {
        large.fill({i % 300 / 300.0, i / 300 / 200.0}, 3.0);
    }
    objects.push_back(named(large));
    for (const DataObjectPtr& object : objects) {
        const std::string bytes = bytesOf(*object);
        std::string pieces;
        std::size_t longest = 0;
        bytesOf(*object, [&](std::string_view piece) {
            pieces += piece;
            longest = std::max(longest, piece.size());
        });
        EXPECT_TRUE(pieces == bytes) << object->name;
        EXPECT_EQ(countBytesOf(*object), bytes.size());
        EXPECT_LE(longest, std::size_t{1} << 16U);
    }
    EXPECT_THROW(countBytesOf(Unknown()), std::invalid_argument);
}

TEST(ObjectBytes, ofManyEmptyCellsAreFew) {
    Histogram2D large(Grid<2>({Axis(3000, 0.0, 1.0), Axis(2000, 0.0, 1.0)}));
    ASSERT_TRUE(large.cells().isSparse());
    for (const double x : {-1.0, 0.25, 0.2501, 0.9, 2.0}) {
        large.fill({x, x}, 3.0);
    }
    const std::string bytes = large.toBytes();
    const std::size_t ofTheAxes = 5000 * sizeof(double);
    EXPECT_LE(bytes.size(), ofTheAxes + 1000);
    EXPECT_EQ(Histogram2D::fromBytes(bytes).cells(), large.cells());
}

/// Bytes of runs of empty and of filled cells, each of eight bytes.
std::string runs(const std::vector<std::array<std::uint64_t, 2>>& emptyAndFilled) {
    ByteWriter writer;
    writer.number<std::uint64_t>(0);
    for (const auto& [empty, filled] : emptyAndFilled) {
        writer.number(empty);
        writer.number(filled);
        for (std::uint64_t cell = 0; cell < std::min<std::uint64_t>(filled, 10); ++cell) {
            writer.number(1.0);
        }
    }
    return writer.sealed();
}

TEST(ObjectBytes, areRefusedIfTheyHaveOtherCellsThanTheirGrid) {
    struct Cell {
        double w = 0.0;
    };
    const auto read = [](const std::string& bytes) {
        ByteReader reader(bytes, 0);
        const auto cells = readCells<CellVector<Cell>>(reader, 10, sizeof(Cell));
        reader.mustBeAtEnd();
        return cells;
    };
    EXPECT_EQ(read(runs({{3, 2}, {4, 1}}))[9].w, 1.0);
    EXPECT_EQ(read(runs({{10, 0}}))[9].w, 0.0);
    constexpr std::uint64_t most = std::numeric_limits<std::uint64_t>::max();
    for (const std::vector<std::array<std::uint64_t, 2>>& wrong :
         std::vector<std::vector<std::array<std::uint64_t, 2>>>{
             {{3, 2}, {4, 2}}, {{3, 2}, {4, 0}}, {{0, 0}, {10, 0}}, {{11, 0}}, {{most, 11}}, {{1, most}}, {}}) {
        EXPECT_THROW(read(runs(wrong)), std::invalid_argument) << wrong.size();
    }
}

}  // namespace
}  // namespace velmorak
