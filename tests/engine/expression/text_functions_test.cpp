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
