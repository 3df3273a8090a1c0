#include "QuietContext.h"

#include "hepmc/EventTable.h"

#include <velmorak/TemporaryFolder.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <cmath>
#include <fstream>

namespace velmorak {
namespace {

using testing::ElementsAre;

/// A decay Z -> mu+ mu-, the Z from two quarks, in each format. The second event has a quark and nothing else.
constexpr const char* versionTwo =
    "\nHepMC::Version 2.06.09\n"
    "HepMC::IO_GenEvent-START_EVENT_LISTING\n"
    "E 7 -1 91.5 0.118 0.0078 221 -1 2 1 2 0 2 1.5 2.5\n"
    "N 2 \"0\" \"1\"\n"
    "U MEV MM\n"
    "C 1.0e+03 1.0e+01\n"
    "V -1 0 0 0 0 0 2 1 0\n"
    "P 1 2 0 0 45000 45000 0 21 0 0 -1 0\n"
    "P 2 -2 0 0 -45000 45000 0 21 0 0 -1 0\n"
    "P 3 23 0 0 0 90000 90000 22 0 0 -2 0\n"
    "V -2 0 0 0 0 0 0 2 0\n"
    "P 4 13 30000 0 0 45000 105.66 1 0 0 0 0\n"
    "P 5 -13 -30000 0 0 45000 105.66 1 0 0 0 0\n"
    "E 8 -1 -1 0.1 0.1 0 0 1 0 0 1 42 0\n"
    "V -1 0 0 0 0 0 1 0 0\n"
    "P 1 1 0 0 1500 1500 0 1 0 0 0 0\n"
    "HepMC::IO_GenEvent-END_EVENT_LISTING\n";

constexpr const char* versionThree =
    "HepMC::Version 3.02.05\n"
    "HepMC::Asciiv3-START_EVENT_LISTING\n"
    "W 0\\n1\n"
    "E 7 2 5\n"
    "U GEV MM\n"
    "W 1.5 2.5\n"
    "A 0 event_scale 91.5\n"
    "A 0 signal_process_id 221\n"
    "P 1 0 2 0 0 45 45 0 21\n"
    "P 2 0 -2 0 0 -45 45 0 21\n"
    "V -1 0 [1,2] @ 0 0 0 0\n"
    "P 3 -1 23 0 0 0 90 90 22\n"
    "P 4 3 13 30 0 0 45 0.10566 1\n"
    "P 5 3 -13 -30 0 0 45 0.10566 1\n"
    "E 8 0 1\n"
    "P 1 0 1 0 0 1.5 1.5 0 1\n"
    "HepMC::Asciiv3-END_EVENT_LISTING\n";

constexpr const char* lesHouches =
    "<LesHouchesEvents version=\"3.0\">\n"
    "<header>\n<!-- an <event> is below -->\n</header>\n"
    "<init>\n2212 2212 6500 6500 0 0 0 0 3 1\n1 0.1 1.0 1\n</init>\n"
    "<event>\n"
    "  5 221 1.5 91.5 0.0078 0.118\n"
    "  2 -1 0 0 501 0  0 0 45 45 0 0 9\n"
    " -2 -1 0 0 0 501  0 0 -45 45 0 0 9\n"
    " 23  2 1 2 0 0  0 0 0 90 90 0 9\n"
    " 13  1 3 3 0 0  30 0 0 45 0.10566 0 9\n"
    "-13  1 3 3 0 0  -30 0 0 45 0.10566 0 9\n"
    "# a remark\n"
    "<rwgt>\n<wgt id='1001'> 2.5 </wgt>\n</rwgt>\n"
    "</event>\n"
    "<event npLO=\" 1 \">\n1 0 1 1.0 1 1\n1 1 0 0 0 0 0 0 1.5 1.5 0 0 9\n</event>\n"
    "</LesHouchesEvents>\n";

class Events : public testing::Test {
protected:
    void write(const std::string& text) const { std::ofstream(file, std::ios::binary) << text; }

    std::vector<Chunk> read() {
        const std::unique_ptr<TableReader> reader = openEvents(file, context);
        schema = reader->schema();
        std::vector<Chunk> chunks;
        for (Chunk chunk; reader->next(chunk); chunk = {}) {
            chunks.push_back(chunk);
        }
        return chunks;
    }

    std::string failure() {
        try {
            read();
        } catch (const Failure& failure) {
            const std::string text = failure.what();
            return text.substr(text.find("data.txt"));
        }
        return "no failure";
    }

    const Column& column(const Chunk& chunk, const std::string& name) {
        return *chunk.columns[schema.find(name).value()];
    }

