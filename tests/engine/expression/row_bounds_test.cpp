#include <velmorak/Failure.h>
#include <velmorak/RowBounds.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

namespace velmorak {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Relation = ColumnBound::Relation;

const Schema columns({{"x", ColumnType::Real, false, ""},
                      {"n", ColumnType::Integer, false, ""},
                      {"good", ColumnType::Boolean, false, ""},
                      {"word", ColumnType::Text, false, ""},
                      {"xs", ColumnType::Real, true, ""},
                      {"pi", ColumnType::Real, false, ""}});

std::vector<ColumnBound> found(std::string_view text, const std::map<std::string, double>& numbers = {}) {
    return boundsIn(text, columns, numbers);
}

TEST(RowBounds, areTheComparisonsOfAConjunction) {
    EXPECT_THAT(found("x > 5"), ElementsAre(ColumnBound{0, Relation::Greater, 5.0}));
    EXPECT_THAT(found("x >= -2.5 and n < 7 && (good and n == 3)"),
                ElementsAre(ColumnBound{0, Relation::GreaterEqual, -2.5}, ColumnBound{1, Relation::Less, 7.0},
                            ColumnBound{1, Relation::Equal, 3.0}));
}

TEST(RowBounds, areExchangedWhereTheNumberComesFirst) {
    EXPECT_THAT(found("5 < x and 7 >= n"),
                ElementsAre(ColumnBound{0, Relation::Greater, 5.0}, ColumnBound{1, Relation::LessEqual, 7.0}));
}

TEST(RowBounds, takeNumbersByNameUnlessAColumnHidesThem) {
    EXPECT_THAT(found("x < limit", {{"limit", 4.0}}), ElementsAre(ColumnBound{0, Relation::Less, 4.0}));
    EXPECT_THAT(found("x < n", {{"n", 4.0}}), IsEmpty());
    EXPECT_THAT(found("x < `limit`", {{"limit", 4.0}}), IsEmpty());
}

TEST(RowBounds, takeNoConstantForAColumn) {
    EXPECT_THAT(found("pi > 3"), IsEmpty());
    EXPECT_THAT(found("`pi` > 3"), ElementsAre(ColumnBound{5, Relation::Greater, 3.0}));
}

TEST(RowBounds, areNoneWhereARowMayPassWithoutThem) {
    for (const char* const text : {"x > 5 or n < 3", "not (x > 5)", "x != 5", "x + 1 > 5", "abs(x) > 5", "good",
                                   "x > n", "good == 1", "word == 'a'", "(x > 5) == good", "x > 5 ? n > 3 : n > 4"}) {
        EXPECT_THAT(found(text), IsEmpty()) << text;
    }
}

TEST(RowBounds, areNoneBesideLists) {
    EXPECT_THAT(found("x > 5 and xs[0] > 3"), IsEmpty());
}

TEST(RowBounds, excludeRangesThatNoNumberFulfils) {
    const auto excludes = [](Relation relation, double low, double high) {
        return ColumnBound{0, relation, 5.0}.excludes(low, high);
    };
    EXPECT_TRUE(excludes(Relation::Less, 5.0, 6.0));
    EXPECT_FALSE(excludes(Relation::Less, 4.9, 6.0));
    EXPECT_TRUE(excludes(Relation::LessEqual, 5.1, 6.0));
    EXPECT_FALSE(excludes(Relation::LessEqual, 5.0, 6.0));
    EXPECT_TRUE(excludes(Relation::Greater, 1.0, 5.0));
    EXPECT_FALSE(excludes(Relation::Greater, 1.0, 5.1));
    EXPECT_TRUE(excludes(Relation::GreaterEqual, 1.0, 4.9));
    EXPECT_FALSE(excludes(Relation::GreaterEqual, 1.0, 5.0));
    EXPECT_TRUE(excludes(Relation::Equal, 1.0, 4.0));
    EXPECT_TRUE(excludes(Relation::Equal, 6.0, 7.0));
    EXPECT_FALSE(excludes(Relation::Equal, 4.0, 6.0));
    EXPECT_FALSE((ColumnBound{0, Relation::Less, std::nan("")}.excludes(1.0, 2.0)));
}

TEST(RowBounds, needAnExpression) {
    EXPECT_THROW(found("x >"), Failure);
}

}  // namespace
}  // namespace velmorak
