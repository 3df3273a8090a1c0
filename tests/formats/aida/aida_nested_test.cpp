#include <gmock/gmock.h>

#include "support.h"

/// Rows within rows, and tuples of tuples.
namespace velmorak {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

using Integers = Column::Integers;
using Reals = Column::Reals;
using Offsets = std::vector<std::uint64_t>;

class AidaNested : public AidaFiles {
protected:
    static std::string entry(const std::string& value) { return "<entry value='" + value + "'/>"; }
    static std::string row(const std::string& entries) { return "<row>" + entries + "</row>"; }
    static std::string nested(const std::string& rows) { return "<entryITuple>" + rows + "</entryITuple>"; }
    static std::string tuple(const std::string& columns, const std::string& rows) {
        return "<tuple name='t'><columns>" + columns + "</columns><rows>" + rows + "</rows></tuple>";
    }
    Rows read(const std::string& objects, const std::string& object = "") {
        return readRows(aidaWith(objects), object, run);
    }
    static std::vector<std::string> namesOf(const Schema& schema) {
        std::vector<std::string> names;
        for (const ColumnInfo& column : schema.columns()) {
            names.push_back(column.name);
        }
        return names;
    }
    static const Column& column(const Rows& rows, const std::string& name) {
        return rows.columns.at(rows.schema.find(name).value());
    }
};

const std::string tracksWithHits =
    "<column name='event' type='int'/><column name='trk' type='ITuple'><columns><column name='px'/>"
    "<column name='hits' type='ITuple'><columns><column name='x'/><column name='n' type='int'/></columns></column>"
    "<column name='q' type='int'/></columns></column>";

TEST_F(AidaNested, rowsWithinNestedRowsAreListsWithTheirCounts) {
    const std::string hits = nested(row(entry("5") + entry("50")) + row(entry("6") + entry("60")));
    const Rows rows = read(
        tuple(tracksWithHits,
              row(entry("1") +
                  nested(row(entry("0.5") + hits + entry("-1")) + row(entry("1.5") + "<entryITuple/>" + entry("1")) +
                         row(entry("2.5") + nested(row(entry("7") + entry("70"))) + entry("1")))) +
                  row(entry("2") + "<entryITuple/>") +
                  row(entry("3") + nested(row(entry("3.5") + nested(row(entry("8") + entry("80"))) + entry("-1"))))));
    EXPECT_THAT(namesOf(rows.schema),
                ElementsAre("event", "trk.px", "trk.hits.x", "trk.hits.n", "trk.hits.count", "trk.hits.row", "trk.q"));
    EXPECT_EQ(column(rows, "trk.px").offsets, (Offsets{0, 3, 3, 4}));
    EXPECT_EQ(column(rows, "trk.hits.x").reals(), (Reals{5, 6, 7, 8}));
    EXPECT_EQ(column(rows, "trk.hits.x").offsets, (Offsets{0, 3, 3, 4}));
    EXPECT_EQ(column(rows, "trk.hits.n").integers(), (Integers{50, 60, 70, 80}));
    EXPECT_EQ(column(rows, "trk.hits.count").integers(), (Integers{2, 0, 1, 1}));
    EXPECT_EQ(column(rows, "trk.hits.count").offsets, column(rows, "trk.px").offsets) << "one for each track";
    EXPECT_EQ(column(rows, "trk.hits.row").integers(), (Integers{0, 0, 2, 0}));
    EXPECT_EQ(column(rows, "trk.q").integers(), (Integers{-1, 1, 1, -1}));
    EXPECT_THAT(run.warnings, IsEmpty());
}

TEST_F(AidaNested, listsOfListsKeepTheEmptyOnes) {
    const Rows rows = read(tuple("<column name='v' type='ITuple' booking='{ITuple w = {int i}}'/>",
                                 row(nested(row(nested(row(entry("1")) + row(entry("2")))) + row("<entryITuple/>"))) +
                                     row("<entryITuple/>") + row(nested(row("")))));
    EXPECT_THAT(namesOf(rows.schema), ElementsAre("v.w", "v.w.count", "v.w.row"));
    EXPECT_EQ(column(rows, "v.w").integers(), (Integers{1, 2}));
    EXPECT_EQ(column(rows, "v.w").offsets, (Offsets{0, 2, 2, 2}));
    EXPECT_EQ(column(rows, "v.w.count").integers(), (Integers{2, 0, 0}));
    EXPECT_EQ(column(rows, "v.w.count").offsets, (Offsets{0, 2, 2, 3}));
    EXPECT_EQ(column(rows, "v.w.row").integers(), (Integers{0, 0}));
}

TEST_F(AidaNested, theThirdLevelCountsTheRowsOfTheSecond) {
    const std::string deep = "<column name='a' type='ITuple' booking='{ITuple b = {int n, ITuple c = {int i}}}'/>";
    const auto inner = [](const std::string& n, const std::string& i) { return row(entry(n) + nested(row(entry(i)))); };
    const Rows rows = read(
        tuple(deep, row(nested(row(nested(inner("1", "10") + inner("2", "20"))) + row(nested(inner("3", "30")))))));
    EXPECT_THAT(namesOf(rows.schema),
                ElementsAre("a.b.n", "a.b.c", "a.b.c.count", "a.b.c.row", "a.b.count", "a.b.row"));
    EXPECT_EQ(column(rows, "a.b.c").integers(), (Integers{10, 20, 30}));
    EXPECT_EQ(column(rows, "a.b.c.row").integers(), (Integers{0, 1, 2}));
    EXPECT_EQ(column(rows, "a.b.row").integers(), (Integers{0, 0, 1}));
}

TEST_F(AidaNested, oddEntriesLeaveTheListsInStep) {
    const Rows rows = read(tuple(
        tracksWithHits, row(entry("1") + nested(row(entry("0.5")) + row(entry("1") + entry("9") + entry("2")) +
                                                row(nested(row(entry("4"))) + nested(row(nested("") + entry("7"))) +
                                                    entry("3") + nested(row(entry("5")))))) +
                            row(entry("2"))));
    EXPECT_EQ(rows.failure, "");
    EXPECT_EQ(column(rows, "trk.px").valueCount(), 3U);
    EXPECT_EQ(column(rows, "trk.q").integers(), (Integers{0, 2, 3}));
    EXPECT_EQ(column(rows, "trk.hits.count").integers(), (Integers{0, 0, 1}));
    EXPECT_EQ(column(rows, "trk.hits.row").integers(), (Integers{2}));
    EXPECT_EQ(column(rows, "trk.hits.n").integers(), (Integers{7}));
}

TEST_F(AidaNested, damageWithinThemLeavesTheRowsBefore) {
    const std::string good =
        row(entry("1") + nested(row(entry("1") + nested(row(entry("5") + entry("50"))) + entry("1"))));
    const std::string text = "<aida>" + tuple(tracksWithHits, good + good + good);
    const Rows rows = readRows(fileWith(text.substr(0, text.find("</rows>") - 40)), "", run);
    EXPECT_EQ(rows.count(), 2U);
    EXPECT_EQ(column(rows, "trk.hits.row").integers(), (Integers{0, 0}));
    EXPECT_THAT(rows.failure, HasSubstr("after 2 complete rows"));
}

TEST_F(AidaNested, thoseThatAreTooDeepAreLeftOutWithAWarning) {
    std::string columns = "<column name='x' type='int'/>";
    for (int i = 0; i < 20; ++i) {
        columns = "<column name='n' type='ITuple'><columns>" + columns + "</columns></column>";
    }
    const Rows rows = read(tuple(columns, row("<entryITuple/>")));
    EXPECT_EQ(rows.count(), 1U);
    ASSERT_EQ(run.warnings.size(), 1U);
    EXPECT_THAT(run.warnings[0], HasSubstr("is nested too deeply and is left out"));
}

TEST_F(AidaNested, thoseWithoutEndTakeNoMoreThanOthers) {
    const auto nested = [](std::size_t times) {
        std::string open;
        std::string close;
        for (std::size_t i = 0; i < times; ++i) {
            open += "<column name='n' type='ITuple'><columns>";
            close += "</columns></column>";
        }
        return tuple(open + "<column name='x'/>" + close, row("<entryITuple/>"));
    };
    EXPECT_EQ(read(nested(400)).count(), 1U);
    EXPECT_THAT(failureOf([&] { read(nested(300'000)); }), HasSubstr("elements are nested deeper than 1000"));
}

class AidaChains : public AidaNested {
protected:
    static std::string member(const std::string& name, const std::string& rows) {
        return "<tuple name='" + name + "' path='/run'><columns><column name='x' type='int'/></columns><rows>" + rows +
               "</rows></tuple>";
    }
    static std::string chain(const std::string& name, const std::vector<std::string>& members) {
        std::string text = "<tuple name='" + name + "' path='/'>";
        for (const std::string& each : members) {
            text += "<tuple name='" + each + "' path='/run'/>";
        }
        return text + "</tuple>";
    }
    static std::string rowsFrom(int first, int count) {
        std::string text;
        for (int i = first; i < first + count; ++i) {
            text += row(entry(std::to_string(i)));
        }
        return text;
    }
};

TEST_F(AidaChains, giveTheRowsOfTheirTuplesInChunksOfOneLength) {
    const int many = static_cast<int>(chunkRows) - 1;
    const Rows rows = read(chain("all", {"b", "a", "none", "b"}) + member("a", rowsFrom(100000, 3)) +
                               member("b", rowsFrom(0, many)) + member("none", ""),
                           "/all");
    EXPECT_EQ(rows.failure, "");
    ASSERT_EQ(rows.count(), 2 * chunkRows + 1);
    EXPECT_EQ(rows.chunks, (std::vector<std::size_t>{chunkRows, chunkRows, 1}));
    EXPECT_EQ(rows.columns[0].integers()[chunkRows - 1], 100000);
    EXPECT_EQ(rows.columns[0].integers()[chunkRows + 2], 0);
    EXPECT_EQ(rows.columns[0].integers().back(), many - 1);
}

TEST_F(AidaChains, mayNameChains) {
    const Rows rows = read("<tuple name='all'><tuple name='some'/><tuple name='b' path='run/'/></tuple>" +
                               chain("some", {"a", "b"}) + member("a", rowsFrom(0, 2)) + member("b", rowsFrom(5, 1)),
                           "/all");
    EXPECT_EQ(rows.columns[0].integers(), (Integers{0, 1, 5, 5}));
}

TEST_F(AidaChains, thatCannotBeFollowedSayWhy) {
    const auto failing = [&](const std::string& objects) {
        return failureOf([&] {
            const Rows rows = read(objects, "/all");
            if (!rows.failure.empty()) {
                throw Failure(rows.failure);
            }
        });
    };
    EXPECT_THAT(
        failing(chain("all", {"a", "gone"}) + member("a", rowsFrom(0, 2))),
        HasSubstr("contains no object /run/gone; it contains /all (tuple), /run/a (tuple) (after 2 complete rows)"));
    EXPECT_THAT(failing("<tuple name='all'><tuple name='all'/></tuple>"),
                HasSubstr("of more than 1000 tuples, or of itself"));
    EXPECT_THAT(failing(chain("all", {"a", "b"}) + member("a", rowsFrom(0, 2)) +
                        "<tuple name='b' path='/run'><columns><column name='y'/></columns><rows/></tuple>"),
                HasSubstr("/run/b has other columns than the previous tuples of its chain (after 2 complete rows)"));
    EXPECT_THAT(failing(chain("all", {"h"}) + "<histogram1d name='h' path='/run'/>"), HasSubstr("not a table"));
}

}  // namespace
}  // namespace velmorak
