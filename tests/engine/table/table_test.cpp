#include <velmorak/Table.h>

#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>

namespace velmorak {
namespace {

ColumnPtr lists() {
    return std::make_shared<Column>(Column{Column::Integers{1, 2, 3, 4, 5, 6}, {0, 2, 2, 5, 6}});
}

TEST(Schema, findsAColumnByName) {
    const Schema schema({{"energy", ColumnType::Real, false, "GeV"}, {"tag", ColumnType::Text, false, ""}});
    EXPECT_EQ(schema.find("tag"), 1U);
    EXPECT_FALSE(schema.find("Tag"));
}

TEST(Schema, refusesTwoColumnsOfOneName) {
    EXPECT_THROW(Schema({{"a"}, {"b"}, {"a"}}), std::invalid_argument);
    Schema schema({{"a"}});
    EXPECT_THROW(schema.add({"a"}), std::invalid_argument);
    EXPECT_EQ(schema.size(), 1U);
}

TEST(Schema, isMadeOfVeryManyColumns) {
    std::vector<ColumnInfo> columns;
    for (std::size_t position = 0; position < 1'000'000; ++position) {
        columns.push_back({"c" + std::to_string(position)});
    }
    EXPECT_EQ(Schema(columns).find("c999999"), 999'999U);
    columns.push_back({"c777777"});
    EXPECT_THROW(Schema{columns}, std::invalid_argument);
}

TEST(KeepRows, keepsNumbersAtTheEdgesAllAndNone) {
    const Column numbers{Column::Reals{1, 2, 3, 4}, {}};
    EXPECT_EQ(keepRows(numbers, {1, 0, 0, 1})->reals(), (Column::Reals{1, 4}));
    EXPECT_EQ(keepRows(numbers, {0, 1, 1, 0})->reals(), (Column::Reals{2, 3}));
    EXPECT_EQ(keepRows(numbers, {1, 1, 1, 1})->reals(), (Column::Reals{1, 2, 3, 4}));
    EXPECT_EQ(keepRows(numbers, {0, 0, 0, 0})->reals(), Column::Reals{});
    EXPECT_EQ(keepRows(Column{Column::Integers{}, {}}, {})->integers(), Column::Integers{});
}

TEST(KeepRows, keepsThemInOrder) {
    const Column texts{Column::Texts{"a", "b", "c"}, {}};
    EXPECT_EQ(keepRows(texts, {1, 0, 7})->texts(), (Column::Texts{"a", "c"}));
}

TEST(KeepRows, movesTheListsOfAListColumnTogether) {
    const auto kept = keepRows(*lists(), {0, 1, 1, 0});
    EXPECT_EQ(kept->integers(), (Column::Integers{3, 4, 5}));
    EXPECT_EQ(kept->offsets, (std::vector<std::uint64_t>{0, 0, 3}));
}

TEST(KeepRows, leavesAListColumnAListWhenNoRowRemains) {
    const auto kept = keepRows(*lists(), {0, 0, 0, 0});
    EXPECT_TRUE(kept->isList());
    EXPECT_EQ(kept->valueCount(), 0U);
}

TEST(KeepRows, refusesAFilterOfAnotherLength) {
    EXPECT_THROW(keepRows(*lists(), {1, 1}), std::invalid_argument);
}

TEST(AsReals, convertsNumbersAndBooleans) {
    const auto booleans = std::make_shared<Column>(Column{Column::Booleans{1, 0}, {}});
    EXPECT_EQ(asReals(booleans)->reals(), (Column::Reals{1.0, 0.0}));
    const auto integers = asReals(lists());
    EXPECT_EQ(integers->reals(), (Column::Reals{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(integers->offsets, lists()->offsets);
}

TEST(AsReals, givesRealsBackThemselves) {
    const auto reals = std::make_shared<Column>(Column{Column::Reals{1.5}, {}});
    EXPECT_EQ(asReals(reals).get(), reals.get());
}

TEST(AsReals, makesATextNotANumber) {
    const auto texts = std::make_shared<Column>(Column{Column::Texts{"1"}, {}});
    EXPECT_TRUE(std::isnan(asReals(texts)->reals()[0]));
}

TEST(ColumnTypeName, isWhatTheUserSees) {
    EXPECT_EQ(nameOf(ColumnType::Real), "real");
    EXPECT_EQ(nameOf(ColumnType::Integer), "integer");
    EXPECT_EQ(nameOf(ColumnType::Boolean), "boolean");
    EXPECT_EQ(nameOf(ColumnType::Text), "text");
}

TEST(Schema, findsEachOfAMillionColumns) {
    constexpr std::size_t count = 1'000'000;
    Schema schema;
    for (std::size_t i = 0; i < count; ++i) {
        schema.add({.name = "c" + std::to_string(i)});
    }
    const Schema atOnce(schema.columns());
    EXPECT_TRUE(atOnce == schema);
    std::size_t found = 0;
    for (std::size_t i = 0; i < count; ++i) {
        found += schema.find(schema[i].name) == i && atOnce.find(schema[i].name) == i ? 1 : 0;
    }
    EXPECT_EQ(found, count);
    EXPECT_FALSE(schema.find("c1000000"));
    EXPECT_THROW(schema.add({.name = "c999999"}), std::invalid_argument);
}

}  // namespace
}  // namespace velmorak
