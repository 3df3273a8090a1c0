#include <gmock/gmock.h>

#include <cmath>

#include <velmorak/Histogram.h>
#include <velmorak/Points.h>
#include "support.h"

/// What programs write otherwise than the format says, one oddity a test.
namespace velmorak {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class AidaTraps : public AidaFiles {
protected:
    template <typename Object>
    std::shared_ptr<const Object> only(const std::string& text) {
        const std::vector<AidaObject> objects = readAidaObjects(aidaWith(text), run);
        EXPECT_EQ(objects.size(), 1U);
        return std::dynamic_pointer_cast<const Object>(objects.at(0).object);
    }
    static std::string histogram(const std::string& bins, const std::string& axis = plainAxis) {
        return "<histogram1d name='h'>" + axis + "<statistics entries='0'/><data1d>" + bins + "</data1d></histogram1d>";
    }
    static inline const std::string plainAxis = "<axis direction='x' min='0' max='4' numberOfBins='4'/>";
};

TEST_F(AidaTraps, anItemWithoutAKeyHasTheNameOfItsAttribute) {
    const auto points = only<Points>(
        "<dataPointSet name='d' dimension='2'><annotation><item Title='energy' sticky='True'/>"
        "<item AidaPath='/d'/><item key='k' value='1'/><item key='k' value='2'/></annotation></dataPointSet>");
    ASSERT_TRUE(points);
    EXPECT_THAT(points->annotation, Contains(AnnotationItem{"Title", "energy", true}));
    EXPECT_THAT(points->annotation, Contains(AnnotationItem{"AidaPath", "/d", false}));
    EXPECT_EQ(points->annotation.back(), (AnnotationItem{"k", "2", false}));
}

TEST_F(AidaTraps, titlesOfAxesStandInMisspeltElements) {
    const auto points = only<Points>(
        "<dataPointSet name='d' dimension='2'><dimension dim='0' title='x [GeV]'/>"
        "<dimenstion dim='1' Title='y'/></dataPointSet>");
    EXPECT_THAT(points->axisTitles, ElementsAre("x [GeV]", "y"));
    EXPECT_THAT(run.warnings, IsEmpty());
}

TEST_F(AidaTraps, anErrorMayBeNegativeOrGivenForOneSide) {
    const auto points = only<Points>(
        "<dataPointSet name='d' dimension='1'>"
        "<dataPoint><measurement value='nan' errorPlus='1' errorMinus='-0.5'/></dataPoint>"
        "<dataPoint><measurement value=' +2.5 ' errorPlus='3'/></dataPoint></dataPointSet>");
    EXPECT_TRUE(std::isnan(points->measurement(0, 0).value));
    EXPECT_EQ(points->measurement(0, 0).errorMinus, -0.5);
    EXPECT_EQ(points->measurement(1, 0), (Measurement{2.5, 3, 3}));
}

TEST_F(AidaTraps, anEmptyBinNumberIsNoBin) {
    EXPECT_FALSE(only<Histogram1D>(histogram("<bin1d binNum='' entries='1'/>")));
    ASSERT_EQ(run.warnings.size(), 1U);
    EXPECT_THAT(run.warnings[0], HasSubstr("binNum=\"\""));
    EXPECT_THAT(run.warnings[0], HasSubstr("is not the number of a bin"));
}

TEST_F(AidaTraps, entriesMayBeWrittenAsRealNumbers) {
    const auto read = only<Histogram1D>(histogram(
        "<bin1d binNum='0' entries='3.0'/><bin1d binNum='1' entries='1e5'/><bin1d binNum='2' entries='3000000000'/>"));
    EXPECT_EQ(read->bin(0).entries, 3);
    EXPECT_EQ(read->bin(1).entries, 100000);
    EXPECT_EQ(read->bin(2).entries, 3000000000);
    EXPECT_EQ(read->height(1), 1e5) << "a height that is not given is the entries";
}

TEST_F(AidaTraps, ofABinThatIsListedTwiceTheLastCounts) {
    const auto read =
        only<Histogram1D>(histogram("<bin1d binNum='OVERFLOW' entries='1'/><bin1d binNum='1' entries='7' "
                                    "height='0' error='0' weightedMean='1.5'/>"
                                    "<bin1d binNum='-1' entries='2'/><bin1d binNum='9' entries='1'/>"));
    EXPECT_EQ(read->overflow().entries, 2);
    EXPECT_EQ(read->bin(1).entries, 7) << "all weights may be 0";
    EXPECT_EQ(read->height(1), 0.0);
    EXPECT_THAT(run.warnings, Contains(HasSubstr("1 of its bins are beyond its axes and are ignored")));
    EXPECT_THAT(run.warnings, Contains(HasSubstr("more than once; the last one is used")));
}

TEST_F(AidaTraps, bordersMayHoldTheEndsOfTheAxisToo) {
    const auto read = only<Histogram1D>(
        histogram("",
                  "<axis min='0' max='4' numberOfBins='2'><binBorder value='0'/><binBorder value='1'/>"
                  "<binBorder value='4'/></axis>"));
    ASSERT_TRUE(read);
    EXPECT_THAT(read->axis().edges(), ElementsAre(0, 1, 4));
    EXPECT_EQ(run.warnings.size(), 1U);
    EXPECT_FALSE(
        only<Histogram1D>(histogram("", "<axis min='0' max='4' numberOfBins='4'><binBorder value='1'/></axis>")));
}

TEST_F(AidaTraps, axesThatCannotBeEndTheirObjectAlone) {
    for (const char* axis :
         {"<axis direction='x'/>", "<axis min='1' max='1' numberOfBins='2'/>",
          "<axis min='0' max='NaN' numberOfBins='2'/>", "<axis min='0' max='1' numberOfBins='0'/>"}) {
        run.warnings.clear();
        const std::vector<AidaObject> objects =
            readAidaObjects(aidaWith(histogram("", axis) + "<dataPointSet name='d' dimension='1'/>"), run);
        ASSERT_EQ(objects.size(), 2U) << axis;
        EXPECT_FALSE(objects[0].object) << axis;
        EXPECT_TRUE(objects[1].object) << axis;
        EXPECT_THAT(run.warnings, ElementsAre(HasSubstr("/h: it cannot be read"))) << axis;
    }
}

TEST_F(AidaTraps, anAxisWithoutDirectionIsTheNextOne) {
    const auto read = only<Histogram2D>(
        "<histogram2d name='h'><axis min='0' max='1' numberOfBins='1'/>"
        "<axis min='5' max='6' numberOfBins='3'/><statistics entries='0'/><data2d/>"
        "</histogram2d>");
    ASSERT_TRUE(read);
    EXPECT_EQ(read->grid().axis(0).bins(), 1U);
    EXPECT_EQ(read->grid().axis(1).low(), 5.0);
}

TEST_F(AidaTraps, theMeanAlongOneAxisMayBeMissing) {
    const auto read = only<Histogram3D>(
        "<histogram3d name='h'><axis direction='x' min='0' max='1' numberOfBins='1'/>"
        "<axis direction='y' min='0' max='1' numberOfBins='1'/><axis direction='z' min='2' max='4' numberOfBins='1'/>"
        "<statistics entries='2'/><data3d><bin3d binNumX='0' binNumY='0' binNumZ='0' entries='2' weightedMeanX='0.5' "
        "weightedMeanY='0.25'/></data3d></histogram3d>");
    ASSERT_TRUE(read);
    EXPECT_EQ(read->mean(0), 0.5);
    EXPECT_EQ(read->mean(1), 0.25);
    EXPECT_EQ(read->mean(2), 3.0) << "0 lies outside of the bin, so that its centre is the best guess";
}

TEST_F(AidaTraps, nestedRowsMayHaveTheirOlderTag) {
    const Rows rows = readRows(aidaWith("<tuple name='t'><columns><column name='v ' type='ITuple' booking='{int i}'/>"
                                        "<column name='n=' type='byte'/></columns><rows><row><entryTuple><row>"
                                        "<entry value='4'/></row></entryTuple></row></rows></tuple>"),
                               "", run);
    EXPECT_EQ(rows.schema[0].name, "v");
    EXPECT_EQ(rows.schema[1].name, "n");
    EXPECT_EQ(rows.columns[0].integers(), (Column::Integers{4}));
    EXPECT_EQ(rows.columns[1].integers(), (Column::Integers{0})) << "a default that is empty is none";
}

TEST_F(AidaTraps, aFileMayHoldNothingAndLackItsVersion) {
    EXPECT_THAT(
        readAidaObjects(fileWith("\xEF\xBB\xBF<?xml version='1.0'?>\r\n<!-- none -->\r\n<aida>\r\n</aida>\r\n"), run),
        IsEmpty());
    EXPECT_THAT(listAida(fileWith("<aida/>"), run), IsEmpty());
    EXPECT_THAT(run.warnings, IsEmpty());
}

TEST_F(AidaTraps, pathsAreRootedAndNamesStandForTitles) {
    EXPECT_EQ(only<Points>("<dataPointSet name='10' path='run//a/' dimension='1'/>")->title, "10");
    EXPECT_EQ(only<Points>("<dataPointSet name='10' path='run//a/' title='' dimension='1'/>")->title, "");
    EXPECT_EQ(readAidaObjects(aidaWith("<dataPointSet name='10' path='run//a/' dimension='1'/>"), run)[0].path,
              "/run/a/10");
}

TEST_F(AidaTraps, aProfileOfTheWriterThatShiftsItsBinsIsWarnedOf) {
    const std::string profile = "<profile1d name='p'>" + plainAxis +
                                "<statistics entries='1'/><data1d><bin1d binNum='0' entries='1' height='1' "
                                "error='1'/></data1d></profile1d>";
    readAidaObjects(aidaWith("<implementation package='LWH' version='1.0'/>" + profile), run);
    EXPECT_THAT(run.warnings, Contains(HasSubstr("written by LWH")));
}

}  // namespace
}  // namespace velmorak
