#include "CsvFixture.h"

#include "csv/Geant4Histogram.h"

#include <velmorak/Histogram.h>
#include <velmorak/Profile.h>

#include <gmock/gmock.h>

namespace velmorak {
namespace {

using testing::ElementsAre;

class Geant4Csv : public CsvFixture {
protected:
    std::string failureOfHistogram() {
        try {
            readGeant4Histogram(options.file, context);
        } catch (const Failure& failure) {
            const std::string text = failure.what();
            return text.substr(text.find("data.csv"));
        }
        return "no failure";
    }
};

constexpr const char* ntuple =
    "#class tools::wcsv::ntuple\n"
    "#title Edep and TrackL\n"
    "#separator 44\n"
    "#vector_separator 59\n"
    "#column double Eabs\n"
    "#column int event\n"
    "#column string name\n"
    "#column double[] hits\n"
    "#column std::vector<int> ids\n"
    "1.5,7,gap,1.25;2.5,3;4\n"
    "2,8,,,5\n"
    "0.25,9,world,1e3;,\n";

TEST_F(Geant4Csv, columnsOfAnNtupleHaveTheTypesOfTheHeader) {
    write(ntuple);
    const Chunk chunk = read().at(0);
    ASSERT_EQ(chunk.rows, 3U);
    EXPECT_THAT(chunk.columns[0]->reals(), ElementsAre(1.5, 2.0, 0.25));
    EXPECT_THAT(chunk.columns[1]->integers(), ElementsAre(7, 8, 9));
    EXPECT_THAT(chunk.columns[2]->texts(), ElementsAre("gap", "", "world"));
    EXPECT_TRUE(columns[3].isList);
    EXPECT_THAT(chunk.columns[3]->reals(), ElementsAre(1.25, 2.5, 1e3));
    EXPECT_THAT(chunk.columns[3]->offsets, ElementsAre(0, 2, 2, 3));
    EXPECT_THAT(chunk.columns[4]->integers(), ElementsAre(3, 4, 5));
    EXPECT_THAT(chunk.columns[4]->offsets, ElementsAre(0, 2, 3, 3));
}

TEST_F(Geant4Csv, listsAreReadInOrderAsOtherwise) {
    write(ntuple);
    options.isSkipping = true;
    const Chunk chunk = read().at(0);
    EXPECT_THAT(chunk.columns[3]->reals(), ElementsAre(1.25, 2.5, 1e3));
    EXPECT_THAT(chunk.columns[4]->offsets, ElementsAre(0, 2, 3, 3));
    write(std::string(ntuple) + "bad,1,a,1;2,3\n4,1,a,1;x,3\n5,6,b,9,8\n");
    EXPECT_THAT(read().at(0).columns[3]->reals(), ElementsAre(1.25, 2.5, 1e3, 9.0));
    EXPECT_THAT(read().at(0).columns[4]->offsets, ElementsAre(0, 2, 3, 3, 4));
}

TEST_F(Geant4Csv, theSeparatorIsThatOfTheHeader) {
    write("#class tools::wcsv::ntuple\n#separator 32\n#column int a\n#column double b\n1 2.5\n3 4\n");
    EXPECT_THAT(read().at(0).columns[1]->reals(), ElementsAre(2.5, 4.0));
    write("#class tools::wcsv::ntuple\n#separator 9\n#column int a\n#column double b\n1\t2.5\n");
    EXPECT_THAT(read().at(0).columns[1]->reals(), ElementsAre(2.5));
}

TEST_F(Geant4Csv, headersThatCannotBeUnderstoodAreNamed) {
    const std::string begin = "#class tools::wcsv::ntuple\n";
    const auto failureOf = [&](const std::string& text) {
        write(text);
        return failure();
    };
    EXPECT_EQ(failureOf(begin + "#separator comma\n"),
              "the line #separator has \"comma\" where it needs the code of a character, such as 44 for a comma");
    EXPECT_EQ(failureOf(begin + "#column quaternion q\n1\n"), "a line #column has the unknown type \"quaternion\"");
    EXPECT_EQ(failureOf(begin + "#column int a\n#column int a\n1,2\n"), "data.csv\": there are two columns \"a\"");
    EXPECT_EQ(failureOf(begin + "1,2\n"), "data.csv\" has no lines #column");
    EXPECT_EQ(failureOf("#class tools::histo::h1d\n#axis fixed 1 0 1\n"),
              "data.csv\" holds an object of class tools::histo::h1d, not a table; use Geant4Histogram");
}

TEST_F(Geant4Csv, aHistogramHasAllItsSums) {
    write(
        "#class tools::histo::h1d\n#title Edep\n#dimension 1\n#axis fixed 2 0 10\n#annotation axis_x.title E [MeV]\n"
        "#bin_number 4\nentries,Sw,Sw2,Sxw0,Sx2w0\n1,1,1,-3,9\n2,1.5,1.25,6,30\n0,0,0,0,0\n1,0.5,0.25,6,72\n");
    const auto histogram = std::dynamic_pointer_cast<const Histogram1D>(readGeant4Histogram(options.file, context));
    ASSERT_TRUE(histogram);
    EXPECT_EQ(histogram->title, "Edep");
    EXPECT_EQ(histogram->axis().title, "E [MeV]");
    EXPECT_EQ(histogram->bins(), 2U);
    EXPECT_EQ(histogram->height(0), 1.5);
    EXPECT_EQ(histogram->bin(0).entries, 2);
    EXPECT_EQ(histogram->mean(), 4.0);
    EXPECT_EQ(histogram->underflow().w, 1.0);
    EXPECT_EQ(histogram->overflow().ww, 0.25);
}

TEST_F(Geant4Csv, profilesAndPlanesAreRead) {
    write(
        "#class tools::histo::p1d\n#title p\n#dimension 1\n#axis edges 0 1 5\n#cut_v false\n#bin_number 4\n"
        "entries,Sw,Sw2,Sxw0,Sx2w0,Svw,Sv2w\n0,0,0,0,0,0,0\n2,2,2,1,0.5,6,20\n0,0,0,0,0,0,0\n0,0,0,0,0,0,0\n");
    const auto profile = std::dynamic_pointer_cast<const Profile1D>(readGeant4Histogram(options.file, context));
    ASSERT_TRUE(profile);
    EXPECT_EQ(profile->height(1), 3.0);
    EXPECT_EQ(profile->rms(1), 1.0);
    std::string plane =
        "#class tools::histo::h2d\n#axis fixed 1 0 1\n#axis fixed 2 0 2\n"
        "entries,Sw,Sw2,Sxw0,Sx2w0,Sxw1,Sx2w1\n";
    for (int row = 0; row < 12; ++row) {
        plane += std::to_string(row) + ",1,1,0,0,0,0\n";
    }
    write(plane);
    const auto histogram = std::dynamic_pointer_cast<const Histogram2D>(readGeant4Histogram(options.file, context));
    ASSERT_TRUE(histogram);
    EXPECT_EQ(histogram->cells()[histogram->grid().cell({1, 2})].entries, 7);
}

TEST_F(Geant4Csv, damagedHistogramsAreRefused) {
    const std::string begin = "#class tools::histo::h1d\n#axis fixed 1 0 1\nentries,Sw,Sw2,Sxw0,Sx2w0\n";
    const auto failureOf = [&](const std::string& text) {
        write(text);
        return failureOfHistogram();
    };
    EXPECT_EQ(failureOf("a,b\n1,2\n"),
              "data.csv\": it does not begin with a line #class, as a histogram of Geant4 does");
    EXPECT_EQ(failureOf(begin + "0,0,0,0,0\n"), "data.csv\": it has 1 rows for 3 bins");
    EXPECT_EQ(failureOf(begin + "0,0,0,0,x\n"), "data.csv\": \"x\" is not a number");
    EXPECT_EQ(failureOf(begin + "0,0,0\n"), "data.csv\": line 4 has 3 fields instead of 5");
    EXPECT_EQ(failureOf("#class tools::histo::h1d\n#axis fixed 1e9 0 1\n"), "data.csv\": an axis has 1e9 bins");
    EXPECT_EQ(failureOf("#class tools::histo::c1d\n"), "data.csv\": objects of class tools::histo::c1d cannot be read");
    EXPECT_EQ(failureOf(ntuple), "data.csv\": objects of class tools::wcsv::ntuple cannot be read; use CsvTable");
}

}  // namespace
}  // namespace velmorak
