#include <gmock/gmock.h>

#include <cmath>

#include "support.h"

#include <velmorak/FunctionObject.h>
#include <velmorak/Points.h>
#include <velmorak/Profile.h>

namespace velmorak {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

class AidaObjects : public AidaFiles {
protected:
    template <typename Object>
    std::shared_ptr<const Object> read(const std::filesystem::path& file, const std::string& path = "") {
        for (const ValueType type :
             {ValueType::Histogram, ValueType::Profile, ValueType::Points, ValueType::Function}) {
            DataObjectPtr object;
            try {
                object = readAidaObject(file, path, type, run);
            } catch (const Failure&) {
                continue;
            }
            return std::dynamic_pointer_cast<const Object>(object);
        }
        return nullptr;
    }
    /// A histogram of four bins from 0 to 4 with these bins.
    std::shared_ptr<const Histogram1D> histogramOf(const std::string& bins, const std::string& package = "own") {
        return read<Histogram1D>(aidaWith("<implementation package='" + package + "' version='1'/>" +
                                          "<histogram1d name='h'><axis min='0' max='4' numberOfBins='4'/><data1d>" +
                                          bins + "</data1d></histogram1d>"));
    }
};

TEST_F(AidaObjects, areHistogramsWithTheSumsThatTheirBinsTell) {
    const auto histogram = read<Histogram1D>(ownFile("histogram1d.aida"));
    ASSERT_TRUE(histogram);
    EXPECT_EQ(histogram->name, "energy");
    EXPECT_EQ(histogram->title, "Energy [MeV]");
    EXPECT_THAT(histogram->annotation, ElementsAre(AnnotationItem{"Title", "Energy [MeV]", true}));
    EXPECT_EQ(histogram->axis().edges(), (std::vector<double>{0, 2, 4, 6, 8, 10}));
    EXPECT_EQ(histogram->underflow().w, 1.0);
    EXPECT_EQ(histogram->bin(1).entries, 3);
    EXPECT_EQ(histogram->height(1), 2.5);
    EXPECT_EQ(histogram->error(1), 1.5);
    EXPECT_EQ(histogram->bin(1).sum(0), 2.5 * 3.25);
    EXPECT_EQ(histogram->bin(1).squareSum(0, 0), 2.5 * (3.25 * 3.25 + 0.25));
    EXPECT_EQ(histogram->overflow().ww, 1.4142135623730951 * 1.4142135623730951);
    EXPECT_EQ(histogram->inRange().entries, 7);
    EXPECT_TRUE(run.warnings.empty());
}

TEST_F(AidaObjects, haveTheEdgesThatTheirBordersSay) {
    EXPECT_EQ(read<Histogram1D>(ownFile("histogram1d_variable.aida"))->axis().edges(),
              (std::vector<double>{0, 5, 20, 50, 100}));
    const auto withBorders = [&](const std::string& borders) {
        run.warnings.clear();
        return read<Histogram1D>(aidaWith("<histogram1d name='h'><axis min='0' max='3' numberOfBins='2'>" + borders +
                                          "</axis><data1d/></histogram1d>"));
    };
    EXPECT_EQ(withBorders("<binBorder value='3'/><binBorder value='0'/><binBorder value='1'/>")->axis().edges(),
              (std::vector<double>{0, 1, 3}));
    EXPECT_EQ(run.warnings.size(), 1U);
    EXPECT_FALSE(withBorders("<binBorder value='1'/><binBorder value='2'/>"));
    EXPECT_THAT(run.warnings.at(0), HasSubstr("an axis of 2 bins has 2 inner borders"));
}

TEST_F(AidaObjects, haveTwoOrThreeDimensionsWithEveryOutsideCell) {
    const auto flat = read<Histogram2D>(ownFile("histogram2d.aida"));
    ASSERT_TRUE(flat);
    EXPECT_EQ(flat->cells()[flat->grid().cell({2, 2})].w, 3.0);
    EXPECT_EQ(flat->cells()[flat->grid().cell({2, 2})].error(), 2.23606797749979);
    EXPECT_EQ(flat->cells()[flat->grid().cell({0, 1})].entries, 1);
    EXPECT_EQ(flat->cells()[flat->grid().cell({3, 4})].entries, 4);
    EXPECT_EQ(flat->cells()[flat->grid().cell({1, 3})].sum(1), 2.5);
    EXPECT_EQ(flat->inRange().entries, 3);
    const auto cube = read<Histogram3D>(ownFile("histogram3d.aida"));
    ASSERT_TRUE(cube);
    std::int64_t entries = 0;
    for (const auto& cell : cube->cells()) {
        entries += cell.entries;
    }
    EXPECT_EQ(entries, 3);
    EXPECT_EQ(cube->inRange().entries, 1);
}

TEST_F(AidaObjects, areProfilesAsTheyStand) {
    const auto gain = read<Profile1D>(ownFile("profile1d.aida"));
    ASSERT_TRUE(gain);
    EXPECT_EQ(gain->height(1), 10.5);
    EXPECT_EQ(gain->error(1), 0.35355339059327379);
    EXPECT_EQ(gain->rms(3), 0.5);
    EXPECT_EQ(gain->cells()[3].sum(0), 4 * 2.4);
    EXPECT_FALSE(gain->hasExactSums());
    const auto map = read<Profile2D>(ownFile("profile2d.aida"));
    ASSERT_TRUE(map);
    EXPECT_EQ(map->height(map->grid().cell({1, 2})), 7.0);
}

TEST_F(AidaObjects, arePointsWithErrorsOnBothSides) {
    const auto points = read<Points>(ownFile("dataPointSet.aida"));
    ASSERT_TRUE(points);
    EXPECT_EQ(points->size(), 2U);
    EXPECT_EQ(points->measurement(0, 1), (Measurement{12.25, 0.75, 0.5}));
    EXPECT_EQ(points->measurement(1, 0), (Measurement{2.5, 0.5, 0.5}));
    EXPECT_EQ(points->measurement(1, 1), (Measurement{9, 0, 0}));
}

TEST_F(AidaObjects, arePointsWithWhateverProgramsMakeOfThem) {
    const auto points = read<Points>(ownFile("trap_rivet_dimension.aida"));
    ASSERT_TRUE(points);
    EXPECT_THAT(points->axisTitles, ElementsAre("x [GeV]", "y"));
    EXPECT_THAT(points->annotation, ElementsAre(AnnotationItem{"Title", "broken item", false}));
    EXPECT_TRUE(std::isnan(points->measurement(0, 1).value));
    EXPECT_TRUE(std::isnan(points->measurement(1, 0).errorPlus));
    EXPECT_EQ(points->measurement(1, 0).errorMinus, -0.1);
    EXPECT_EQ(points->measurement(1, 1).value, HUGE_VAL);
    ASSERT_FALSE(run.warnings.empty());
    EXPECT_THAT(run.warnings[0], HasSubstr("1 of its points have too few measurements"));
}

TEST_F(AidaObjects, areFunctionsWithTheirParameters) {
    const auto line = read<FunctionObject>(ownFile("function.aida"));
    ASSERT_TRUE(line);
    EXPECT_EQ(line->codelet, "codelet:line:verbatim:jel : 1 : a+b*x[0] : a,b : null");
    EXPECT_THAT(line->parameters,
                ElementsAre(FunctionObject::Parameter{"a", 1.5}, FunctionObject::Parameter{"b", -0.25}));
    EXPECT_THAT(line->arguments, ElementsAre(FunctionObject::Argument{"x0", {FunctionObject::Range{}}}));
    const auto other = read<FunctionObject>(
        aidaWith("<function name='g'><codelet name='G'/><parameters><parameter name='mean' value='+1.5 '/></parameters>"
                 "</function>"));
    EXPECT_EQ(other->codelet, "G");
    EXPECT_EQ(other->parameters[0].value, 1.5);
}

TEST_F(AidaObjects, areAlsoCloudsThatWereConverted) {
    const auto histogram = read<Histogram1D>(ownFile("cloud1d_converted.aida"));
    ASSERT_TRUE(histogram);
    EXPECT_EQ(histogram->inRange().entries, 3);
    EXPECT_EQ(readAidaObjects(ownFile("cloud1d_converted.aida"), run).size(), 1U);
    EXPECT_FALSE(readAidaObjects(ownFile("cloud1d.aida"), run).at(0).object);
}

TEST_F(AidaObjects, ofTheOldestVersionAreTitledByTheirLabel) {
    EXPECT_EQ(read<Histogram1D>(ownFile("trap_aida22_label.aida"))->title, "old title");
}

TEST_F(AidaObjects, takeTheEntitiesAndNumbersOfOutsideBins) {
    const auto histogram = read<Histogram1D>(ownFile("trap_entity_bin.aida"));
    EXPECT_EQ(histogram->overflow().entries, 3);
    EXPECT_EQ(histogram->underflow().entries, 4);
    EXPECT_FALSE(histogramOf("<bin1d binNum='' entries='1'/>"));
    EXPECT_THAT(run.warnings.at(0), HasSubstr("is not the number of a bin"));
}

TEST_F(AidaObjects, thatCannotBeReadAreTheOnlyOnesLost) {
    const auto objects = readAidaObjects(ownFile("trap_missing_attrs.aida"), run);
    ASSERT_EQ(objects.size(), 2U);
    EXPECT_FALSE(objects[0].object);
    ASSERT_TRUE(objects[1].object);
    EXPECT_EQ(dynamic_cast<const Histogram1D&>(*objects[1].object).height(0), -2.0);
    ASSERT_EQ(run.warnings.size(), 2U);
    EXPECT_THAT(run.warnings[0], HasSubstr("/sub/a/b: it cannot be read, line 3, byte"));
    EXPECT_THAT(run.warnings[0], HasSubstr("no min, max and numberOfBins"));
    EXPECT_THAT(run.warnings[1], HasSubstr("/h: 1 of its bins are beyond its axes"));
}

TEST_F(AidaObjects, haveAtMostAsManyCellsAsTheRunAllows) {
    run.cellLimit = 6;
    EXPECT_TRUE(histogramOf(""));
    run.cellLimit = 5;
    EXPECT_FALSE(histogramOf(""));
    EXPECT_THAT(run.warnings.back(), HasSubstr("its axes declare 6 cells; the limit is 5"));
}

TEST_F(AidaObjects, takeNoMemoryForBinsThatAreOnlyPromised) {
    EXPECT_FALSE(read<Histogram1D>(
        aidaWith("<histogram1d name='h'><axis min='0' max='1' numberOfBins='1000000000'/></histogram1d>")));
    EXPECT_THAT(run.warnings.at(0), HasSubstr("declare 1000000002 cells"));
    for (const char* axis : {"min='0' max='1' numberOfBins='0'", "min='1' max='1' numberOfBins='2'",
                             "min='NaN' max='1' numberOfBins='2'", "min='0' max='1' numberOfBins='1.5'"}) {
        EXPECT_FALSE(
            read<Histogram1D>(aidaWith("<histogram1d name='h'><axis " + std::string(axis) + "/></histogram1d>")))
            << axis;
    }
}

TEST_F(AidaObjects, takeDefaultsForWhatBinsDoNotSay) {
    const auto histogram = histogramOf(
        "<bin1d binNum='OVERFLOW' entries='9'/><bin1d binNum='3' entries='4.0'/>"
        "<bin1d binNum='0' entries='1e1' height='0' error='0'/><bin1d binNum='1' entries='2' rms='0.25'/>"
        "<bin1d binNum='1' entries='3' rms='0.5'/>");
    EXPECT_EQ(histogram->height(3), 4.0);
    EXPECT_EQ(histogram->error(3), 2.0);
    EXPECT_EQ(histogram->bin(3).sum(0), 4 * 3.5);
    EXPECT_EQ(histogram->bin(0).entries, 10);
    EXPECT_EQ(histogram->bin(0).w, 0.0);
    EXPECT_EQ(histogram->bin(1).squareSum(0, 0), 3 * (1.5 * 1.5 + 0.25));
    ASSERT_EQ(run.warnings.size(), 2U);
    EXPECT_THAT(run.warnings[0], HasSubstr("1 of its bins are listed more than once"));
    EXPECT_THAT(run.warnings[1], HasSubstr("the bin centres are used"));
}

TEST_F(AidaObjects, knowThatOneProgramWritesSquaredErrors) {
    histogramOf("<bin1d binNum='1' entries='2' error='1.5' error2='2.25' weightedMean='1.5'/>");
    histogramOf("<bin1d binNum='1' entries='2' error='1.5' error2='7' weightedMean='1.5'/>", "LWH");
    EXPECT_TRUE(run.warnings.empty());
    histogramOf("<bin1d binNum='1' entries='2' error='1.5' error2='1.25' weightedMean='1.5'/>");
    EXPECT_THAT(run.warnings.at(0), HasSubstr("different errors downwards"));
}

TEST_F(AidaObjects, mayHaveTheirPartsInAnyOrder) {
    const auto histogram =
        read<Histogram2D>(aidaWith("<histogram2d name='h'><data2d><bin2d binNumX='1' binNumY='2' entries='5'/></data2d>"
                                   "<axis direction='y' min='0' max='3' numberOfBins='3'/>"
                                   "<axis direction='x' min='0' max='2' numberOfBins='2'/></histogram2d>"));
    EXPECT_EQ(histogram->grid().axis(0).bins(), 2U);
    EXPECT_EQ(histogram->cells()[histogram->grid().cell({2, 3})].entries, 5);
    const auto unnamed =
        read<Histogram2D>(aidaWith("<histogram2d name='h'><axis min='0' max='2' numberOfBins='2'/>"
                                   "<axis min='0' max='3' numberOfBins='3'/><data2d/></histogram2d>"));
    EXPECT_EQ(unnamed->grid().axis(1).bins(), 3U);
    EXPECT_THAT(run.warnings, ::testing::Contains(HasSubstr("have no directions")));
}

TEST_F(AidaObjects, areChosenByPathOrAloneOrListed) {
    const auto failure = [&](const std::string& path, ValueType type) {
        return failureOf([&] { readAidaObject(ownFile("all.aida"), path, type, run); });
    };
    EXPECT_EQ(failure("/calib/gain", ValueType::Profile), "no failure");
    EXPECT_EQ(failure("calib//gain/", ValueType::Profile), "no failure");
    EXPECT_EQ(failure("gain", ValueType::Profile), "no failure");
    EXPECT_EQ(failure("", ValueType::Points), "no failure");
    EXPECT_THAT(failure("", ValueType::Profile), HasSubstr("/calib/gain (profile1d), /calib/map (profile2d)"));
    EXPECT_THAT(failure("/nowhere", ValueType::Function),
                HasSubstr("contains no function /nowhere; it contains /fits/line"));
    EXPECT_THAT(failure("/data/events", ValueType::Histogram), HasSubstr("contains no histogram /data/events"));
}

TEST_F(AidaObjects, ofUnknownKindAreSkippedWithOneWarning) {
    const auto objects = readAidaObjects(
        aidaWith(
            "<odd><odd/></odd><odd/><fitResult><function name='f'/></fitResult><function name='g'><odd/></function>"),
        run);
    EXPECT_EQ(objects.size(), 1U);
    EXPECT_THAT(run.warnings, ElementsAre(HasSubstr("the unknown element <odd> is skipped")));
}

TEST_F(AidaObjects, thatAreCompleteBeforeDamageAreKept) {
    const std::string whole = contentOf(ownFile("all.aida"));
    const auto objects = readAidaObjects(fileWith(whole.substr(0, whole.size() / 2)), run);
    EXPECT_GT(objects.size(), 2U);
    EXPECT_LT(objects.size(), 14U);
    EXPECT_THAT(run.warnings.back(), HasSubstr("the XML is damaged, line"));
    run.warnings.clear();
    EXPECT_EQ(readAidaObjects(ownFile("truncated.gz.aida"), run).empty(), false);
    EXPECT_THAT(run.warnings.back(), HasSubstr("gzip data end too early at byte 700"));
}

/// Everything but the annotation, which a writer adds to.
std::string numbersOf(const DataObject& object) {
    const auto bytes = [](auto copy) {
        copy.annotation.clear();
        return copy.toBytes();
    };
    if (const auto* histogram = dynamic_cast<const Histogram1D*>(&object)) {
        return bytes(*histogram);
    }
    if (const auto* histogram = dynamic_cast<const Histogram2D*>(&object)) {
        return bytes(*histogram);
    }
    if (const auto* histogram = dynamic_cast<const Histogram3D*>(&object)) {
        return bytes(*histogram);
    }
    if (const auto* profile = dynamic_cast<const Profile1D*>(&object)) {
        return bytes(*profile);
    }
    if (const auto* profile = dynamic_cast<const Profile2D*>(&object)) {
        return bytes(*profile);
    }
    if (const auto* points = dynamic_cast<const Points*>(&object)) {
        return bytes(*points);
    }
    const auto& function = dynamic_cast<const FunctionObject&>(object);
    std::string text = function.name + function.title + function.codelet;
    for (const auto& parameter : function.parameters) {
        text += parameter.name + textOf(parameter.value);
    }
    for (const auto& argument : function.arguments) {
        for (const auto& range : argument.ranges) {
            text += textOf(range.low) + textOf(range.high);
        }
    }
    return text;
}

TEST_F(AidaObjects, ofEveryKindAreWrittenAndReadBackToTheLastBit) {
    const auto objects = readAidaObjects(ownFile("all.aida"), run);
    AidaFileWriter writer(folder / "again.aida");
    Profile2D filled(Grid<2>({Axis(3, 0, 1), Axis(std::vector<double>{0, 0.1, 7})}));
    for (int i = 0; i < 100; ++i) {
        filled.fill({std::sin(i), std::cos(i)}, std::exp(i / 7.0), 1.0 / (i + 3));
    }
    filled.name = "filled";
    writer.write(filled, "/");
    for (const AidaObject& object : objects) {
        if (object.object) {
            writer.write(*object.object, object.path.substr(0, object.path.rfind('/')));
        }
    }
    writer.close();
    const auto again = readAidaObjects(folder / "again.aida", run);
    ASSERT_EQ(again.size(), 10U);
    EXPECT_EQ(numbersOf(*again[0].object), numbersOf(filled));
    std::size_t next = 1;
    for (const AidaObject& object : objects) {
        if (!object.object) {
            continue;
        }
        EXPECT_EQ(again[next].path, object.path);
        ASSERT_TRUE(again[next].object) << object.path;
        EXPECT_EQ(numbersOf(*again[next++].object), numbersOf(*object.object)) << object.path;
    }
}

TEST(GridHistogram, addsAndSurvivesAsBytes) {
    Histogram2D one(Grid<2>({Axis(2, 0, 2), Axis(2, 0, 2)}));
    one.fill({0.5, 1.5}, 2.0);
    one.fill({NAN, 1.0});
    one.annotation = {{"key", "value", true}};
    Histogram2D sum = Histogram2D::fromBytes(one.toBytes());
    EXPECT_EQ(sum.cells(), one.cells());
    EXPECT_EQ(sum.nanEntries(), 1);
    EXPECT_EQ(sum.annotation, one.annotation);
    sum.merge(one);
    EXPECT_EQ(sum.cells()[sum.grid().cell({1, 2})].w, 4.0);
    EXPECT_EQ(sum.mean(1), 1.5);
    EXPECT_THROW(sum.merge(Histogram2D(Grid<2>({Axis(2, 0, 2), Axis(3, 0, 2)}))), std::invalid_argument);
    EXPECT_THROW(Histogram2D::fromBytes(one.toBytes().substr(1)), std::invalid_argument);
    EXPECT_THROW(Histogram3D::fromBytes(one.toBytes()), std::invalid_argument);
}

TEST(FilledProfile, knowsMeanSpreadAndErrorOfItsValue) {
    Profile1D profile(Grid<1>({Axis(1, 0, 1)}));
    for (const double value : {1.0, 3.0, 1.0, 3.0}) {
        profile.fill({0.5}, value);
    }
    EXPECT_EQ(profile.height(1), 2.0);
    EXPECT_EQ(profile.rms(1), 1.0);
    EXPECT_EQ(profile.error(1), 0.5);
    Profile1D twice = Profile1D::fromBytes(profile.toBytes());
    twice.merge(profile);
    EXPECT_EQ(twice.cells()[1].entries, 8);
    EXPECT_EQ(twice.height(1), 2.0);
}

TEST(PointsAsBytes, areTheSame) {
    Points points(2, {{1, 2, 3}, {4, 5, 6}});
    points.axisTitles = {"x", "y"};
    EXPECT_EQ(Points::fromBytes(points.toBytes()).all(), points.all());
    EXPECT_EQ(Points::fromBytes(points.toBytes()).axisTitles, points.axisTitles);
    EXPECT_THROW(Points(2, {{1, 2, 3}}), std::invalid_argument);
}

}  // namespace
}  // namespace velmorak
