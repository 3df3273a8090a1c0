#include <root/RootFile.h>
#include <root/RootObjects.h>
#include <root/objects/Efficiency.h>
#include <root/objects/Histograms.h>

#include <velmorak/Histogram.h>
#include <velmorak/Points.h>
#include <velmorak/Profile.h>

#include "QuietContext.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <cmath>
#include <filesystem>
#include <fstream>

namespace velmorak {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;
using testing::HasSubstr;

DataObjectPtr objectIn(const fs::path& file, const std::string& path, ValueType type) {
    QuietContext context;
    return std::get<DataObjectPtr>(readRootObject(file, path, type, context));
}

fs::path own(const std::string& name) {
    return fs::path(ROOT_FILES) / name;
}

template <typename Object>
std::shared_ptr<const Object> objectAs(const std::string& file, const std::string& path, ValueType type) {
    return std::dynamic_pointer_cast<const Object>(objectIn(own(file), path, type));
}

std::string failureOf(const std::string& file, const std::string& path, ValueType type) {
    try {
        objectIn(own(file), path, type);
    } catch (const Failure& failure) {
        return failure.what();
    }
    return "no failure";
}

constexpr double roundOff = 1e-11;

void expectNear(double found, double expected, const std::string& what) {
    EXPECT_NEAR(found, expected, roundOff * std::max(1.0, std::abs(expected))) << what;
}

template <typename Object>
void compareAxes(const Object& object, const Json& expected, const std::string& what) {
    for (std::size_t i = 0; i < Object::dimensions; ++i) {
        const Axis& axis = object.grid().axis(i);
        const Json& other = expected["axes"][i];
        EXPECT_EQ(axis.bins(), other["n"].get<std::size_t>()) << what;
        if (axis.labels.empty()) {
            EXPECT_EQ(axis.low(), other["lo"].get<double>()) << what;
            EXPECT_EQ(axis.high(), other["hi"].get<double>()) << what;
        }
        if (other.contains("edges")) {
            EXPECT_EQ(axis.edges(), other["edges"].get<std::vector<double>>()) << what;
        }
    }
}

/// The sums of all bins in range, unless those of the file cannot come from its contents.
template <typename Object>
void compareSums(const Object& object, const Json& expected, const std::string& what) {
    const auto sums = object.inRange();
    const double w = expected["sums"][0].get<double>();
    if (w == 0.0 || std::abs(sums.w - w) > 1e-9 * std::abs(w)) {
        return;
    }
    if (std::abs(sums.sum(0) / w - expected["sums"][2].get<double>() / w) > object.grid().axis(0).width(0)) {
        return;
    }
    expectNear(sums.sum(0), expected["sums"][2].get<double>(), what + ": sum of w x");
    expectNear(sums.squareSum(0, 0), expected["sums"][3].get<double>(), what + ": sum of w x x");
}

template <typename Object>
void compareHistogram(const DataObject& read, const Json& expected, const std::string& what) {
    const auto& object = dynamic_cast<const Object&>(read);
    EXPECT_EQ(object.title, expected.value("title", "")) << what;
    compareAxes(object, expected, what);
    const Json squares = expected.value("sumw2", Json::array());
    for (std::size_t cell = 0; cell < expected["contents"].size(); ++cell) {
        const auto& sums = object.cells()[cell];
        EXPECT_EQ(sums.w, expected["contents"][cell].get<double>()) << what << " " << cell;
        EXPECT_EQ(sums.ww, squares.empty() ? std::abs(sums.w) : squares[cell].get<double>()) << what << " " << cell;
    }
    compareSums(object, expected, what);
}

template <typename Object>
void compareProfile(const DataObject& read, const Json& expected, const std::string& what) {
    const auto& object = dynamic_cast<const Object&>(read);
    EXPECT_EQ(object.title, expected.value("title", "")) << what;
    compareAxes(object, expected, what);
    for (std::size_t cell = 0; cell < expected["contents"].size(); ++cell) {
        const auto& sums = object.cells()[cell];
        EXPECT_EQ(sums.w, expected["binEntries"][cell].get<double>()) << what << " " << cell;
        if (sums.w != 0.0) {
            expectNear(sums.sum(Object::value), expected["contents"][cell].get<double>(), what);
            expectNear(sums.squareSum(Object::value, Object::value), expected["sumw2"][cell].get<double>(), what);
        }
    }
    compareSums(object, expected, what);
}

/// @return whether the object was compared.
bool compareObject(const fs::path& file, const Json& expected) {
    using Compare = void (*)(const DataObject&, const Json&, const std::string&);
    const std::string name = expected.value("cls", "");
    const bool isProfile = name.starts_with("TProfile");
    const bool isHistogram = rootObjectType(name) == ValueType::Histogram;
    if (!isHistogram && (!isProfile || rootObjectType(name) != ValueType::Profile)) {
        return false;
    }
    const DataObjectPtr read = objectIn(file, expected.value("path", ""), rootObjectType(name));
    const Compare compare = name == "TProfile"        ? compareProfile<Profile1D>
                            : name == "TProfile2D"    ? compareProfile<Profile2D>
                            : name.starts_with("TH1") ? compareHistogram<Histogram1D>
                            : name.starts_with("TH2") ? compareHistogram<Histogram2D>
                                                      : compareHistogram<Histogram3D>;
    compare(*read, expected, file.filename().string() + " " + expected.value("path", ""));
    return true;
}

std::size_t compareObjects(const fs::path& folder) {
    std::size_t compared = 0;
    std::ifstream lines(folder / "expected.jsonl");
    for (std::string line; std::getline(lines, line);) {
        const Json expected = Json::parse(line);
        for (const Json& object : expected.value("objects", Json::array())) {
            compared += compareObject(folder / expected.value("file", ""), object) ? 1 : 0;
        }
    }
    return compared;
}

TEST(RootObjects, haveTheContentsThatAnIndependentReaderFinds) {
    EXPECT_EQ(compareObjects(ROOT_FILES), 6U);
}

TEST(RootObjects, ofOtherProgramsHaveTheContentsThatAnIndependentReaderFinds) {
    if (!fs::exists(ROOT_FILES_OF_OTHERS)) {
        GTEST_SKIP() << "there are no such files here";
    }
    EXPECT_EQ(compareObjects(ROOT_FILES_OF_OTHERS), 48U);
}

TEST(RootObjects, haveEdgesOfBinsThatDifferInWidth) {
    const auto histogram = objectAs<Histogram1D>("uproot-issue-722.root", "hist", ValueType::Histogram);
    EXPECT_EQ(histogram->bins(), 27U);
    EXPECT_FALSE(histogram->axis().isRegular());
}

TEST(RootObjects, haveLabelsAsCategories) {
    const auto histogram = objectAs<Histogram1D>("uproot-issue33.root", "cutflow", ValueType::Histogram);
    ASSERT_EQ(histogram->axis().labels.size(), 7U);
    EXPECT_EQ(histogram->axis().labels.front(), "Dijet");
}

TEST(RootObjects, sayInTheAnnotationWhatHasNoPlaceElsewhere) {
    const auto histogram = objectAs<Histogram1D>("uproot-issue-722.root", "hist", ValueType::Histogram);
    EXPECT_EQ(histogram->annotation[0], (AnnotationItem{"class", "TH1D", false}));
    EXPECT_EQ(histogram->annotation[1], (AnnotationItem{"entries", textOf(4310029), false}));
}

TEST(RootObjects, areEfficienciesWithTheIntervalThatTheyAskFor) {
    const auto points = objectAs<Points>("uproot-issue38c.root", "TEfficiencyName", ValueType::Points);
    ASSERT_GT(points->size(), 0U);
    for (std::size_t i = 0; i < points->size(); ++i) {
        const Measurement& y = points->measurement(i, 1);
        EXPECT_GE(y.value, 0.0);
        EXPECT_LE(y.value + y.errorPlus, 1.0);
        EXPECT_GE(y.value - y.errorMinus, 0.0);
        EXPECT_GT(y.errorPlus + y.errorMinus, 0.0);
    }
}

TEST(RootObjects, areNumbersAndTexts) {
    const fs::path file = fs::path(ROOT_FILES) / "../../../examples/First_steps/run.root";
    QuietContext context;
    EXPECT_EQ(std::get<double>(readRootObject(file, "luminosity", ValueType::Number, context)), 11.58);
    EXPECT_EQ(std::get<std::string>(readRootObject(file, "selection", ValueType::Text, context)),
              "two muons of opposite charge");
    EXPECT_EQ(std::get<double>(RootObjectReader(file).read("luminosity")), 11.58);
}

using Reals = std::vector<double>;

TEST(RootGraph, hasItsErrorsAndTitles) {
    const root::Object graph{.className = "TGraphAsymmErrors",
                             .members = {{"fName", "g"},
                                         {"fTitle", "Cross section;E [GeV];sigma [pb]"},
                                         {"fX", Reals{1, 2}},
                                         {"fY", Reals{10, 20}},
                                         {"fEXlow", Reals{0.5, 0.5}},
                                         {"fEXhigh", Reals{0.25, 0.25}},
                                         {"fEYlow", Reals{3, 4}},
                                         {"fEYhigh", Reals{5, 6}}}};
    const DataObjectPtr read = root::pointsFrom(graph);
    const auto& points = dynamic_cast<const Points&>(*read);
    EXPECT_EQ(points.name, "g");
    EXPECT_EQ(points.title, "Cross section");
    EXPECT_EQ(points.axisTitles, (std::vector<std::string>{"E [GeV]", "sigma [pb]"}));
    ASSERT_EQ(points.size(), 2U);
    EXPECT_EQ(points.measurement(1, 0), (Measurement{2, 0.25, 0.5}));
    EXPECT_EQ(points.measurement(1, 1), (Measurement{20, 6, 4}));
}

TEST(RootGraph, isRefusedIfItsArraysDiffer) {
    const root::Object graph{.className = "TGraph", .members = {{"fX", Reals{1, 2}}, {"fY", Reals{10}}}};
    EXPECT_THROW(root::pointsFrom(graph), Failure);
}

TEST(RootHistogram, isRefusedIfItsAxisAndContentsDiffer) {
    const root::ObjectPtr axis(new root::Object{
        .className = "TAxis", .members = {{"fNbins", std::int64_t{1'000'000'000}}, {"fXmin", 0.0}, {"fXmax", 1.0}}});
    const root::Object histogram{.className = "TH1D", .members = {{"fXaxis", axis}, {"fArray", Reals{0, 1, 0}}}};
    EXPECT_THROW(root::histogramFrom(histogram), Failure);
}

/// Fills that ROOT had not yet put into the bins.
TEST(RootHistogram, countsFillsThatAreStillInItsBuffer) {
    const root::ObjectPtr axis(new root::Object{
        .className = "TAxis", .members = {{"fNbins", std::int64_t{2}}, {"fXmin", 0.0}, {"fXmax", 2.0}}});
    const root::Object histogram{
        .className = "TH1D",
        .members = {{"fXaxis", axis}, {"fArray", Reals{0, 0, 0, 0}}, {"fBuffer", Reals{2, 1.0, 0.5, 3.0, 1.5, 0, 0}}}};
    const DataObjectPtr read = root::histogramFrom(histogram);
    const auto& filled = dynamic_cast<const Histogram1D&>(*read);
    EXPECT_EQ(filled.height(0), 1.0);
    EXPECT_EQ(filled.height(1), 3.0);
}

TEST(RootObjects, areNamedWhenOneIsMissing) {
    EXPECT_THAT(failureOf("uproot-issue-722.root", "other", ValueType::Histogram),
                HasSubstr("contains no histogram \"other\"; it contains hist (TH1D)"));
    EXPECT_THAT(
        failureOf("uproot-issue-722.root", "hist", ValueType::Profile),
        HasSubstr("\"hist\" in " + own("uproot-issue-722.root").string() + " is a TH1D, which is not a profile"));
    EXPECT_THAT(failureOf("uproot-issue38c.root", "", ValueType::Histogram), HasSubstr("h_den (TH1F), h_num (TH1F)"));
}

/// C. J. Clopper, E. S. Pearson, Biometrika 26 (1934) 404: with no event of n, the limit p solves (1 - p)^n = alpha
/// / 2.
TEST(ClopperPearson, agreesWithClosedFormsAndTables) {
    const double level = 0.95;
    EXPECT_EQ(root::clopperPearson(0, 10, level).low, 0.0);
    EXPECT_NEAR(root::clopperPearson(0, 10, level).high, 1.0 - std::pow(0.025, 0.1), 1e-14);
    EXPECT_NEAR(root::clopperPearson(10, 10, level).low, std::pow(0.025, 0.1), 1e-14);
    EXPECT_NEAR(root::clopperPearson(5, 10, level).low, 0.187086, 1e-6);
    EXPECT_NEAR(root::clopperPearson(5, 10, level).high, 0.812914, 1e-6);
}

TEST(IncompleteBeta, agreesWithClosedForms) {
    EXPECT_NEAR(root::incompleteBeta(1, 1, 0.3), 0.3, 1e-15);
    EXPECT_NEAR(root::incompleteBeta(2, 1, 0.3), 0.09, 1e-15);
    EXPECT_NEAR(root::incompleteBeta(1, 5, 0.2), 1.0 - std::pow(0.8, 5), 1e-15);
    EXPECT_NEAR(root::incompleteBeta(0.5, 0.5, 0.5), 0.5, 1e-14);
    EXPECT_EQ(root::incompleteBeta(3, 4, 0.0), 0.0);
    EXPECT_EQ(root::incompleteBeta(3, 4, 1.0), 1.0);
}

}  // namespace
}  // namespace velmorak
