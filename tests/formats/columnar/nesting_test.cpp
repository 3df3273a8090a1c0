#include <columnar/Columns.h>
#include <columnar/Nesting.h>

#include <velmorak/Failure.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace velmorak::columnar {
namespace {

using testing::ElementsAre;

std::vector<std::string> namesOf(const std::vector<NestedColumn>& columns) {
    std::vector<std::string> names;
    for (const NestedColumn& column : columns) {
        names.push_back(column.name);
    }
    return names;
}

LeafPlace leaf(const std::string& name, std::vector<ListPlace> lists = {}) {
    return {.name = name, .complaint = {}, .lists = std::move(lists)};
}

TEST(NestedColumns, areThoseOfTheLeavesWithoutListsInLists) {
    EXPECT_THAT(namesOf(nestedColumns({leaf("x"), leaf("xs", {{1, "xs"}})})), ElementsAre("x", "xs"));
}

TEST(NestedColumns, countTheInnermostListsFirst) {
    const std::vector<ListPlace> lists{{1, "x"}, {2, "x"}, {3, "x"}};
    const std::vector<NestedColumn> columns = nestedColumns({leaf("x", lists)});
    EXPECT_THAT(namesOf(columns), ElementsAre("x", "x.count", "x.row", "x.count.count", "x.count.row"));
    EXPECT_EQ(columns[1].part, NestedColumn::Part::Counts);
    EXPECT_EQ(columns[1].list, 2U);
    EXPECT_EQ(columns[4].part, NestedColumn::Part::Rows);
    EXPECT_EQ(columns[4].list, 1U);
}

TEST(NestedColumns, countTheListsInStructuresAfterTheirLastLeaf) {
    const std::vector<NestedColumn> columns =
        nestedColumns({leaf("trk.pt", {{1, "trk"}}), leaf("trk.hits.x", {{1, "trk"}, {2, "trk.hits"}}),
                       leaf("trk.hits.y", {{1, "trk"}, {2, "trk.hits"}}), leaf("trk.q", {{1, "trk"}})});
    EXPECT_THAT(namesOf(columns),
                ElementsAre("trk.pt", "trk.hits.x", "trk.hits.y", "trk.hits.count", "trk.hits.row", "trk.q"));
}

TEST(NestedColumns, countByALeafInAsFewListsAsPossible) {
    const std::vector<NestedColumn> columns =
        nestedColumns({leaf("x.deep", {{1, "x"}, {2, "x"}, {3, "x.deep"}}), leaf("x.plain", {{1, "x"}, {2, "x"}})});
    EXPECT_THAT(namesOf(columns), ElementsAre("x.deep", "x.deep.count", "x.deep.row", "x.plain", "x.count", "x.row"));
    EXPECT_EQ(columns[1].leaf, 0U);
    EXPECT_EQ(columns[4].leaf, 1U);
}

TEST(NestedColumns, countByALeafThatCanBeRead) {
    LeafPlace span = leaf("x.span", {{1, "x"}, {2, "x"}});
    span.complaint = "it is too odd";
    const std::vector<NestedColumn> columns = nestedColumns({span, leaf("x.y", {{1, "x"}, {2, "x"}, {3, "x.y"}})});
    EXPECT_EQ(columns[0].complaint, "it is too odd");
    EXPECT_EQ(columns[4].name, "x.count");
    EXPECT_EQ(columns[4].leaf, 1U);
    EXPECT_EQ(columns[4].complaint, "");
    EXPECT_EQ(nestedColumns({span})[1].complaint, "it is too odd");
}

TEST(NestedColumns, leaveTheirNamesToColumnsOfTheFile) {
    const std::vector<ListPlace> lists{{1, "x"}, {2, "x"}};
    EXPECT_THAT(namesOf(nestedColumns({leaf("x.count", lists), leaf("x.z", lists)})),
                ElementsAre("x.count", "x.z", "x.count_2", "x.row"));
}

TEST(ListValues, areAsManyAsTheirBytesJustify) {
    constexpr std::uint64_t million = std::uint64_t{1} << 20U;
    EXPECT_NO_THROW(checkListValues(100 * million, 0));
    EXPECT_NO_THROW(checkListValues(1000 * million, 16 * million));
    EXPECT_THROW(checkListValues(1000 * million, 15 * million), Failure);
    EXPECT_THROW(checkListValues(3000 * million, 24000 * million), Failure);
}

}  // namespace
}  // namespace velmorak::columnar
