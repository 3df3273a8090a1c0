#include "SampleEvents.h"
#include "SampleRows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

namespace velmorak {
namespace {

/// Lists of numbers as rows of values, so that a test reads as what it expects.
template <typename T>
using Rows = std::vector<std::vector<T>>;

template <typename Values>
Rows<typename Values::value_type> rowsIn(const Values& values, const std::vector<std::uint64_t>& offsets) {
    Rows<typename Values::value_type> rows;
    for (std::size_t row = 0; row + 1 < offsets.size(); ++row) {
        rows.emplace_back(values.begin() + static_cast<std::ptrdiff_t>(offsets[row]),
                          values.begin() + static_cast<std::ptrdiff_t>(offsets[row + 1]));
    }
    return rows;
}

ColumnPtr evaluated(std::string_view text) {
    return Expression(text, events()).evaluate(someEvents());
}

Rows<double> reals(std::string_view text) {
    const ColumnPtr made = evaluated(text);
    return rowsIn(made->reals(), made->offsets);
}

Rows<std::int64_t> integers(std::string_view text) {
    const ColumnPtr made = evaluated(text);
    return rowsIn(made->integers(), made->offsets);
}

Rows<std::string> texts(std::string_view text) {
    const ColumnPtr made = evaluated(text);
    return rowsIn(made->texts(), made->offsets);
}

std::string refusal(std::string_view text) {
    try {
        evaluated(text);
    } catch (const Failure& failure) {
        return failure.what();
    }
    return "no refusal";
}

TEST(ListIndex, byAConditionKeepsTheValuesWhereItIsTrue) {
    EXPECT_EQ(reals("pt[pt > 25]"), (Rows<double>{{40.0, 30.0}, {}, {}}));
    EXPECT_EQ(reals("pt[good]"), (Rows<double>{{20.0, 30.0}, {}, {7.0}}));
    EXPECT_EQ(integers("charge[eta > 0]"), (Rows<std::int64_t>{{1, 1}, {}, {-1}}));
    EXPECT_EQ(texts("name[charge < 0]"), (Rows<std::string>{{"e"}, {}, {"e", "tau"}}));
    EXPECT_EQ(evaluated("sum(pt[name == 'mu'])")->reals(), (Column::Reals{50.0, 0.0, 0.0}));
    EXPECT_EQ(evaluated("count(pt[abs(eta) < n])")->integers(), (Column::Integers{1, 0, 0}));
    EXPECT_EQ(reals("(pt * 2)[pt > 25] + 1"), (Rows<double>{{81.0, 61.0}, {}, {}}));
    EXPECT_EQ(reals("pt[good][0:1]"), (Rows<double>{{20.0}, {}, {7.0}}));
}

TEST(ListIndex, byPositionsTakesTheValuesThere) {
    EXPECT_EQ(reals("pt[order(pt)]"), (Rows<double>{{20.0, 30.0, 40.0}, {}, {5.0, 7.0}}));
    EXPECT_EQ(integers("charge[order(-pt)]"), (Rows<std::int64_t>{{-1, 1, 1}, {}, {-1, -1}}));
    const Rows<double> outside = reals("pt[charge]");
    EXPECT_EQ(outside[0][0], 40.0);
    EXPECT_TRUE(std::isnan(outside[0][1]));
    EXPECT_EQ(outside[0][2], 40.0);
    EXPECT_TRUE(std::isnan(outside[2][0]));
    EXPECT_EQ(evaluated("charge[charge]")->type(), ColumnType::Real);
    EXPECT_EQ(texts("name[charge]"), (Rows<std::string>{{"e", "", "e"}, {}, {"", ""}}));
    EXPECT_EQ(reals("jet[concat(0, 0)]")[1], (std::vector<double>{70.0, 70.0}));
}

TEST(ListIndex, bySliceCountsFromEitherEnd) {
    EXPECT_EQ(reals("pt[0:2]"), (Rows<double>{{20.0, 40.0}, {}, {5.0, 7.0}}));
    EXPECT_EQ(reals("pt[1:]"), (Rows<double>{{40.0, 30.0}, {}, {7.0}}));
    EXPECT_EQ(reals("pt[:-1]"), (Rows<double>{{20.0, 40.0}, {}, {5.0}}));
    EXPECT_EQ(reals("pt[-1:]"), (Rows<double>{{30.0}, {}, {7.0}}));
    EXPECT_EQ(reals("pt[:n]"), (Rows<double>{{20.0}, {}, {}}));
    EXPECT_EQ(reals("pt[2:1]"), (Rows<double>{{}, {}, {}}));
    EXPECT_EQ(reals("pt[nan:]"), (Rows<double>{{}, {}, {}}));
    EXPECT_EQ(reals("pt[-inf:inf]"), reals("pt[:]"));
    EXPECT_EQ(reals("pt[n > 0 ? 1 : 0 : 5]"), (Rows<double>{{40.0, 30.0}, {}, {5.0, 7.0}}));
}

TEST(ListSort, isStableAndPutsNotANumberLast) {
    EXPECT_EQ(reals("sort(pt)"), (Rows<double>{{20.0, 30.0, 40.0}, {}, {5.0, 7.0}}));
    EXPECT_EQ(reals("sort(pt, -pt)"), (Rows<double>{{40.0, 30.0, 20.0}, {}, {7.0, 5.0}}));
    EXPECT_EQ(texts("sort(name)"), (Rows<std::string>{{"e", "mu", "mu"}, {}, {"e", "tau"}}));
    EXPECT_EQ(reals("sort(pt, name)"), (Rows<double>{{40.0, 20.0, 30.0}, {}, {5.0, 7.0}}));
    EXPECT_EQ(reals("sort(pt, good)"), (Rows<double>{{40.0, 20.0, 30.0}, {}, {5.0, 7.0}}));
    const Rows<double> sorted = reals("sort(if(pt == 20, nan, pt))");
    EXPECT_EQ(sorted[0][0], 30.0);
    EXPECT_EQ(sorted[0][1], 40.0);
    EXPECT_TRUE(std::isnan(sorted[0][2]));
    EXPECT_EQ(reals("reverse(pt)"), (Rows<double>{{30.0, 40.0, 20.0}, {}, {7.0, 5.0}}));
    EXPECT_EQ(integers("reverse(order(pt))"), (Rows<std::int64_t>{{1, 2, 0}, {}, {1, 0}}));
}

TEST(ListElement, isTheDefaultWhereTheListIsTooShort) {
    EXPECT_EQ(evaluated("first(pt, -1)")->reals(), (Column::Reals{20.0, -1.0, 5.0}));
    EXPECT_EQ(evaluated("second(charge, n)")->integers(), (Column::Integers{-1, 2, -1}));
    EXPECT_EQ(evaluated("third(charge, 0.5)")->reals(), (Column::Reals{1.0, 0.5, 0.5}));
    EXPECT_EQ(evaluated("last(name, 'none')")->texts(), (Column::Texts{"mu", "none", "tau"}));
    EXPECT_EQ(evaluated("last(good)")->booleans(), (Column::Booleans{1, 0, 1}));
    EXPECT_EQ(evaluated("first(charge)")->type(), ColumnType::Real);
    EXPECT_TRUE(std::isnan(evaluated("first(pt)")->reals()[1]));
}

TEST(ListPosition, ofAnExtremeIgnoresNotANumber) {
    EXPECT_EQ(evaluated("argmin(pt)")->integers(), (Column::Integers{0, -1, 0}));
    EXPECT_EQ(evaluated("argmax(pt)")->integers(), (Column::Integers{1, -1, 1}));
    EXPECT_EQ(evaluated("argmax(charge)")->integers(), (Column::Integers{0, -1, 0}));
    EXPECT_EQ(evaluated("argmin(if(pt < 25, nan, pt))")->integers(), (Column::Integers{2, -1, -1}));
    EXPECT_EQ(evaluated("eta[argmax(pt)]")->reals()[0], -1.0);
    EXPECT_TRUE(std::isnan(evaluated("eta[argmax(pt)]")->reals()[1]));
}

TEST(ListUnique, keepsTheFirstOfEqualValues) {
    EXPECT_EQ(texts("unique(name)"), (Rows<std::string>{{"mu", "e"}, {}, {"e", "tau"}}));
    EXPECT_EQ(integers("unique(charge)"), (Rows<std::int64_t>{{1, -1}, {}, {-1}}));
    EXPECT_EQ(evaluated("count(unique(pt * nan))")->integers(), (Column::Integers{1, 0, 1}));
}

TEST(ListConcat, joinsListsAndSingleValues) {
    EXPECT_EQ(reals("concat(pt, jet)"),
              (Rows<double>{{20.0, 40.0, 30.0, 50.0, 60.0}, {70.0}, {5.0, 7.0, 80.0, 90.0, 10.0}}));
    EXPECT_EQ(integers("concat(charge, n)"), (Rows<std::int64_t>{{1, -1, 1, 1}, {2}, {-1, -1, 0}}));
    EXPECT_EQ(reals("concat(charge, 0.5, n)"),
              (Rows<double>{{1.0, -1.0, 1.0, 0.5, 1.0}, {0.5, 2.0}, {-1.0, -1.0, 0.5, 0.0}}));
    EXPECT_EQ(texts("concat(name, 'last')")[1], (std::vector<std::string>{"last"}));
}

TEST(ListPairs, areAllCombinationsInOrder) {
    EXPECT_EQ(integers("first(pairs(pt))"), (Rows<std::int64_t>{{0, 0, 1}, {}, {0}}));
    EXPECT_EQ(integers("second(pairs(pt))"), (Rows<std::int64_t>{{1, 2, 2}, {}, {1}}));
    EXPECT_EQ(integers("last(pairs(pt, jet))"), (Rows<std::int64_t>{{0, 1, 0, 1, 0, 1}, {}, {0, 1, 2, 0, 1, 2}}));
    EXPECT_EQ(evaluated("count(triples(pt))")->integers(), (Column::Integers{1, 0, 0}));
    EXPECT_EQ(integers("third(triples(pt))"), (Rows<std::int64_t>{{2}, {}, {}}));
}

TEST(ListPairs, indexOtherLists) {
    EXPECT_EQ(reals("sum(pt[pairs(pt)])"), (Rows<double>{{60.0, 50.0, 70.0}, {}, {12.0}}));
    EXPECT_EQ(integers("sum(charge[pairs(pt)])"), (Rows<std::int64_t>{{0, 2, 0}, {}, {-2}}));
    EXPECT_EQ(reals("max(pt[pairs(pt)])"), (Rows<double>{{40.0, 30.0, 40.0}, {}, {7.0}}));
    EXPECT_EQ(reals("sum(pt[pairs(pt)[sum(charge[pairs(pt)]) == 0]])"), (Rows<double>{{60.0, 70.0}, {}, {}}));
    EXPECT_EQ(reals("first(pt[pairs(pt)]) - second(pt[pairs(pt)])"), (Rows<double>{{-20.0, -10.0, 10.0}, {}, {-2.0}}));
    EXPECT_EQ(reals("sum(pt[pairs(pt)] * 2 + n)"), (Rows<double>{{122.0, 102.0, 142.0}, {}, {24.0}}));
    EXPECT_EQ(reals("pt[first(pairs(pt, jet))] + jet[second(pairs(pt, jet))]")[0],
              (std::vector<double>{70.0, 80.0, 90.0, 100.0, 80.0, 90.0}));
    EXPECT_EQ(evaluated("any(sum(charge[pairs(pt)]) == 0)")->booleans(), (Column::Booleans{1, 0, 0}));
}

TEST(ListPairs, giveTheValuesOfTheOneAtAPosition) {
    EXPECT_EQ(reals("pt[pairs(pt)[argmax(sum(pt[pairs(pt)]))]]"), (Rows<double>{{40.0, 30.0}, {}, {5.0, 7.0}}));
    EXPECT_EQ(integers("triples(pt)[0]"), (Rows<std::int64_t>{{0, 1, 2}, {}, {}}));
    EXPECT_EQ(reals("sum(pt[pairs(pt)[1:]])"), (Rows<double>{{50.0, 70.0}, {}, {}}));
    EXPECT_EQ(reals("sum(pt[sort(pairs(pt), -sum(pt[pairs(pt)]))])"), (Rows<double>{{70.0, 60.0, 50.0}, {}, {12.0}}));
}

TEST(ListNearest, isThePositionOfTheSmallestDistance) {
    const Schema schema({{"eta1", ColumnType::Real, true},
                         {"phi1", ColumnType::Real, true},
                         {"eta2", ColumnType::Real, true},
                         {"phi2", ColumnType::Real, true},
                         {"eta"},
                         {"phi"}});
    Chunk chunk;
    chunk.rows = 2;
    chunk.columns = {column(Column::Reals{0.0, 1.0, 0.0}, {0, 2, 3}),
                     column(Column::Reals{3.1, 0.0, 0.0}, {0, 2, 3}),
                     column(Column::Reals{0.0, 0.1, 1.0}, {0, 3, 3}),
                     column(Column::Reals{0.0, -3.1, 0.2}, {0, 3, 3}),
                     column(Column::Reals{1.0, 0.0}),
                     column(Column::Reals{0.0, 0.0})};
    const ColumnPtr lists = Expression("nearest(eta1, phi1, eta2, phi2)", schema).evaluate(chunk);
    EXPECT_EQ(rowsIn(lists->integers(), lists->offsets), (Rows<std::int64_t>{{1, 2}, {-1}}));
    EXPECT_EQ(Expression("nearest(eta, phi, eta2, phi2)", schema).evaluate(chunk)->integers(),
              (Column::Integers{2, -1}));
    EXPECT_TRUE(
        std::isnan(Expression("sum(eta2[nearest(eta1, phi1, eta2, phi2)])", schema).evaluate(chunk)->reals()[1]));
}

TEST(ListMistake, namesBothListsAndTheRow) {
    EXPECT_EQ(refusal("pt + jet"),
              "the lists pt and jet have 3 and 2 values in row 0; only lists of equal length can be combined\n"
              "  pt + jet\n     ^");
    EXPECT_NE(refusal("pt[good] + jet").find("the lists [good] and jet have 0 and 1 values in row 1"),
              std::string::npos)
        << refusal("pt[good] + jet");
    EXPECT_NE(refusal("sum(jet[pairs(pt)])").find("the lists jet and pt have 2 and 3 values in row 0"),
              std::string::npos);
    EXPECT_NE(refusal("sort(jet, pt)").find("the lists jet and pt have 2 and 3 values in row 0"), std::string::npos);
    EXPECT_NE(refusal("jet[pt > 1]").find("the lists jet and pt have"), std::string::npos);
    EXPECT_NE(refusal("nearest(pt, jet, pt, pt)").find("the lists pt and jet have"), std::string::npos);
}

TEST(ListMistake, isFoundBeforeAnyRowIsRead) {
    const std::vector<std::pair<std::string, std::string>> mistakes{
        {"sort(n)", "a list is needed here, but this is a value of type integer"},
        {"sort()", "\"sort\" takes a list"},
        {"pt[good, 1]", "expected ]"},
        {"pt[1:2:3]", "expected ]"},
        {"pt['a']", "a position in a list must be a number"},
        {"pt[name]", "a position in a list must be a number"},
        {"pt[n > 0]", "a position in a list must be a number"},
        {"pt[:good]", "a bound of a slice must be a number"},
        {"n[0:1]", "a list is needed here"},
        {"pairs(n)", "a list is needed here"},
        {"pairs(pt, jet, pt)", "\"pairs\" takes one list or two"},
        {"pairs(pt)", "a list of combinations is not a column"},
        {"pt[pairs(pt)]", "a list of combinations is not a column"},
        {"pt[pairs(pt)] + pt[triples(pt)]", "pairs and triples cannot be combined with each other"},
        {"sum(pt[pairs(pt, jet)])", "these are positions in two lists"},
        {"pairs(pairs(pt))", "\"pairs\" does not take a list of combinations"},
        {"order(pt[pairs(pt)])", "combinations have no order"},
        {"pt[pt[pairs(pt)] > 1]", "take any(...) or all(...)"},
        {"sum(pairs(pt)[pairs(pt)])", "combinations cannot be taken from combinations"},
        {"third(pairs(pt))", "a pair has no third value"},
        {"first(pairs(pt), 0)", "no default is needed"},
        {"first(pt, jet)", "the default must be a single value"},
        {"concat(pt, name)", "a text and a number cannot be combined here"},
        {"concat(pt)", "\"concat\" takes two lists or more"},
        {"nearest(pt, n, pt, pt)", "must both be lists, or both be single values"},
        {"nearest(n, n, n, n)", "a list is needed here"},
        {"argmin(name)", "\"argmin\" does not take a list of type text"},
        {"reverse(pt, pt)", "\"reverse\" takes one list"},
        {"unique(n)", "a list is needed here"},
        {"#order(pt)", "unexpected character"}};
    for (const auto& [text, message] : mistakes) {
        EXPECT_NE(refusal(text).find(message), std::string::npos) << text << ": " << refusal(text);
    }
}

/// Limits combinations for the life of the object.
class Limit {
public:
    explicit Limit(std::uint64_t most) { Expression::limitCombinations(most); }
    ~Limit() { Expression::limitCombinations(Expression::defaultMaxCombinations); }
    Limit(const Limit&) = delete;
    Limit& operator=(const Limit&) = delete;
};

TEST(ListCombinations, overTheLimitAreRefusedBeforeTheyAreMade) {
    const Schema schema({{"a", ColumnType::Real, true}});
    Chunk chunk;
    chunk.rows = 2;
    chunk.firstRow = 10;
    chunk.columns = {column(Column::Reals(2'000'001, 1.0), {0, 1, 2'000'001})};
    for (const char* text : {"count(triples(a))", "count(pairs(a))", "count(pairs(a, a))"}) {
        try {
            Expression(text, schema).evaluate(chunk);
            ADD_FAILURE() << text;
        } catch (const Failure& failure) {
            EXPECT_NE(std::string(failure.what())
                          .find("there are more than 10000000 combinations in a chunk, which the "
                                "rows from 10 on exceed"),
                      std::string::npos)
                << failure.what();
        }
    }
}

TEST(ListCombinations, haveALimitThatIsSet) {
    {
        const Limit few(3);
        EXPECT_NE(refusal("count(pairs(pt))").find("more than 3 combinations"), std::string::npos);
    }
    const Limit enough(4);
    EXPECT_EQ(evaluated("count(pairs(pt))")->integers(), (Column::Integers{3, 0, 1}));
}

TEST(ListFunctions, giveARowTheSameBitsInAnyPlaceOfAChunk) {
    const Chunk all = manyEvents(3000);
    for (const char* text :
         {"sum(pt[good]) + eta[argmax(pt)]", "sum(sort(pt, -eta) * concat(eta, n)[:count(pt)])",
          "sum(sum(pt[pairs(pt)])) + count(unique(charge)) + sum(eta[reverse(order(pt))] * pt)",
          "mass(pt, eta, eta, 0.1) + sum(mass(pt[pairs(pt)[sum(charge[pairs(pt)]) == 0]], "
          "eta[pairs(pt)[sum(charge[pairs(pt)]) == 0]], "
          "eta[pairs(pt)[sum(charge[pairs(pt)]) == 0]], 0.1))",
          "sum(pt[first(pairs(pt, jet))] * jet[last(pairs(pt, jet))]) + sum(jet[nearest(pt, eta, jet, jet)])"}) {
        const Expression expression(text, events());
        const ColumnPtr whole = expression.evaluate(all);
        for (const std::size_t first : {1U, 63U, 64U, 1024U, 2999U}) {
            const ColumnPtr part = expression.evaluate(rowsFrom(all, first));
            for (std::size_t row = first; row < all.rows; ++row) {
                ASSERT_EQ(std::bit_cast<std::uint64_t>(part->reals()[row - first]),
                          std::bit_cast<std::uint64_t>(whole->reals()[row]))
                    << text << " row " << row;
            }
        }
    }
}

TEST(ListFunctions, agreeWithPlainLoops) {
    const Chunk all = manyEvents(3000);
    const auto pts = rowsIn(all.columns[1]->reals(), all.columns[1]->offsets);
    const auto charges = rowsIn(all.columns[3]->integers(), all.columns[3]->offsets);
    const auto listsOf = [&](const char* text) {
        const ColumnPtr made = Expression(text, events()).evaluate(all);
        return rowsIn(made->reals(), made->offsets);
    };
    const auto sorted = listsOf("sort(pt)");
    const auto opposite = listsOf("sum(pt[pairs(pt)])[sum(charge[pairs(pt)]) == 0]");
    const auto unique = listsOf("unique(pt)");
    const auto triples = listsOf("sum(pt[triples(pt)])");
    for (std::size_t row = 0; row < all.rows; ++row) {
        std::vector<double> pt = pts[row];
        std::vector<double> sums;
        std::vector<double> threes;
        std::vector<double> different;
        for (std::size_t i = 0; i < pt.size(); ++i) {
            if (std::find(different.begin(), different.end(), pt[i]) == different.end()) {
                different.push_back(pt[i]);
            }
            for (std::size_t j = i + 1; j < pt.size(); ++j) {
                if (charges[row][i] != charges[row][j]) {
                    sums.push_back(pt[i] + pt[j]);
                }
                for (std::size_t k = j + 1; k < pt.size(); ++k) {
                    threes.push_back(pt[i] + pt[j] + pt[k]);
                }
            }
        }
        std::sort(pt.begin(), pt.end());
        ASSERT_EQ(sorted[row], pt) << row;
        ASSERT_EQ(opposite[row], sums) << row;
        ASSERT_EQ(unique[row], different) << row;
        ASSERT_EQ(triples[row], threes) << row;
    }
}

TEST(ListFunctions, takeAChunkWithoutRows) {
    Chunk none;
    for (const ColumnPtr& each : someEvents().columns) {
        none.columns.push_back(keepRows(*each, {0, 0, 0}));
    }
    const ColumnPtr made = Expression("pt[first(pairs(pt))]", events()).evaluate(none);
    EXPECT_EQ(made->reals().size(), 0U);
    EXPECT_EQ(made->offsets, std::vector<std::uint64_t>{0});
}

TEST(Expression, computesEqualPartsOnce) {
    EXPECT_EQ(evaluated("(n + 1) * (n + 1) + (n + 1)")->integers(), (Column::Integers{6, 12, 2}));
    EXPECT_EQ(reals("pt * 2 + pt * 2 - pt * 2"), (Rows<double>{{40.0, 80.0, 60.0}, {}, {10.0, 14.0}}));
    EXPECT_EQ(evaluated("(1 + 2) * n + (1 + 2)")->integers(), (Column::Integers{6, 9, 3}));
    EXPECT_EQ(reals("(pt > 25 ? 1.5 : 0.5) * (pt > 25 ? 1.5 : 0.5)")[0], (std::vector<double>{0.25, 2.25, 2.25}));
}

}  // namespace
}  // namespace velmorak
