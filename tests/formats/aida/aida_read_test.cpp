#include <gmock/gmock.h>

#include <cmath>
#include <limits>

#include "support.h"

#include "aida/read/AidaTableReader.h"

#include <velmorak/ChunkSize.h>

namespace velmorak {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

using AidaTables = AidaFiles;

std::vector<std::string> namesOf(const Schema& schema) {
    std::vector<std::string> names;
    for (const ColumnInfo& column : schema.columns()) {
        names.push_back(column.name);
    }
    return names;
}

TEST_F(AidaTables, areReadWithTheTypesOfTheirColumns) {
    const Rows rows = readRows(ownFile("tuple.aida"), "", run);
    EXPECT_THAT(namesOf(rows.schema), ElementsAre("run", "energy", "good", "tag"));
    EXPECT_EQ(rows.columns[0].integers(), (Column::Integers{7, 8}));
    EXPECT_EQ(rows.columns[1].reals()[0], 13.5);
    EXPECT_TRUE(std::isnan(rows.columns[1].reals()[1]));
    EXPECT_EQ(rows.columns[2].booleans(), (Column::Booleans{1, 0}));
    EXPECT_EQ(rows.columns[3].texts(), (Column::Texts{"muon <ch 2>", ""}));
    EXPECT_THAT(run.warnings, IsEmpty());
}

/// Rows as most programs write them, one with a comment that takes the slow way, and one with a bad number.
std::string rowsOfTwoColumns() {
    std::string rows;
    for (int i = 0; i < 1000; ++i) {
        rows += R"(<row><entry value=")" + std::to_string(i) + R"("/><entry value="1.5"/>)" +
                (i == 500 ? "<!-- slow -->" : "") + "</row>\n";
    }
    return R"(<tuple name="t"><columns><column name="n" type="int"/><column name="x" type="double"/></columns><rows>)" +
           rows + R"(<row><entry value="1000"/><entry value="bad"/></row></rows></tuple>)";
}

TEST_F(AidaTables, passOverColumnsThatNobodyNeeds) {
    const std::filesystem::path file = aidaWith(rowsOfTwoColumns());
    EXPECT_THAT(readRows(file, "", run).failure, HasSubstr("\"bad\" in column \"x\""));
    for (const io::RowReading reading : {io::RowReading::Scanned, io::RowReading::Parsed}) {
        const std::unique_ptr<TableReader> reader = io::openAidaTable(file, "", run, reading);
        reader->selectColumns({true, false});
        Chunk chunk;
        ASSERT_TRUE(reader->next(chunk));
        EXPECT_EQ(chunk.rows, 1001U);
        EXPECT_EQ(chunk.columns[0]->integers().back(), 1000);
        EXPECT_EQ(chunk.columns[1], nullptr);
        EXPECT_FALSE(reader->next(chunk));
    }
}

TEST_F(AidaTables, giveNestedRowsAsListColumnsInEveryDialect) {
    const Rows standard = readRows(ownFile("tuple_nested.aida"), "", run);
    EXPECT_THAT(namesOf(standard.schema), ElementsAre("event", "trk.px", "trk.nHits"));
    EXPECT_EQ(standard.columns[1].reals(), (Column::Reals{0.5, -1.25}));
    EXPECT_EQ(standard.columns[2].integers(), (Column::Integers{3, 9}));
    EXPECT_EQ(standard.columns[2].offsets, (std::vector<std::uint64_t>{0, 2, 2}));
    for (const char* name : {"trap_jas32_style_nested.aida", "trap_pi_style_nested.aida"}) {
        const Rows rows = readRows(ownFile(name), "/10", run);
        EXPECT_THAT(namesOf(rows.schema), ElementsAre("n", "trk.px", "trk.py", "trk.q")) << name;
        EXPECT_EQ(rows.columns[2].reals(), (Column::Reals{2.0})) << name;
        EXPECT_EQ(rows.columns[3].integers(), (Column::Integers{-1})) << name;
    }
    const Rows booked = readRows(ownFile("trap_geant4_style.xml"), "nt", run);
    EXPECT_THAT(namesOf(booked.schema), ElementsAre("e", "v"));
    EXPECT_EQ(booked.columns[1].reals(), (Column::Reals{0.5, 0.25}));
    EXPECT_TRUE(booked.schema[1].isList);
}

TEST_F(AidaTables, areReadFromGzipWhateverTheName) {
    for (const char* name : {"all.aida", "all.gz.aida", "multimember.gz.aida"}) {
        const Rows rows = readRows(ownFile(name), "/data/events", run);
        EXPECT_EQ(rows.columns[0].integers(), (Column::Integers{7, 8})) << name;
        EXPECT_EQ(rows.failure, "") << name;
    }
}

TEST_F(AidaTables, areAlsoWhatACloudHolds) {
    const Rows one = readRows(ownFile("all.aida"), "/clouds/t0", run);
    EXPECT_THAT(namesOf(one.schema), ElementsAre("x", "weight"));
    EXPECT_EQ(one.columns[0].reals(), (Column::Reals{1.5, -2.25}));
    EXPECT_EQ(one.columns[1].reals(), (Column::Reals{1.0, 0.5}));
    const Rows three = readRows(ownFile("cloud3d.aida"), "", run);
    EXPECT_THAT(namesOf(three.schema), ElementsAre("x", "y", "z", "weight"));
    EXPECT_EQ(three.columns[2].reals(), (Column::Reals{3.0}));
}

TEST_F(AidaTables, areRefusedWhereACloudHasBecomeAHistogram) {
    const std::string failure = failureOf([&] { readRows(ownFile("cloud1d_converted.aida"), "", run); });
    EXPECT_THAT(failure, HasSubstr("/clouds/t1 was converted to a histogram"));
}

TEST_F(AidaTables, areChosenByPathOrByNameWhereItIsTheOnlyOne) {
    for (const char* object : {"/data/events", "data/events", "events", "//data//events/"}) {
        EXPECT_EQ(readRows(ownFile("all.aida"), object, run).count(), 2U) << object;
    }
}

TEST_F(AidaTables, areListedWhereNoneFits) {
    const std::string several = failureOf([&] { readRows(ownFile("all.aida"), "", run); });
    EXPECT_THAT(several, HasSubstr("/clouds/t0 (cloud1d), /clouds/t1 (cloud1d)"));
    EXPECT_THAT(several, HasSubstr("/data/tracks (tuple)"));
    EXPECT_THAT(failureOf([&] { readRows(ownFile("all.aida"), "/nothing", run); }), HasSubstr("/data/events (tuple)"));
    EXPECT_THAT(failureOf([&] { readRows(ownFile("all.aida"), "nothing", run); }), HasSubstr("/data/events (tuple)"));
    EXPECT_THAT(failureOf([&] { readRows(ownFile("all.aida"), "/run1/energy", run); }),
                HasSubstr("/run1/energy is a histogram1d, not a table"));
    EXPECT_THAT(failureOf([&] { readRows(ownFile("histogram1d.aida"), "", run); }),
                HasSubstr("contains no tuple or cloud; it contains /run1/energy (histogram1d)"));
}

TEST_F(AidaTables, ofOneNameMustBeChosenByTheWholePath) {
    const auto file = aidaWith(
        "<tuple name='t' path='/a'><columns><column name='x'/></columns><rows/></tuple>"
        "<tuple name='t' path='/b'><columns><column name='x'/></columns><rows/></tuple>");
    EXPECT_THAT(failureOf([&] { readRows(file, "t", run); }), HasSubstr("enter the full path of one"));
    EXPECT_EQ(readRows(file, "/b/t", run).count(), 0U);
}

TEST_F(AidaTables, ofOnePathAreToldApart) {
    const auto file = aidaWith(
        "<tuple name='t' path=''><columns><column name='x'/></columns><rows/></tuple>"
        "<tuple name='t'><columns><column name='x'/></columns><rows><row><entry value='1'/></row></rows></tuple>");
    EXPECT_EQ(readRows(file, "/t;2", run).count(), 1U);
    EXPECT_THAT(run.warnings, Contains(HasSubstr("more than one object /t; this one is called /t;2")));
}

TEST_F(AidaTables, comeInChunksOfFixedLength) {
    std::string text = "<tuple name='t'><columns><column name='i' type='int'/></columns><rows>";
    const std::size_t count = 2 * chunkRows + 5;
    for (std::size_t row = 0; row < count; ++row) {
        text += "<row><entry value=\"" + textOf(static_cast<double>(row)) + "\"/></row>\n";
    }
    const Rows rows = readRows(aidaWith(text + "</rows></tuple>"), "", run);
    EXPECT_THAT(rows.chunks, ElementsAre(chunkRows, chunkRows, 5U));
    for (std::size_t row = 0; row < count; ++row) {
        ASSERT_EQ(rows.columns[0].integers()[row], static_cast<std::int64_t>(row));
    }
}

TEST_F(AidaTables, fillMissingEntriesAndLeaveOutExtraOnes) {
    const auto file = aidaWith(
        "<tuple name='t'><columns><column name='a=2.5 '/><column name=' b '/><column name='n=3' type='int'/>"
        "<column name='f=true' type='boolean'/><column name='s=&quot;no=ne&quot;' type='string'/></columns><rows>"
        "<row/><row><entry value='1'/><entry value='2'/><entry value='3'/><entry value='0'/><entry value='x'/>"
        "<entry value='9'/></row><row><entry/><entry value='7'/><entry value='1'/><entry/><entry value='y'/></row>"
        "</rows></tuple>");
    const Rows rows = readRows(file, "", run);
    EXPECT_THAT(namesOf(rows.schema), ElementsAre("a", "b", "n", "f", "s"));
    EXPECT_EQ(rows.columns[0].reals(), (Column::Reals{2.5, 1.0, 2.5}));
    EXPECT_TRUE(std::isnan(rows.columns[1].reals()[0]));
    EXPECT_EQ(rows.columns[2].integers(), (Column::Integers{3, 3, 1}));
    EXPECT_EQ(rows.columns[3].booleans(), (Column::Booleans{1, 0, 1}));
    EXPECT_EQ(rows.columns[4].texts(), (Column::Texts{"no=ne", "x", "y"}));
    EXPECT_THAT(run.warnings, ElementsAre(HasSubstr("more entries than columns")));
}

TEST_F(AidaTables, knowEveryDialectOfTypesAndNumbers) {
    const auto file = aidaWith(
        "<tuple name='t'><columns><column name='l' type='long'/><column name='b' type='Boolean'/>"
        "<column name='c' type='char'/><column name='s' type='java.lang.String'/><column name='d' type='float'/>"
        "<column name='u' type='unsigned int'/></columns><rows>"
        "<row><entry value='-9223372036854775808'/><entry value='TRUE'/><entry value='&#233;t'/><entry value='a'/>"
        "<entry value=' +1.0E-9 '/><entry value='3.0'/></row>"
        "<row><entry value='9223372036854775807'/><entry value='0'/><entry value=''/><entry value='b'/>"
        "<entry value='-Infinity'/><entry value='1e5'/></row></rows></tuple>");
    const Rows rows = readRows(file, "", run);
    using Limits = std::numeric_limits<std::int64_t>;
    EXPECT_EQ(rows.columns[0].integers(), (Column::Integers{Limits::min(), Limits::max()}));
    EXPECT_EQ(rows.columns[1].booleans(), (Column::Booleans{1, 0}));
    EXPECT_EQ(rows.columns[2].texts(), (Column::Texts{"é", ""}));
    EXPECT_EQ(rows.columns[4].reals(), (Column::Reals{1e-9, -std::numeric_limits<double>::infinity()}));
    EXPECT_EQ(rows.columns[5].integers(), (Column::Integers{3, 100'000}));
    EXPECT_THAT(run.warnings, IsEmpty());
}

TEST_F(AidaTables, skipUnknownElementsWithOneWarningEach) {
    const auto file = aidaWith(
        "<strange><row/></strange><strange/><!-- a comment -->"
        "<tuple name='t'><annotation><item key='a' value='b'/></annotation><columns><column name='x'/></columns>"
        "<rows><odd/><row><entry value='1'><inner/></entry></row></rows></tuple>");
    EXPECT_EQ(readRows(file, "", run).count(), 1U);
    EXPECT_THAT(run.warnings,
                ElementsAre(HasSubstr("<strange> is skipped"), HasSubstr("<odd> is skipped"), HasSubstr("<inner> is")));
}

TEST_F(AidaTables, takeTheEntitiesAndDefaultsOfTheDocumentTypeWithoutReadingIt) {
    const std::string tuple =
        "<tuple name='t'><columns><column name='x'/></columns><rows><row><entry "
        "value='&OVERFLOW;'/></row></rows></tuple>";
    const std::string aida = "<aida version='3.3'>" + tuple + "</aida>";
    for (const std::string& type :
         {std::string(), std::string("<!DOCTYPE aida SYSTEM \"http://aida.freehep.org/schemas/3.3/aida.dtd\">"),
          std::string("<!DOCTYPE aida SYSTEM \"/nowhere/aida.dtd\" [<!ENTITY own \"1\">]>"),
          std::string("<!DOCTYPE aida [<!ENTITY own \"1\">]>")}) {
        const Rows rows = readRows(fileWith("<?xml version=\"1.0\"?>" + type + aida), "", run);
        EXPECT_EQ(rows.columns[0].reals(), (Column::Reals{-1.0})) << type;
    }
}

TEST_F(AidaTables, openNoOtherFile) {
    const auto secret = folder / "secret";
    const auto file = fileWith("<!DOCTYPE aida [<!ENTITY % more SYSTEM \"" + secret.string() +
                               "\"> %more; <!ENTITY other SYSTEM \"" + secret.string() +
                               "\">]><aida><tuple name='t'><columns><column name='x'/></columns><rows>&other;<row>"
                               "<entry value='1'/></row></rows></tuple></aida>");
    EXPECT_EQ(readRows(file, "", run).count(), 1U);
    EXPECT_THAT(run.warnings, Contains(HasSubstr("reference to another file")));
}

TEST_F(AidaTables, areReadInTheEncodingThatTheFileDeclares) {
    const auto bytesIn = [&](const std::string& declaration, const std::string& bytes) {
        const std::string tuple =
            "<aida><tuple name='t'><columns><column name='s' type='string'/></columns><rows><row>"
            "<entry value='" +
            bytes + "'/></row></rows></tuple></aida>";
        return readRows(fileWith(declaration + tuple), "", run).columns[0].texts()[0];
    };
    EXPECT_EQ(bytesIn("<?xml version='1.0' encoding='ISO-8859-1'?>", "\xE9"), "é");
    EXPECT_EQ(bytesIn("<?xml version='1.0' encoding='windows-1252'?>", "\x80"), "€");
    EXPECT_EQ(bytesIn("<?xml version='1.0' encoding='koi8-r'?>", "\xC1"), "а");
    EXPECT_EQ(bytesIn("\xEF\xBB\xBF<?xml version='1.0' encoding=\"utf-8\"?>\r\n", "é"), "é");
    EXPECT_THAT(run.warnings, IsEmpty());
    EXPECT_EQ(bytesIn("<?xml version='1.0' encoding='UTF-8'?>", "\xE9 é"), "é é");
    EXPECT_THAT(run.warnings, ElementsAre(HasSubstr("not valid UTF-8")));
    EXPECT_THAT(failureOf([&] { bytesIn("<?xml version='1.0' encoding='klingon'?>", "x"); }), HasSubstr("encoding"));
}

/// A tuple whose rows take the same number of bytes each.
std::string tupleOf(std::size_t rows) {
    std::string text = "<tuple name='t'><columns><column name='x'/></columns><rows>\n";
    for (std::size_t row = 0; row < rows; ++row) {
        text += "<row><entry value=\"" + std::to_string(100'000 + row) + "\"/></row>\n";
    }
    return text + "</rows></tuple>\n";
}

TEST_F(AidaTables, knowWhichFractionOfTheFileHasBeenRead) {
    const std::size_t rows = 10 * chunkRows;
    const auto file = aidaWith(tupleOf(rows));
    for (const io::RowReading reading : {io::RowReading::Scanned, io::RowReading::Parsed}) {
        const auto reader = io::openAidaTable(file, "", run, reading);
        Chunk chunk;
        std::size_t rowsRead = 0;
        while (reader->next(chunk)) {
            rowsRead += chunk.rows;
            EXPECT_NEAR(reader->fraction().value(), static_cast<double>(rowsRead) / static_cast<double>(rows), 0.15);
        }
        EXPECT_EQ(rowsRead, rows);
        EXPECT_EQ(reader->fraction(), 1.0);
    }
}

TEST_F(AidaTables, stopInTheMiddleOfReadingWhenTheRunStops) {
    const auto file = aidaWith(tupleOf(3 * chunkRows));
    for (const io::RowReading reading : {io::RowReading::Scanned, io::RowReading::Parsed}) {
        run.stopping = false;
        const auto reader = io::openAidaTable(file, "", run, reading);
        Chunk chunk;
        ASSERT_TRUE(reader->next(chunk));
        run.stopping = true;
        EXPECT_THROW(reader->next(chunk), Stopped);
    }
}

TEST_F(AidaTables, areNotOpenedWhenTheRunStops) {
    run.stopping = true;
    EXPECT_THROW(openAidaTable(ownFile("tuple.aida"), "", run), Stopped);
}

TEST_F(AidaTables, mayStandBesideEveryOtherKindOfObject) {
    std::vector<std::string> paths;
    for (const AidaEntry& entry : listAida(ownFile("all.aida"), run)) {
        paths.push_back(entry.path + " " + entry.element);
    }
    EXPECT_THAT(
        paths, ElementsAre("/run1/energy histogram1d", "/run1/pt histogram1d", "/xy histogram2d", "/cube histogram3d",
                           "/clouds/t0 cloud1d", "/clouds/t1 cloud1d", "/clouds/hits cloud2d", "/clouds/points cloud3d",
                           "/calib/gain profile1d", "/calib/map profile2d", "/REF/DEMO/d01 dataPointSet",
                           "/fits/line function", "/data/events tuple", "/data/tracks tuple"));
    EXPECT_EQ(listAida(ownFile("all.aida"), run)[12].schema, readRows(ownFile("tuple.aida"), "", run).schema);
}

/// A file with one tuple after the other, of many rows and of few, of the same columns and of others.
std::string tuplesOfAllForms() {
    std::string text;
    for (int tuple = 0; tuple < 12; ++tuple) {
        const bool isOdd = tuple % 2 == 1;
        text += "<tuple name='t" + std::to_string(tuple) + "'><columns><column name='x'/><column name='n' type='" +
                (isOdd ? "string" : "int") + "'/></columns><rows>\n";
        for (int row = 0; row < (tuple % 3 == 0 ? 20000 : 3); ++row) {
            text += "<row><entry value=\"" + std::to_string(row) + "\"/><entry value=\"" + (isOdd ? "a" : "1") +
                    "\"/></row>\n" + (row % 777 == 5 ? "<!-- </rows></tuple> --><row><odd/></row>" : "");
        }
        text += "</rows></tuple>\n";
        if (tuple == 7) {
            text += "<cloud1d name='c' maxEntries='-1'><entries1d><entry1d valueX='1'/></entries1d></cloud1d>";
        }
    }
    return text;
}

TEST_F(AidaTables, areListedWithoutLookingIntoTheirRows) {
    const auto file = aidaWith(tuplesOfAllForms());
    std::vector<std::string> paths;
    for (const AidaEntry& entry : listAida(file, run)) {
        paths.push_back(entry.path);
        EXPECT_EQ(entry.schema.size(), 2U);
    }
    EXPECT_THAT(
        paths, ElementsAre("/t0", "/t1", "/t2", "/t3", "/t4", "/t5", "/t6", "/t7", "/c", "/t8", "/t9", "/t10", "/t11"));
    EXPECT_EQ(readRows(file, "t9", run).count(), 20000U + 26);
    EXPECT_EQ(readRows(file, "/t0", run).count(), 20000U + 26);
    EXPECT_EQ(readRows(file, "t1", run).columns[1].texts(), (Column::Texts{"a", "a", "a"}));
}

}  // namespace
}  // namespace velmorak