    TemporaryFolder folder{"events-test"};
    const std::filesystem::path file = folder.path() / "data.txt";
    QuietContext context;
    Schema schema;
};

TEST_F(Events, areTheSameInAllFormats) {
    for (const std::string text : {versionTwo, versionThree, lesHouches}) {
        write(text);
        const std::vector<Chunk> chunks = read();
        ASSERT_EQ(chunks.size(), 1U) << text;
        const Chunk& chunk = chunks[0];
        ASSERT_EQ(chunk.rows, 2U) << text;
        EXPECT_THAT(column(chunk, "pdg").integers(), ElementsAre(2, -2, 23, 13, -13, 1)) << text;
        EXPECT_THAT(column(chunk, "pdg").offsets, ElementsAre(0, 5, 6)) << text;
        EXPECT_THAT(column(chunk, "mother").integers(), ElementsAre(-1, -1, 0, 2, 2, -1)) << text;
        EXPECT_THAT(column(chunk, "px").reals(), ElementsAre(0, 0, 0, 30, -30, 0)) << text;
        EXPECT_THAT(column(chunk, "pz").reals()[1], -45.0) << text;
        EXPECT_THAT(column(chunk, "e").reals()[2], 90.0) << text;
        EXPECT_DOUBLE_EQ(column(chunk, "m").reals()[3], 0.10566) << text;
        EXPECT_EQ(column(chunk, "weight").reals()[0], 1.5) << text;
        EXPECT_EQ(column(chunk, "weight").reals()[1], 1.0) << text;
        EXPECT_EQ(column(chunk, "weights").reals()[1], 2.5) << text;
        EXPECT_EQ(column(chunk, "scale").reals()[0], 91.5) << text;
        EXPECT_EQ(column(chunk, "process").integers()[0], 221) << text;
        EXPECT_EQ(schema[schema.find("px").value()].unit, "GeV");
    }
}

TEST_F(Events, haveTheirNumbers) {
    write(versionTwo);
    EXPECT_THAT(column(read()[0], "event").integers(), ElementsAre(7, 8));
    EXPECT_THAT(column(read()[0], "status").integers(), ElementsAre(21, 21, 22, 1, 1, 1));
    write(versionThree);
    EXPECT_THAT(column(read()[0], "event").integers(), ElementsAre(7, 8));
    EXPECT_TRUE(std::isnan(column(read()[0], "scale").reals()[1]));
    write(lesHouches);
    EXPECT_THAT(column(read()[0], "event").integers(), ElementsAre(0, 1));
}

TEST_F(Events, ofFullChunksAreFollowedByMore) {
    std::string text = "HepMC::Asciiv3-START_EVENT_LISTING\n";
    for (int event = 0; event < 40'000; ++event) {
        text += "E " + std::to_string(event) + " 0 1\nP 1 0 11 0 0 1 1 0 1\n";
    }
    write(text);
    const std::vector<Chunk> chunks = read();
    ASSERT_EQ(chunks.size(), 2U);
    EXPECT_EQ(chunks[0].rows, chunkRows);
    EXPECT_EQ(column(chunks[1], "event").integers().back(), 39'999);
}

TEST_F(Events, damageIsNamedByItsLineAfterTheEventsBeforeIt) {
    const std::string good = "HepMC::Asciiv3-START_EVENT_LISTING\nE 1 0 1\nP 1 0 11 0 0 1 1 0 1\n";
    write(good + "E 2 0 2\nP 1 0 11 0 0 1 1 0 1\n");
    EXPECT_EQ(failure(), "data.txt\", line 5: the event before has 1 particles instead of 2; the file ends in it");
    const std::unique_ptr<TableReader> reader = openEvents(file, context);
    Chunk chunk;
    EXPECT_TRUE(reader->next(chunk));
    EXPECT_EQ(chunk.rows, 1U);
    EXPECT_THROW(reader->next(chunk), Failure);
    write(good + "E 2 0 1\nP 1 0 11 0 0 x 1 0 1\n");
    EXPECT_EQ(failure(), "data.txt\", line 5: \"x\" is not a number");
    write(good + "E 2 0 1\nP 1 0 11 0\n");
    EXPECT_EQ(failure(), "data.txt\", line 5: the line is too short");
    write(good + "E 2 0 1\nU TEV MM\n");
    EXPECT_EQ(failure(), "data.txt\", line 5: the unit \"TEV\" is neither GEV nor MEV");
    write("HepMC::IO_GenEvent-START_EVENT_LISTING\nE 7 -1 1 1 1 0 0 1 0 0 0 999999999 1\n");
    EXPECT_EQ(failure(), "data.txt\", line 2: 999999999 numbers cannot follow");
    write("<LesHouchesEvents>\n</init>\n<event>\n2 1 1 1 1 1\n1 1 0 0 0 0 0 0 1 1 0 0 9\n</event>\n");
    EXPECT_EQ(failure(), "data.txt\", line 6: the event has too few particles");
    write("<LesHouchesEvents>\n</init>\n<event>\n1 1 1 1 1 1\n");
    EXPECT_EQ(failure(), "data.txt\", line 4: the file ends in an event");
    write("x,y\n1,2\n");
    EXPECT_EQ(failure(), "data.txt\" holds neither HepMC events in ASCII (version 2 or 3) nor Les Houches events");
    write("");
    EXPECT_NE(failure(), "no failure");
}

}  // namespace
}  // namespace velmorak
