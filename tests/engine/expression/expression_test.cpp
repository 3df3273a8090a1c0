#include "SampleRows.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <numbers>

namespace velmorak {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();

TEST(Expression, bindsAsInMathematics) {
    EXPECT_EQ(real("1.0 + 2 * 3"), 7.0);
    EXPECT_EQ(real("(1.0 + 2) * 3"), 9.0);
    EXPECT_EQ(real("2 ^ 3 ^ 2"), 512.0);
    EXPECT_EQ(real("-2 ^ 2"), -4.0);
    EXPECT_EQ(real("2 ** -1"), 0.5);
    EXPECT_EQ(integer("10 - 4 - 3"), 3);
    EXPECT_EQ(real("8 / 4 / 2"), 1.0);
    EXPECT_TRUE(truth("1 < 2 && 3 > 2 || false"));
    EXPECT_TRUE(truth("true || true && false"));
    EXPECT_TRUE(truth("not 1 == 2 and true"));
    EXPECT_TRUE(truth("!false"));
}

TEST(Expression, keepsIntegersUnlessAFractionMayComeOut) {
    EXPECT_EQ(integer("n * 3 - 1"), 20);
    EXPECT_EQ(integer("n % 4"), 3);
    EXPECT_EQ(valuesOf("n % 4")->integers(), (Column::Integers{3, -3, 0}));
    EXPECT_EQ(integer("abs(-n)"), 7);
    EXPECT_EQ(integer("max(n, 3, 9)"), 9);
    EXPECT_EQ(real("n / 2"), 3.5);
    EXPECT_EQ(real("n ^ 2"), 49.0);
    EXPECT_EQ(real("n + 0.5"), 7.5);
    EXPECT_EQ(integer("(x > 1) + (y > 1)"), 2);
    EXPECT_EQ(integer("9223372036854775807"), largest);
    EXPECT_EQ(real("9223372036854775808"), 9223372036854775808.0);
}

TEST(Expression, failsWhereNoIntegerHoldsTheResult) {
    for (const char* text : {"9223372036854775807 + n", "n * 9223372036854775807", "n % 0", "-9223372036854775807 - n",
                             "-(-9223372036854775807 - 1)", "abs(-9223372036854775807 - 1)"}) {
        EXPECT_NE(refusalOf(text).find("no integer can hold"), std::string::npos) << text;
    }
    EXPECT_EQ(integer("(-9223372036854775807 - 1) % -1"), 0);
}

TEST(Expression, divides0By0ToNotANumber) {
    EXPECT_TRUE(std::isnan(real("0.0 / 0")));
    EXPECT_EQ(real("1 / 0"), infinity);
    EXPECT_EQ(real("-1 / 0"), -infinity);
    EXPECT_EQ(real("1 / -0.0"), -infinity);
    EXPECT_TRUE(std::isnan(real("sqrt(-1)")));
    EXPECT_TRUE(std::isnan(real("5.0 % 0")));
    EXPECT_TRUE(std::signbit(real("-0.0")));
}

TEST(Expression, hasNoOrderForNotANumber) {
    EXPECT_FALSE(truth("0.0/0 == 0.0/0"));
    EXPECT_TRUE(truth("0.0/0 != 0.0/0"));
    EXPECT_FALSE(truth("0.0/0 < 1 || 0.0/0 >= 1"));
    EXPECT_TRUE(truth("isnan(0.0/0) && isinf(1/0) && isfinite(x)"));
    EXPECT_TRUE(std::isnan(real("min(0.0/0, 1)")));
    EXPECT_TRUE(std::isnan(real("max(1, 0.0/0)")));
}

TEST(Expression, comparesTexts) {
    EXPECT_EQ(valuesOf("tag == \"muon\"")->booleans(), (Column::Booleans{1, 0, 0}));
    EXPECT_EQ(valuesOf("tag < 'f'")->booleans(), (Column::Booleans{0, 1, 1}));
    EXPECT_EQ(valuesOf("flag ? tag : \"no \\\"tag\\\"\"")->texts(), (Column::Texts{"muon", "no \"tag\"", ""}));
}

TEST(Expression, choosesRowByRow) {
    EXPECT_EQ(valuesOf("if(x > 0, n, 0.5)")->reals(), (Column::Reals{7.0, 0.5, 0.5}));
    EXPECT_EQ(valuesOf("x > 0 ? 1 : x < 0 ? -1 : 0")->integers(), (Column::Integers{1, -1, 0}));
    EXPECT_EQ(valuesOf("if(flag, x > 0, true)")->booleans(), (Column::Booleans{1, 1, 0}));
    EXPECT_EQ(valuesOf("if(n, 1, 0)")->integers(), (Column::Integers{1, 1, 0}));
}

TEST(Expression, takesOddColumnNamesInBackQuotes) {
    EXPECT_EQ(real("`m(mu mu)` * 2"), 182.4);
    EXPECT_EQ(Expression("`m(mu mu)` + x", schema()).usedColumns(), (std::vector<std::size_t>{0, 5}));
}

TEST(Expression, givesAColumnBackItself) {
    const Chunk chunk = rows();
    EXPECT_EQ(Expression("tag", schema()).evaluate(chunk), chunk.columns[4]);
    const Expression list("trk.px", schema());
    EXPECT_TRUE(list.isList());
    EXPECT_EQ(list.evaluate(chunk), chunk.columns[6]);
}

TEST(Expression, makesOneValueOfAList) {
    EXPECT_EQ(valuesOf("sum(trk.px)")->reals(), (Column::Reals{3.0, 0.0, 4.0}));
    EXPECT_EQ(valuesOf("sum(trk.hits) + 1")->integers(), (Column::Integers{4, 1, 6}));
    EXPECT_EQ(valuesOf("count(trk.px)")->integers(), (Column::Integers{2, 0, 1}));
    EXPECT_EQ(valuesOf("any(trk.hits)")->booleans(), (Column::Booleans{1, 0, 1}));
    EXPECT_EQ(valuesOf("all(trk.hits)")->booleans(), (Column::Booleans{0, 1, 1}));
    const auto most = valuesOf("max(trk.px)")->reals();
    EXPECT_EQ(most[0], 2.0);
    EXPECT_TRUE(std::isnan(most[1]));
    EXPECT_EQ(real("min(trk.hits)"), 0.0);
}

std::vector<std::uint64_t> offsetsOf(std::string_view text) {
    return valuesOf(text)->offsets;
}

TEST(ExpressionList, isComputedValueByValue) {
    EXPECT_EQ(valuesOf("trk.px * 2 + 1")->reals(), (Column::Reals{3.0, 5.0, 9.0}));
    EXPECT_EQ(offsetsOf("trk.px * 2 + 1"), (std::vector<std::uint64_t>{0, 2, 2, 3}));
    EXPECT_EQ(valuesOf("trk.px * trk.hits")->reals(), (Column::Reals{3.0, 0.0, 20.0}));
    EXPECT_EQ(valuesOf("trk.hits % 2")->integers(), (Column::Integers{1, 0, 1}));
    EXPECT_EQ(valuesOf("-trk.hits")->integers(), (Column::Integers{-3, 0, -5}));
    EXPECT_EQ(valuesOf("sqrt(trk.px)[1]")->reals()[0], std::sqrt(2.0));
    EXPECT_TRUE(Expression("trk.px > 1", schema()).isList());
    EXPECT_EQ(Expression("trk.px > 1", schema()).type(), ColumnType::Boolean);
    EXPECT_EQ(valuesOf("max(trk.px, 3)")->reals(), (Column::Reals{3.0, 3.0, 4.0}));
}

TEST(ExpressionList, takesTheSingleValueOfItsRowForEachOfItsValues) {
    EXPECT_EQ(valuesOf("trk.px + x")->reals(), (Column::Reals{2.5, 3.5, 4.0}));
    EXPECT_EQ(valuesOf("n * trk.hits")->integers(), (Column::Integers{21, 0, 0}));
    EXPECT_EQ(valuesOf("trk.px - sum(trk.px) / count(trk.px)")->reals(), (Column::Reals{-0.5, 0.5, 0.0}));
    EXPECT_EQ(valuesOf("if(flag, trk.px, -1.0)")->reals(), (Column::Reals{1.0, 2.0, 4.0}));
    EXPECT_EQ(valuesOf("trk.good && x > 1")->booleans(), (Column::Booleans{1, 0, 0}));
}

TEST(ExpressionList, ofTruthsIsCountedAndJudged) {
    EXPECT_EQ(valuesOf("sum(trk.px > 1)")->integers(), (Column::Integers{1, 0, 1}));
    EXPECT_EQ(valuesOf("any(trk.px > 3)")->booleans(), (Column::Booleans{0, 0, 1}));
    EXPECT_EQ(valuesOf("all(trk.px > 1 || trk.good)")->booleans(), (Column::Booleans{1, 1, 1}));
    EXPECT_EQ(valuesOf("count(trk.tag)")->integers(), (Column::Integers{2, 0, 1}));
    EXPECT_EQ(valuesOf("any(trk.tag == 'e')")->booleans(), (Column::Booleans{1, 0, 0}));
    EXPECT_EQ(valuesOf("trk.good ? trk.tag : 'bad'")->texts(), (Column::Texts{"mu", "bad", "mu"}));
}

TEST(ExpressionList, givesTheValueAtAPosition) {
    const auto second = valuesOf("trk.px[1]")->reals();
    EXPECT_EQ(second[0], 2.0);
    EXPECT_TRUE(std::isnan(second[1]));
    EXPECT_TRUE(std::isnan(second[2]));
    EXPECT_EQ(real("trk.hits[0]"), 3.0);
    EXPECT_EQ(valuesOf("trk.tag[0]")->texts(), (Column::Texts{"mu", "", "mu"}));
    EXPECT_EQ(valuesOf("trk.good[0]")->booleans(), (Column::Booleans{1, 0, 1}));
    EXPECT_EQ(real("trk.px[count(trk.px) - 1]"), 2.0);
    EXPECT_EQ(real("2 ^ trk.px[1]"), 4.0);
    EXPECT_EQ(real("(trk.px * 10)[trk.hits[1]]"), 10.0);
    for (const char* none : {"trk.px[-1]", "trk.px[2]", "trk.px[0.5]", "trk.px[nan]", "trk.px[1/0]", "trk.px[1e300]"}) {
        EXPECT_TRUE(std::isnan(real(none))) << none;
    }
}

TEST(ExpressionList, ofAnotherLengthIsRefusedByRow) {
    Chunk chunk = rows();
    chunk.firstRow = 100;
    try {
        Expression("trk.px + jet.pt", schema()).evaluate(chunk);
        FAIL();
    } catch (const Failure& failure) {
        EXPECT_STREQ(
            failure.what(),
            "the lists trk.px and jet.pt have 0 and 1 values in row 101; only lists of equal length can be combined\n"
            "  trk.px + jet.pt\n         ^");
    }
    EXPECT_EQ(real("sum(trk.px) + sum(jet.pt)"), 33.0);
}

TEST(ExpressionList, longerThanABlockIsComputedWhole) {
    const Schema lists({{"a", ColumnType::Real, true}, {"b", ColumnType::Integer}});
    Chunk chunk;
    chunk.rows = 3000;
    Column::Reals values;
    Column::Integers lengths;
    std::vector<std::uint64_t> offsets{0};
    for (std::size_t row = 0; row < chunk.rows; ++row) {
        lengths.push_back(static_cast<std::int64_t>(row % 5 == 0 ? 0 : row % 700));
        for (std::int64_t i = 0; i < lengths.back(); ++i) {
            values.push_back(static_cast<double>(i) + 0.5);
        }
        offsets.push_back(values.size());
    }
    chunk.columns = {column(values, offsets), column(lengths)};
    const ColumnPtr made = Expression("2 * a - b", lists).evaluate(chunk);
    EXPECT_EQ(made->offsets, offsets);
    std::size_t wrong = 0;
    for (std::size_t row = 0; row < chunk.rows; ++row) {
        for (std::uint64_t at = offsets[row]; at < offsets[row + 1]; ++at) {
            wrong += made->reals()[at] != 2.0 * values[at] - static_cast<double>(lengths[row]) ? 1 : 0;
        }
    }
    EXPECT_EQ(wrong, 0U);
}

TEST(ExpressionList, ofAPartOfATableCountsFromItsOwnBeginning) {
    Chunk chunk = rows();
    chunk.rows = 1;
    chunk.columns[6] = column(Column::Reals{9.0, 9.0, 1.0, 2.0}, {2, 4});
    const ColumnPtr made = Expression("trk.px * 3", schema()).evaluate(chunk);
    EXPECT_EQ(made->reals(), (Column::Reals{3.0, 6.0}));
    EXPECT_EQ(made->offsets, (std::vector<std::uint64_t>{0, 2}));
    EXPECT_EQ(Expression("sum(trk.px)", schema()).evaluate(chunk)->reals(), (Column::Reals{3.0}));
    EXPECT_EQ(Expression("trk.px[1]", schema()).evaluate(chunk)->reals(), (Column::Reals{2.0}));
}

TEST(Expression, wrapsAnglesByTheRemainder) {
    EXPECT_EQ(real("remainder(5.0, 3)"), -1.0);
    EXPECT_EQ(real("copysign(2, -0.0)"), -2.0);
}

TEST(Expression, knowsConstantsUnlessAColumnHasTheName) {
    EXPECT_EQ(real("pi"), std::numbers::pi);
    EXPECT_EQ(real("log(e)"), 1.0);
    EXPECT_EQ(real("inf"), infinity);
    EXPECT_TRUE(std::isnan(real("nan")));
    const Schema own({{"e"}});
    Chunk chunk;
    chunk.rows = 1;
    chunk.columns = {column(Column::Reals{5.0})};
    EXPECT_EQ(Expression("e + pi*0", own).evaluate(chunk)->reals()[0], 5.0);
}

TEST(Expression, readsNamedNumbersBesideTheColumns) {
    const Expression cut("x > threshold", schema(), {{"threshold", 1.0}, {"x", 99.0}});
    EXPECT_EQ(cut.evaluate(rows())->booleans(), (Column::Booleans{1, 0, 0}));
}

TEST(Expression, hasTheSameBitsInWhateverPlaceARowStands) {
    const Schema one({{"x"}});
    const Expression formula("sqrt(x*x + 0.1) * x + exp(-x) / (1 + x^3)", one);
    Column::Reals values;
    for (int i = 0; i < 2500; ++i) {
        values.push_back(0.001 * i);
    }
    Chunk all;
    all.rows = values.size();
    all.columns = {column(values)};
    const ColumnPtr whole = formula.evaluate(all);
    for (const std::size_t begin : {1U, 7U, 1023U, 1024U, 2499U}) {
        Chunk tail;
        tail.rows = values.size() - begin;
        tail.columns = {column(Column::Reals(values.begin() + static_cast<std::ptrdiff_t>(begin), values.end()))};
        const ColumnPtr part = formula.evaluate(tail);
        for (std::size_t row = 0; row < tail.rows; ++row) {
            ASSERT_EQ(std::bit_cast<std::uint64_t>(part->reals()[row]),
                      std::bit_cast<std::uint64_t>(whole->reals()[begin + row]));
        }
    }
}

TEST(Expression, evaluatesAnEmptyChunkToAnEmptyColumn) {
    Chunk chunk = rows();
    chunk.rows = 0;
    EXPECT_EQ(Expression("tag == 'a'", schema()).evaluate(chunk)->booleans().size(), 0U);
}

TEST(Expression, takesALongSumWithFewBuffers) {
    EXPECT_EQ(real("0" + repeated("+x", 8000)), 12000.0);
}

TEST(ExpressionNames, areEachGivenOnceInOrder) {
    EXPECT_EQ(namesIn("cut < x && sqrt(y) > x + pi - `a b`"), (std::vector<std::string>{"cut", "x", "y", "a b"}));
    EXPECT_EQ(namesIn("true ? e : `e`"), (std::vector<std::string>{"e"}));
    EXPECT_THROW(namesIn("x +"), Failure);
}

}  // namespace
}  // namespace velmorak
