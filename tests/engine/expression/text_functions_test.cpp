#include "SampleRows.h"

#include <gtest/gtest.h>

#include <cmath>

namespace velmorak {
namespace {

TEST(TextFunction, searchesForAPart) {
    EXPECT_EQ(valuesOf("contains(tag, 'uo')")->booleans(), (Column::Booleans{1, 0, 0}));
    EXPECT_EQ(valuesOf("contains(tag, '')")->booleans(), (Column::Booleans{1, 1, 1}));
    EXPECT_EQ(valuesOf("startsWith(tag, 'mu')")->booleans(), (Column::Booleans{1, 0, 0}));
    EXPECT_EQ(valuesOf("endsWith(tag, 'e')")->booleans(), (Column::Booleans{0, 1, 0}));
    EXPECT_EQ(valuesOf("any(startsWith(trk.tag, 'm'))")->booleans(), (Column::Booleans{1, 0, 1}));
    EXPECT_TRUE(truth("contains('müon', 'ü') && !contains('müon', 'Ü')"));
}

TEST(TextFunction, countsCharactersNotBytes) {
    EXPECT_EQ(valuesOf("length(tag)")->integers(), (Column::Integers{4, 1, 0}));
    EXPECT_EQ(integer("length('μ±')"), 2);
    EXPECT_EQ(valuesOf("sum(length(trk.tag))")->integers(), (Column::Integers{3, 0, 2}));
}

TEST(TextFunction, readsNumbers) {
    EXPECT_EQ(real("toNumber('1.5e3')"), 1500.0);
    EXPECT_EQ(real("toNumber('-7') + 1"), -6.0);
    for (const char* none : {"toNumber('')", "toNumber('1,5')", "toNumber('7 GeV')", "toNumber(tag)"}) {
        EXPECT_TRUE(std::isnan(real(none))) << none;
    }
}

TEST(TextFunction, changesTheCaseOfLetters) {
    EXPECT_EQ(valuesOf("upper(tag)")->texts(), (Column::Texts{"MUON", "E", ""}));
    EXPECT_TRUE(truth("lower('MÜON ΩÉ') == 'müon ωé' && upper('müon ωé') == 'MÜON ΩÉ'"));
    EXPECT_TRUE(truth("lower('\377A') == '\377a'")) << "bytes that are no UTF-8 stay";
}

TEST(TextFunction, takesAPart) {
    EXPECT_EQ(valuesOf("substring(tag, 1, 2)")->texts(), (Column::Texts{"uo", "", ""}));
    EXPECT_EQ(valuesOf("substring(tag, -2)")->texts(), (Column::Texts{"on", "e", ""}));
    EXPECT_EQ(valuesOf("substring(tag, n - 7)")->texts(), (Column::Texts{"muon", "e", ""}));
    EXPECT_TRUE(truth("substring('μ± → e', 1, 3) == '± →'"));
    EXPECT_TRUE(truth("substring('abc', 1, 0) == '' && substring('abc', 1, -5) == '' && substring('abc', 9) == ''"));
    EXPECT_NE(refusalOf("substring(tag)").find("\"substring\" takes"), std::string::npos);
    EXPECT_NE(refusalOf("substring(tag, x)").find("\"substring\" does not take a value of type real"),
              std::string::npos);
}

TEST(TextFunction, findsARegularExpression) {
    EXPECT_EQ(valuesOf("matches(tag, '^m.*n$')")->booleans(), (Column::Booleans{1, 0, 0}));
    EXPECT_EQ(valuesOf("matches(tag, 'e|u')")->booleans(), (Column::Booleans{1, 1, 0}));
    EXPECT_EQ(valuesOf("count(trk.tag[matches(trk.tag, '[me]')])")->integers(), (Column::Integers{2, 0, 1}));
    EXPECT_TRUE(truth("matches('run_0042.csv', 'run_\\\\d+') && !matches('Run', 'run') && matches('Run', '(?i)run')"));
    EXPECT_NE(refusalOf("matches(tag, '(')").find("the regular expression is wrong: missing )"), std::string::npos);
    EXPECT_NE(refusalOf("matches(tag, tag)").find("expected a regular expression in quotes"), std::string::npos);
}

TEST(TextFunction, makesTextsInEveryBlock) {
    Chunk many;
    many.rows = 5000;
    Column::Texts names;
    for (std::size_t row = 0; row < many.rows; ++row) {
        names.push_back("Run " + std::to_string(row) + " of a long enough name");
    }
    many.columns = {column(names)};
    const Schema columns({{"name", ColumnType::Text}});
    const Expression expression("if(length(name) > 0, lower(substring(name, 0, 8)), upper(name))", columns);
    const Column::Texts made = expression.evaluate(many)->texts();
    for (std::size_t row = 0; row < many.rows; ++row) {
        ASSERT_EQ(made[row], ("run " + std::to_string(row) + " of").substr(0, 8));
    }
}

TEST(DateFunction, readsAndWritesDates) {
    EXPECT_EQ(real("toSeconds('2024-02-29T12:30:15.25Z')"), 1709209815.25);
    EXPECT_TRUE(std::isnan(real("toSeconds('yesterday')")));
    EXPECT_TRUE(truth("toDate(1709209815.25) == '2024-02-29T12:30:15.25Z' && toDate(nan) == ''"));
    EXPECT_TRUE(truth("toDate(toSeconds('1969-12-31')) == '1969-12-31T00:00:00Z'"));
    EXPECT_EQ(valuesOf("toDate(n)")->texts()[1], "1969-12-31T23:59:53Z");
    EXPECT_EQ(valuesOf("substring(toDate(n), 0, 4)")->texts(), (Column::Texts{"1970", "1969", "1970"}));
}

TEST(DateFunction, takesPartsOfAMoment) {
    EXPECT_TRUE(truth("year(1709209815.25) == 2024 && month(1709209815.25) == 2 && day(1709209815.25) == 29"));
    EXPECT_TRUE(truth("hour(1709209815.25) == 12 && minute(1709209815.25) == 30 && weekday(1709209815.25) == 4"));
    EXPECT_TRUE(truth("dayOfYear(1709209815.25) == 60 && dayOfYear(0) == 1 && weekday(0) == 4"));
    EXPECT_TRUE(truth("year(-0.5) == 1969 && hour(-0.5) == 23 && minute(-0.5) == 59 && dayOfYear(-0.5) == 365"));
    for (const char* none : {"year(nan)", "month(inf)", "hour(-inf)", "weekday(1e15)", "minute(1e300)"}) {
        EXPECT_TRUE(std::isnan(real(none))) << none;
    }
}

TEST(TextFunction, takesTextsOnly) {
    EXPECT_NE(refusalOf("length(x)").find("\"length\" does not take a value of type real"), std::string::npos);
    EXPECT_NE(refusalOf("contains(tag)").find("\"contains\" takes two values"), std::string::npos);
    EXPECT_NE(refusalOf("contains(tag, 1)").find("does not take a value of type integer"), std::string::npos);
}

TEST(MissingValue, isNotANumberOrAnEmptyText) {
    EXPECT_EQ(valuesOf("isMissing(tag)")->booleans(), (Column::Booleans{0, 0, 1}));
    EXPECT_EQ(valuesOf("isMissing(sqrt(x))")->booleans(), (Column::Booleans{0, 1, 0}));
    EXPECT_EQ(valuesOf("isMissing(n) || isMissing(flag)")->booleans(), (Column::Booleans{0, 0, 0}));
    EXPECT_EQ(valuesOf("sum(isMissing(trk.px) + isMissing(trk.hits))")->integers(), (Column::Integers{0, 0, 0}));
    EXPECT_EQ(valuesOf("isMissing(jet.pt[1])")->booleans(), (Column::Booleans{0, 1, 1}));
    EXPECT_TRUE(truth("isMissing(nan) && !isMissing(inf)"));
}

TEST(MissingValue, isReplaced) {
    EXPECT_EQ(valuesOf("ifMissing(tag, 'none')")->texts(), (Column::Texts{"muon", "e", "none"}));
    EXPECT_EQ(valuesOf("ifMissing(jet.pt[1], x)")->reals(), (Column::Reals{20.0, -2.0, 0.0}));
    EXPECT_EQ(valuesOf("ifMissing(n, 5)")->integers(), (Column::Integers{7, -7, 0}));
    EXPECT_NE(refusalOf("ifMissing(x)").find("\"ifMissing\" takes two values"), std::string::npos);
    EXPECT_NE(refusalOf("isMissing()").find("\"isMissing\" takes one value"), std::string::npos);
}

}  // namespace
}  // namespace velmorak
