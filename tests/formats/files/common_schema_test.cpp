#include "files/CommonSchema.h"

#include <velmorak/Failure.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace velmorak {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

ColumnInfo column(const std::string& name, ColumnType type = ColumnType::Real) {
    return {.name = name, .type = type};
}

std::string failureOf(const Schema& first, const Schema& second) {
    CommonSchema common(false);
    common.add("a", first);
    try {
        common.add("b", second);
    } catch (const Failure& failure) {
        return failure.what();
    }
    return "no failure";
}

TEST(CommonSchema, takesColumnsInAnyOrder) {
    CommonSchema common(false);
    common.add("a", Schema({column("x"), column("y", ColumnType::Text)}));
    common.add("b", Schema({column("y", ColumnType::Text), column("x")}));
    EXPECT_THAT(common.columns(), ElementsAre(column("x"), column("y", ColumnType::Text)));
}

TEST(CommonSchema, unitesIntegersAndRealsAsReals) {
    for (const bool isRealFirst : {false, true}) {
        CommonSchema common(false);
        common.add("a", Schema({column("x", isRealFirst ? ColumnType::Real : ColumnType::Integer)}));
        common.add("b", Schema({column("x", isRealFirst ? ColumnType::Integer : ColumnType::Real)}));
        EXPECT_THAT(common.columns(), ElementsAre(column("x")));
    }
}

TEST(CommonSchema, namesFilesAndColumnOfADifference) {
    const Schema xy({column("x"), column("y")});
    EXPECT_THAT(failureOf(xy, Schema({column("x")})), HasSubstr("\"b\" has no column \"y\", which \"a\" has"));
    EXPECT_THAT(failureOf(Schema({column("x")}), xy), HasSubstr("\"b\" has a column \"y\", which \"a\" has not"));
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
    common.add("a", Schema({column("x"), column("y"), column("z")}));
    common.add("b", Schema({column("z", ColumnType::Text), column("x"), column("w")}));
    EXPECT_THAT(common.columns(), ElementsAre(column("x")));
    EXPECT_THAT(common.leftOut(), ElementsAre("w", "y", "z"));
}

}  // namespace
}  // namespace velmorak
