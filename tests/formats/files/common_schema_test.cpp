#include "files/CommonSchema.h"

#include <velmorak/Failure.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <utility>

namespace velmorak {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

ColumnInfo column(const std::string& name, ColumnType type = ColumnType::Real) {
    return {.name = name, .type = type};
}

FileColumns columnsOf(std::vector<ColumnInfo> columns, std::set<std::string> undecided = {}) {
    return {Schema(std::move(columns)), std::move(undecided)};
}

std::string failureOf(const Schema& first, const Schema& second) {
    CommonSchema common(false);
    common.add("a", {first});
    try {
        common.add("b", {second});
    } catch (const Failure& failure) {
        return failure.what();
    }
    return "no failure";
}

TEST(CommonSchema, takesColumnsInAnyOrder) {
    CommonSchema common(false);
    common.add("a", columnsOf({column("x"), column("y", ColumnType::Text)}));
    common.add("b", columnsOf({column("y", ColumnType::Text), column("x")}));
    EXPECT_THAT(common.columns(), ElementsAre(column("x"), column("y", ColumnType::Text)));
}

TEST(CommonSchema, unitesIntegersAndRealsAsReals) {
    for (const bool isRealFirst : {false, true}) {
        CommonSchema common(false);
        common.add("a", columnsOf({column("x", isRealFirst ? ColumnType::Real : ColumnType::Integer)}));
        common.add("b", columnsOf({column("x", isRealFirst ? ColumnType::Integer : ColumnType::Real)}));
        EXPECT_THAT(common.columns(), ElementsAre(column("x")));
    }
}

TEST(CommonSchema, namesFilesAndColumnOfADifference) {
    const Schema xy({column("x"), column("y")});
    EXPECT_THAT(failureOf(xy, Schema({column("x")})), HasSubstr("\"b\" has no column \"y\", which \"a\" has"));
    EXPECT_THAT(failureOf(Schema({column("x")}), xy), HasSubstr("\"b\" has a column \"y\", which \"a\" does not have"));
    EXPECT_EQ(failureOf(xy, Schema({column("x"), column("y", ColumnType::Text)})),
              "the column \"y\" is real in \"a\" but text in \"b\"");
    EXPECT_EQ(failureOf(Schema({column("x")}), Schema({ColumnInfo{.name = "x", .isList = true}})),
              "the column \"x\" is real in \"a\" but a list of real values in \"b\"");
    EXPECT_EQ(
        failureOf(Schema({ColumnInfo{.name = "x", .unit = "GeV"}}), Schema({ColumnInfo{.name = "x", .unit = "MeV"}})),
        "the column \"x\" is in GeV in \"a\" but in MeV in \"b\"");
}

TEST(CommonSchema, leavesOutWhatDiffersIfAsked) {
    CommonSchema common(true);
    common.add("a", columnsOf({column("x"), column("y"), column("z")}));
    common.add("b", columnsOf({column("z", ColumnType::Text), column("x"), column("w")}));
    EXPECT_THAT(common.columns(), ElementsAre(column("x")));
    EXPECT_THAT(common.leftOut(), ElementsAre("w", "y", "z"));
}

TEST(CommonSchema, takesTheTypeOfAFileThatShowsValues) {
    CommonSchema common(false);
    common.add("a", columnsOf({column("x"), column("y")}, {"x", "y"}));
    common.add("b", columnsOf({column("x", ColumnType::Text), column("y", ColumnType::Integer)}));
    common.add("c", columnsOf({column("x"), column("y")}, {"x"}));
    EXPECT_THAT(common.columns(), ElementsAre(column("x", ColumnType::Text), column("y")));
    try {
        common.add("d", columnsOf({column("x", ColumnType::Boolean), column("y")}));
        FAIL();
    } catch (const Failure& failure) {
        EXPECT_STREQ(failure.what(), "the column \"x\" is text in \"b\" but boolean in \"d\"");
    }
}

TEST(CommonSchema, knowsTheUnitFromAnyFile) {
    CommonSchema common(false);
    common.add("a", columnsOf({column("x")}));
    common.add("b", columnsOf({{.name = "x", .unit = "GeV"}}));
    EXPECT_THAT(common.columns(), ElementsAre(ColumnInfo{.name = "x", .unit = "GeV"}));
    try {
        common.add("c", columnsOf({{.name = "x", .unit = "MeV"}}));
        FAIL();
    } catch (const Failure& failure) {
        EXPECT_STREQ(failure.what(), "the column \"x\" is in GeV in \"b\" but in MeV in \"c\"");
    }
}

}  // namespace
}  // namespace velmorak
