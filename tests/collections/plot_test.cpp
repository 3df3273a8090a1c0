#include "KindHarness.h"

#include <expat.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>

namespace {

using namespace velmorak;
using test::KindHarness;
using test::textIn;

namespace fs = std::filesystem;

DataObjectPtr peak(double center, const std::string& title, int entries = 4000) {
    auto histogram = std::make_shared<Histogram1D>(Axis(60, 60, 120));
    for (int i = 0; i < entries; ++i) {
        const double quantile = (i + 0.5) / entries;
        histogram->fill(center + 1.6 * std::tan(3.141592653589793 * (quantile - 0.5)));
    }
    histogram->name = "mass";
    histogram->title = title;
    histogram->setAxisTitle("m(μ⁺μ⁻) [GeV]");
    return histogram;
}

std::vector<std::string> filesIn(const fs::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        names.push_back(entry.path().lexically_relative(folder).string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

/// All text between the tags, and a failure if this is no XML.
std::string textOfXml(const std::string& xml) {
    std::string text;
    XML_Parser parser = XML_ParserCreate(nullptr);
    XML_SetUserData(parser, &text);
    XML_SetCharacterDataHandler(parser, [](void* target, const XML_Char* characters, int length) {
        static_cast<std::string*>(target)->append(characters, static_cast<std::size_t>(length));
    });
    EXPECT_EQ(XML_Parse(parser, xml.data(), static_cast<int>(xml.size()), 1), XML_STATUS_OK)
        << XML_ErrorString(XML_GetErrorCode(parser));
    XML_ParserFree(parser);
    return text;
}

unsigned bigEndian(const std::string& bytes, std::size_t at) {
    unsigned number = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        number = number * 256 + static_cast<unsigned char>(bytes.at(at + i));
    }
    return number;
}

void expectPictures(const KindHarness& bench, const std::string& name) {
    const std::string png = textIn(bench.folder() / (name + ".png"));
    EXPECT_TRUE(png.starts_with("\x89PNG\r\n\x1a\n"));
    EXPECT_EQ(bigEndian(png, 16), 1600U);
    EXPECT_EQ(bigEndian(png, 20), 1000U);
    EXPECT_NE(png.find("IEND"), std::string::npos);
    const std::string svg = textIn(bench.folder() / (name + ".svg"));
    EXPECT_NE(svg.find("<svg"), std::string::npos);
    textOfXml(svg);
}

TEST(PlotKind, writesPicturesScriptAndData) {
    KindHarness bench("Plot", "Mass plot");
    bench.wire("object", peak(91.2, "Dimuon mass")).run();
    EXPECT_EQ(filesIn(bench.folder()),
              (std::vector<std::string>{"Mass plot.dat", "Mass plot.gp", "Mass plot.png", "Mass plot.svg"}));
    expectPictures(bench, "Mass plot");
}

TEST(PlotKind, titlesComeFromTheHistogramWhereNoneAreGiven) {
    KindHarness bench("Plot");
    bench.wire("object", peak(91.2, "Dimuon mass")).run();
    const std::string text = textOfXml(textIn(bench.folder() / "bench.svg"));
    for (const std::string expected : {"Dimuon mass", "m(μ⁺μ⁻) [GeV]", "Entries / GeV", "Mean", "RMS"}) {
        EXPECT_NE(text.find(expected), std::string::npos) << expected;
    }
    bench.set("title", "A talk").set("xlabel", "mass").set("ylabel", "events").set("statistics", "no").run();
    const std::string other = textOfXml(textIn(bench.folder() / "bench.svg"));
    for (const std::string expected : {"A talk", "mass", "events"}) {
        EXPECT_NE(other.find(expected), std::string::npos) << expected;
    }
    EXPECT_EQ(other.find("RMS"), std::string::npos);
}

TEST(PlotKind, anAxisOfSecondsSince1970ShowsDates) {
    auto histogram = std::make_shared<Histogram1D>(Axis(30, 1711929600.0, 1714521600.0));
    histogram->fill(1713000000.0);
    histogram->setAxisTitle("begin [s since 1970-01-01 UTC]");
    KindHarness bench("Plot");
    bench.wire("object", DataObjectPtr(histogram)).run();
    const std::string text = textOfXml(textIn(bench.folder() / "bench.svg"));
    EXPECT_NE(text.find("begin"), std::string::npos);
    EXPECT_EQ(text.find("since 1970"), std::string::npos) << text;
    EXPECT_NE(text.find("2024-04-"), std::string::npos) << text;
}

TEST(PlotKind, theScriptGivesTheSamePictureByHand) {
    KindHarness bench("Plot");
    bench.set("file", "by hand's").wire("object", peak(91.2, "Dimuon mass")).run();
    const fs::path hand = bench.folder() / "hand";
    fs::create_directory(hand);
    for (const std::string ending : {".gp", ".dat"}) {
        fs::copy_file(bench.folder() / ("by hand's" + ending), hand / ("by hand's" + ending));
    }
    ASSERT_EQ(std::system(("cd '" + hand.string() + "' && gnuplot \"by hand's.gp\"").c_str()), 0);
    for (const std::string ending : {".png", ".svg"}) {
        EXPECT_EQ(textIn(hand / ("by hand's" + ending)), textIn(bench.folder() / ("by hand's" + ending)));
    }
}

TEST(PlotKind, theSameHistogramGivesTheSameBytes) {
    KindHarness first("Plot");
    KindHarness second("Plot");
    for (KindHarness* bench : {&first, &second}) {
        bench->wire("object", peak(91.2, "Dimuon mass")).run();
    }
    for (const std::string& file : filesIn(first.folder())) {
        EXPECT_EQ(textIn(first.folder() / file), textIn(second.folder() / file)) << file;
    }
}

TEST(PlotKind, noTextBecomesACommand) {
    const fs::path mark = fs::temp_directory_path() / "velmorak-plot-was-here";
    fs::remove(mark);
    const std::string touch = "touch " + mark.string();
    const std::vector<std::string> nasty = {
        "`" + touch + "`",
        "'; !" + touch + " #",
        "\"; system('" + touch + "') #",
        "a\n!" + touch + "\nb",
        "a\r\nset output\n!" + touch,
        "' . system(\"" + touch + "\") . '",
        "$(" + touch + ")",
        "@GPFUN_x ''`" + touch + "`",
        "it's \\",
        "\\",
        "'",
        "''",
        "`",
        "% %s %n {/Bold x} x_2 ^3",
        "<b>&amp;</b> ]]> <!--",
        "< " + touch,
        "| " + touch,
        std::string("nul\0end", 7),
        "\xEF\xBF\xBE \xEF\xBF\xBF",
        "@data",
        "'@data",
        "broken \xff\xc0\xaf\xed\xa0\x80",
        "\x7f\x1b[31m",
    };
    for (const std::string& text : nasty) {
        KindHarness bench("Plot");
        bench.set("title", text).set("xlabel", text).set("ylabel", text).set("legend", "automatic");
        bench.wire("object", peak(91.2, text)).run();
        expectPictures(bench, "bench");
        EXPECT_FALSE(fs::exists(mark)) << text;
        EXPECT_EQ(filesIn(bench.folder()).size(), 4U) << text;
    }
}

TEST(PlotKind, textsAreShownLetterForLetter) {
    KindHarness bench("Plot");
    const std::string text = "it's `x` \"y\" <z> & {a}_b^c \\n %s @data it's @data";
    bench.set("title", text).wire("object", peak(91.2, "t")).run();
    EXPECT_NE(textOfXml(textIn(bench.folder() / "bench.svg")).find(text), std::string::npos);
}

TEST(PlotKind, noFileNameBecomesACommand) {
    const fs::path mark = fs::temp_directory_path() / "velmorak-plot-name-was-here";
    const std::vector<std::string> names = {"-e x", "<ls", "|cat", "a'b", "`c`", "$d", "'-'", "e.dat", "~f", "e\\"};
    for (const std::string& name : names) {
        KindHarness bench("Plot");
        bench.set("file", name).wire("object", peak(91.2, "t")).run();
        expectPictures(bench, name);
    }
    EXPECT_NE(test::shippedKind("Plot").refusal("file", "a\nb"), "");
    EXPECT_FALSE(fs::exists(mark));
}

TEST(PlotKind, anEndingInTheFileNameIsNotDoubled) {
    KindHarness bench("Plot");
    bench.set("file", "mass.png").wire("object", peak(91.2, "t")).run();
    expectPictures(bench, "mass");
}

TEST(PlotKind, severalHistogramsHaveInputsOfTheirOwn) {
    KindHarness bench("Plot");
    bench.set("objects", "3").set("legend", "automatic");
    const Ports ports = bench.ports();
    EXPECT_EQ(ports.inputs.front().name, "object");
    EXPECT_EQ(ports.inputs.at(ports.inputs.size() - 2).name, "object2");
    EXPECT_EQ(ports.inputs.back().name, "object3");
    bench.wire("object", peak(85, "First")).wire("object2", peak(91.2, "Second"));
    EXPECT_TRUE(bench.failure().starts_with("object3: ")) << bench.failure();
    bench.wire("object3", peak(100, "Third")).run();
    const std::string text = textOfXml(textIn(bench.folder() / "bench.svg"));
    for (const std::string expected : {"First", "Second", "Third"}) {
        EXPECT_NE(text.find(expected), std::string::npos) << expected;
    }
}

TEST(PlotKind, portsThatStayKeepTheirPlace) {
    const Kind& plot = test::shippedKind("Plot");
    const Ports one = plot.ports({});
    const Ports many = plot.ports({{"objects", "16"}});
    EXPECT_EQ(many.inputs.size(), one.inputs.size() + 15);
    for (std::size_t i = 0; i < one.inputs.size(); ++i) {
        EXPECT_EQ(many.inputs[i].name, one.inputs[i].name);
    }
    EXPECT_EQ(plot.ports({{"objects", "many"}}).inputs.size(), one.inputs.size());
    EXPECT_EQ(plot.ports({{"objects", "1e30"}}).inputs.size(), many.inputs.size());
    EXPECT_EQ(plot.ports({{"objects", "-4"}}).inputs.size(), one.inputs.size());
}

TEST(PlotKind, drawsWhatIsEmptyNegativeOrNotANumber) {
    auto odd = std::make_shared<Histogram1D>(Axis(std::vector<double>{-5, 0, 1, 10, 1000}));
    KindHarness bench("Plot");
    bench.expectWarnings().wire("object", DataObjectPtr(odd)).run();
    expectPictures(bench, "bench");
    auto weighted = std::make_shared<Histogram1D>(Axis(std::vector<double>{-5, 0, 1, 10, 1000}));
    weighted->fill(0.5, -3);
    weighted->fill(5, std::numeric_limits<double>::infinity());
    weighted->fill(50, 1e-200);
    for (const std::string log : {"no", "yes"}) {
        bench.set("logx", log).set("logy", log).wire("object", DataObjectPtr(weighted)).run();
        expectPictures(bench, "bench");
    }
}

TEST(PlotKind, drawsTheLargestAndSmallestNumbers) {
    auto extreme = std::make_shared<Histogram1D>(Axis(std::vector<double>{1e-200, 1e-100, 1, 1e200}));
    extreme->fill(1e-150, 1e-320);
    extreme->fill(0.5, 1e150);
    extreme->fill(10, 1e150);
    KindHarness bench("Plot");
    for (const std::string log : {"no", "yes"}) {
        bench.set("logx", log).set("logy", log).wire("object", DataObjectPtr(extreme)).run();
        expectPictures(bench, "bench");
    }
}

TEST(PlotKind, aLogarithmicAxisNeedsSomethingAboveZero) {
    KindHarness bench("Plot");
    bench.set("logx", "yes").wire("object", DataObjectPtr(std::make_shared<Histogram1D>(Axis(4, -2, 0))));
    EXPECT_TRUE(bench.failure().starts_with("logx: ")) << bench.failure();
}

class OtherPath {
public:
    explicit OtherPath(const std::string& path) : former(std::getenv("PATH")) { setenv("PATH", path.c_str(), 1); }
    ~OtherPath() { setenv("PATH", former.c_str(), 1); }

private:
    std::string former;
};

TEST(PlotKind, saysWhichPackageIsMissing) {
    KindHarness bench("Plot");
    const OtherPath path(bench.folder().string());
    bench.wire("object", peak(91.2, "t"));
    EXPECT_NE(bench.failure().find("gnuplot-nox"), std::string::npos) << bench.failure();
    EXPECT_TRUE(filesIn(bench.folder()).empty());
}

TEST(PlotKind, endsWhenTheRunIsStopped) {
    KindHarness bench("Plot");
    bench.wire("object", peak(91.2, "t")).stop();
    EXPECT_THROW(bench.run(), Stopped);
    EXPECT_TRUE(filesIn(bench.folder()).empty());
}

}  // namespace
