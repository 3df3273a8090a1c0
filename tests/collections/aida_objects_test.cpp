#include "KindHarness.h"

#include <velmorak/FunctionObject.h>
#include <velmorak/Histogram.h>
#include <velmorak/Points.h>
#include <velmorak/Profile.h>

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

/// The kinds that read one object of an AIDA file.
namespace velmorak::test {
namespace {

struct Reader {
    std::string kind;
    std::string output;  ///< Which is also what the type is called.
    std::string object;  ///< As a file has it, up to its name.
    std::string rest;
    std::string element;
};

const std::string axis =
    "<axis min='0' max='1' numberOfBins='1'/><statistics entries='1'/>"
    "<data1d><bin1d binNum='0' entries='1' height='2' error='1'/></data1d>";

std::vector<Reader> readers() {
    return {{"AidaHistogram", "histogram", "<histogram1d name='", axis + "</histogram1d>", "histogram1d"},
            {"AidaProfile", "profile", "<profile1d name='", axis + "</profile1d>", "profile1d"},
            {"AidaPoints", "points", "<dataPointSet dimension='1' name='",
             "<dataPoint><measurement value='1'/></dataPoint></dataPointSet>", "dataPointSet"},
            {"AidaFunction", "function", "<function name='",
             "<codelet>codelet:G:catalog</codelet><arguments/><parameters/></function>", "function"}};
}

class AidaObjectKinds : public testing::TestWithParam<Reader> {
protected:
    static std::string object(const std::string& name, const std::string& path) {
        return GetParam().object + name + "' path='" + path + "'>" + GetParam().rest;
    }
    void write(const std::string& objects, const std::string& end = "</aida>") {
        const std::filesystem::path file = bench.folder() / "data.aida";
        std::ofstream(file) << "<aida>" << objects << end;
        bench.set("file", file.string());
    }
    /// Name of the object that was read.
    std::string nameRead() {
        bench.run();
        const auto value = std::get<DataObjectPtr>(bench.value(GetParam().output));
        EXPECT_EQ(nameOf(value->type()), GetParam().output);
        return value->name;
    }
    /// The failure without the name of the folder.
    std::string complaint() {
        const std::string text = bench.failure();
        return text.substr(std::min(text.find("data.aida"), text.size()));
    }

    std::string other = "<tuple name='t' path='/o'><columns><column name='x'/></columns><rows/></tuple>";
    KindHarness bench{GetParam().kind};
};

TEST_P(AidaObjectKinds, readTheObjectOfAPath) {
    write(other + object("a", "/one") + object("a", "two/") + object("b", "/two"));
    for (const char* path : {"/two/b", "two/b", "/two//b/", "b"}) {
        EXPECT_EQ((bench.set("object", path), nameRead()), "b") << path;
    }
    EXPECT_EQ((bench.set("object", "/two/a"), nameRead()), "a");
}

TEST_P(AidaObjectKinds, readTheOnlyOneThatFitsWhereNoneIsNamed) {
    write(other + object("only", "/"));
    EXPECT_EQ(nameRead(), "only");
}

TEST_P(AidaObjectKinds, listThoseThatFitWhereSeveralDo) {
    write(other + object("a", "/one") + object("a", "/two"));
    const std::string& element = GetParam().element;
    const std::string several =
        "data.aida contains several matching objects; enter the full path of one; it contains /one/a (" + element +
        "), /two/a (" + element + ")";
    EXPECT_EQ(complaint(), several);
    EXPECT_EQ((bench.set("object", "a"), complaint()), several) << "the bare name of two";
}

TEST_P(AidaObjectKinds, sayWhatThereIsWhereNoneFits) {
    write(other);
    EXPECT_EQ(complaint(), "data.aida contains no " + GetParam().output + "; it contains /o/t (tuple)");
    EXPECT_EQ((bench.set("object", "/o/t"), complaint()),
              "data.aida contains no " + GetParam().output + " /o/t; it contains /o/t (tuple)");
    write(other + object("a", "/"));
    EXPECT_EQ((bench.set("object", "/none"), complaint()),
              "data.aida contains no " + GetParam().output + " /none; it contains /a (" + GetParam().element + ")");
}

TEST_P(AidaObjectKinds, readWhatIsCompleteBeforeDamage) {
    write(object("whole", "/") + object("cut", "/").substr(0, 60), "");
    bench.expectWarnings().set("object", "/whole");
    EXPECT_EQ(nameRead(), "whole");
    ASSERT_EQ(bench.warnings().size(), 1U);
    EXPECT_NE(bench.warnings()[0].find("byte "), std::string::npos) << bench.warnings()[0];
    bench.set("object", "/cut");
    EXPECT_NE(complaint().find("before it is damaged ("), std::string::npos) << complaint();
    write("", "");
    EXPECT_NE(bench.failure(), "");
}

TEST_P(AidaObjectKinds, needAFile) {
    EXPECT_EQ(bench.failure(), "file: no file is given: enter one here, or use -a on the command line");
    bench.set("file", "/nowhere/data.aida");
    EXPECT_NE(complaint().find("cannot be opened"), std::string::npos) << complaint();
}

INSTANTIATE_TEST_SUITE_P(Each, AidaObjectKinds, testing::ValuesIn(readers()),
                         [](const auto& reader) { return reader.param.kind; });

TEST(AidaHistogramKind, readsEveryDimensionAndConvertedClouds) {
    const std::string folder = std::string(VELMORAK_TEST_SOURCE) + "/tests/data/aida/";
    for (const std::string name : {"histogram1d", "histogram2d", "histogram3d", "cloud1d_converted"}) {
        KindHarness bench("AidaHistogram");
        bench.expectWarnings().set("file", folder + name + ".aida").run();
        const auto object = std::get<DataObjectPtr>(bench.value("histogram"));
        EXPECT_EQ(dynamic_cast<const Histogram2D*>(object.get()) != nullptr, name == "histogram2d");
        EXPECT_EQ(dynamic_cast<const Histogram3D*>(object.get()) != nullptr, name == "histogram3d");
    }
}

}  // namespace
}  // namespace velmorak::test
