#include "KindHarness.h"
#include "ReportRecords.h"

#include <expat.h>
#include <gtest/gtest.h>

#include <velmorak/FunctionObject.h>
#include <velmorak/Histogram.h>

#include <cstring>
#include <set>

namespace {

using namespace velmorak;
using test::FixedDate;
using test::KindHarness;
using test::peak;
using test::record;
using test::textIn;

namespace fs = std::filesystem;

struct Page {
    std::string text;  ///< Between the tags.
    std::multiset<std::string> ids;
    std::multiset<std::string> tags;
    std::set<std::string> references;  ///< Whatever an attribute could fetch.
    std::string style;
};

void onStart(void* data, const XML_Char* tag, const XML_Char** attributes) {
    auto& page = *static_cast<Page*>(data);
    page.tags.insert(tag);
    for (; *attributes; attributes += 2) {
        if (std::strcmp(attributes[0], "id") == 0) {
            page.ids.insert(attributes[1]);
        }
        for (const char* name : {"href", "xlink:href", "src", "srcset", "data", "action"}) {
            if (std::strcmp(attributes[0], name) == 0) {
                page.references.insert(attributes[1]);
            }
        }
    }
}

void onText(void* data, const XML_Char* characters, int length) {
    static_cast<Page*>(data)->text.append(characters, static_cast<std::size_t>(length));
}

/// @return the page taken apart, and a failure if it is not well-formed.
Page pageOf(const std::string& html) {
    Page page;
    XML_Parser parser = XML_ParserCreate(nullptr);
    XML_SetUserData(parser, &page);
    XML_SetElementHandler(parser, onStart, nullptr);
    XML_SetCharacterDataHandler(parser, onText);
    EXPECT_EQ(XML_Parse(parser, html.data(), static_cast<int>(html.size()), 1), XML_STATUS_OK)
        << XML_ErrorString(XML_GetErrorCode(parser)) << " in line " << XML_GetCurrentLineNumber(parser);
    XML_ParserFree(parser);
    return page;
}

DataObjectPtr fitted() {
    auto function = std::make_shared<FunctionObject>();
    function->title = "Straight line";
    function->codelet = "codelet:line:verbatim:jel : 1 : a+b*x[0] : a,b : null";
    function->arguments = {{.name = "x", .ranges = {{.low = 0, .high = 10}}}};
    function->parameters = {{.name = "a", .value = 2.5}, {.name = "b", .value = -0.125}};
    function->annotation = {{.key = "a_error", .value = "0.25"},
                            {.key = "chi2", .value = "7.5"},
                            {.key = "ndf", .value = "8"},
                            {.key = "p_value", .value = "0.4842"},
                            {.key = "status", .value = "converged"}};
    return function;
}

std::string written(const KindHarness& bench) {
    return textIn(bench.folder() / "bench.html");
}

TEST(ReportKind, isOnePageThatRefersToNothingOutside) {
    KindHarness bench("Report");
    bench.remember(record()).set("objects", "2").wire("object", peak("Mass")).wire("object2", fitted()).run();
    const std::string html = written(bench);
    EXPECT_TRUE(html.starts_with("<!DOCTYPE html>\n<html lang=\"en\">"));
    const Page page = pageOf(html);
    for (const std::string& reference : page.references) {
        ASSERT_TRUE(reference.starts_with('#')) << reference;
        EXPECT_EQ(page.ids.count(reference.substr(1)), 1U) << reference;
    }
    for (const std::string tag : {"script", "link", "img", "iframe", "object", "embed", "image", "foreignObject"}) {
        EXPECT_EQ(page.tags.count(tag), 0U) << tag;
    }
    for (const std::string part : {"http", "@import", "file:", "//"}) {
        EXPECT_EQ(html.find(part), std::string::npos) << part;
    }
    EXPECT_EQ(page.tags.count("html"), 1U);
    EXPECT_EQ(page.tags.count("h1"), 1U);
    EXPECT_EQ(page.tags.count("svg"), 2U);
}

TEST(ReportKind, everyIdIsThereOnce) {
    KindHarness bench("Report");
    bench.remember(record()).set("objects", "3");
    bench.wire("object", peak("One")).wire("object2", peak("Two")).wire("object3", peak("Three")).run();
    const Page page = pageOf(written(bench));
    EXPECT_EQ(page.tags.count("svg"), 4U);
    EXPECT_EQ(std::set<std::string>(page.ids.begin(), page.ids.end()).size(), page.ids.size());
    for (const std::string title : {"One", "Two", "Three"}) {
        EXPECT_NE(page.text.find(title), std::string::npos);
    }
}

TEST(ReportKind, saysWhereEverythingCameFrom) {
    KindHarness bench("Report");
    bench.remember(record()).run();
    const std::string text = pageOf(written(bench)).text;
    const std::vector<std::string> parts = {"analysis.zedra",
                                            std::string(64, 'd'),
                                            "9.8.7",
                                            "events.csv",
                                            "12345",
                                            std::string(64, 'e'),
                                            "RandomTable, version 3",
                                            "4711",
                                            "Seeds",
                                            "from Events table",
                                            "lost.csv"};
    for (const std::string& part : parts) {
        EXPECT_NE(text.find(part), std::string::npos) << part;
    }
}

TEST(ReportKind, namesWhatFailedAndWhatIsMissing) {
    RunRecord given = record();
    given.plugins[2].inputs[0] = {.name = "object", .value = "", .plugin = "Lost", .output = "rows"};
    KindHarness bench("Report");
    bench.remember(given).wire("object", std::monostate()).run();
    const std::string text = pageOf(written(bench)).text;
    for (const std::string part :
         {"1 of 3 plug-ins gave no result", "\"lost.csv\" cannot be opened", "Missing in this report: source rows."}) {
        EXPECT_NE(text.find(part), std::string::npos) << part << "\n" << text;
    }
    for (RecordedPlugin& plugin : given.plugins) {
        plugin.state = RecordedState::Done;
    }
    bench.remember(given).run();
    EXPECT_NE(written(bench).find("None: every requested plug-in"), std::string::npos);
}

TEST(ReportKind, showsNumbersTextsAndFits) {
    KindHarness bench("Report");
    bench.remember(record()).set("objects", "4").set("comment", "A first look.").set("title", "Heading");
    bench.wire("object", 0.1).wire("object2", std::string("cut\trows\nall\t10\ntight\t4\n"));
    bench.wire("object3", fitted()).wire("object4", std::string("plain words")).run();
    const std::string html = written(bench);
    for (const std::string part : {"<h1>Heading</h1>", "<p>A first look.</p>", "<td class=\"number\">0.1</td>",
                                   "<th>rows</th>", "<td>tight</td><td class=\"number\">4</td>",
                                   "<pre>plain words</pre>", "<td>a</td>", "<td class=\"number\">2.50 ± 0.25</td>",
                                   "<td class=\"number\">-0.125</td>", "7.5 / 8", "0.4842", "converged"}) {
        EXPECT_NE(html.find(part), std::string::npos) << part;
    }
    pageOf(html);
}

TEST(ReportKind, roundsNumbersWithErrorsAndWritesCountsAsIntegers) {
    KindHarness bench("Report");
    const CovarianceMatrix variance{.origin = "fit", .names = {"mean"}, .elements = {0.01437 * 0.01437}};
    bench.remember(record()).set("objects", "2").wire("object", 1e6);
    bench.wire("object2", numbersWithErrors({91.21234}, variance).front()).run();
    const std::string html = written(bench);
    EXPECT_NE(html.find("<td class=\"number\">1000000</td>"), std::string::npos);
    EXPECT_NE(html.find("<td class=\"number\">91.212 ± 0.014</td>"), std::string::npos);
}

TEST(ReportKind, aFunctionLiesOverTheObjectBeforeIt) {
    KindHarness bench("Report");
    bench.remember(record()).set("objects", "2").wire("object", peak("Mass")).wire("object2", fitted()).run();
    EXPECT_EQ(pageOf(written(bench)).tags.count("figure"), 2U);
    bench.wire("object", fitted()).wire("object2", peak("Mass")).run();
    EXPECT_EQ(pageOf(written(bench)).tags.count("figure"), 3U);
}

TEST(ReportKind, noTextIsTakenAsMarkup) {
    const std::vector<std::string> nasty = {"<script>alert(1)</script>",
                                            "a & b &amp; c",
                                            "\"'><svg onload=x>",
                                            "]]> <!-- -->",
                                            std::string("nul\0 \x1b \xff\xc0 \xC2\x85", 12),
                                            "\xEF\xBF\xBE",
                                            " id='x' href='#y'"};
    for (const std::string& text : nasty) {
        RunRecord given = record();
        given.document = text + ".zedra";
        given.files[0].name = text;
        for (RecordedPlugin& plugin : given.plugins) {
            plugin.kind = text;
            plugin.sentence = text;
            plugin.inputs.push_back({.name = text, .value = text, .plugin = "", .output = ""});
        }
        given.plugins[0].name = text;
        given.plugins[2].inputs[0].plugin = text;
        KindHarness bench("Report");
        bench.remember(given).set("objects", "3").set("title", text).set("comment", text);
        bench.wire("object", peak(text))
            .wire("object2", text + "\n" + text)
            .wire("object3", text + "\t" + text + "\na\tb")
            .run();
        const Page page = pageOf(written(bench));
        EXPECT_EQ(page.tags.count("script"), 0U);
        EXPECT_EQ(page.tags.count("svg"), 2U) << text;
        EXPECT_EQ(std::set<std::string>(page.ids.begin(), page.ids.end()).size(), page.ids.size());
        EXPECT_FALSE(page.ids.contains("x"));
        EXPECT_FALSE(page.references.contains("#y"));
    }
}

TEST(ReportKind, whatCannotBeDrawnIsSaid) {
    KindHarness bench("Report");
    const Grid<3> cube({Axis(1, 0, 1), Axis(1, 0, 1), Axis(1, 0, 1)});
    bench.expectWarnings().remember(record()).wire("object", DataObjectPtr(std::make_shared<Histogram3D>(cube))).run();
    EXPECT_NE(pageOf(written(bench)).text.find("It cannot be drawn: "), std::string::npos);
    EXPECT_EQ(bench.warnings().size(), 1U);
}

TEST(ReportKind, hasDateContentsAndFoldedValues) {
    KindHarness bench("Report");
    bench.setDate(1732291800).remember(record()).wire("object", peak("Mass")).run();
    const std::string html = written(bench);
    const Page page = pageOf(html);
    EXPECT_NE(page.text.find("written on 2024-11-22 16:10 UTC"), std::string::npos);
    EXPECT_EQ(page.tags.count("details"), 3U);
    EXPECT_TRUE(page.references.contains("#section-1"));
    EXPECT_NE(html.find("<li><a href=\"#section-3\">Pictures</a></li>"), std::string::npos);
}

TEST(ReportKind, drawsWithTheSettingsOfThePlotThatDrawsTheSame) {
    RunRecord given = record();
    given.plugins[2].inputs = {{.name = "object", .value = "", .plugin = "source", .output = "histogram"}};
    given.plugins.push_back({.name = "Picture",
                             .kind = "Plot",
                             .version = 1,
                             .inputs = {{.name = "object", .value = "", .plugin = "source", .output = "histogram"},
                                        {.name = "formats", .value = "png", .plugin = "", .output = ""},
                                        {.name = "title", .value = "A title of its own", .plugin = "", .output = ""},
                                        {.name = "xlabel", .value = "p_{T}", .plugin = "", .output = ""},
                                        {.name = "size", .value = "10 10", .plugin = "", .output = ""},
                                        {.name = "dpi", .value = "100", .plugin = "", .output = ""}},
                             .state = RecordedState::Done});
    KindHarness bench("Report");
    bench.remember(given).wire("object", peak("Mass")).run();
    const std::string html = written(bench);
    EXPECT_NE(html.find("A title of its own"), std::string::npos);
    EXPECT_NE(html.find("viewBox=\"0 0 378 378\""), std::string::npos);
    given.plugins.back().inputs[2].name = "other";
    given.plugins.back().inputs[0].output = "function";
    bench.remember(given).run();
    EXPECT_EQ(written(bench).find("viewBox=\"0 0 378 378\""), std::string::npos);
}

TEST(ReportKind, theSameRunGivesTheSameBytes) {
    KindHarness first("Report");
    KindHarness second("Report");
    for (KindHarness* bench : {&first, &second}) {
        bench->setDate(1732291800).remember(record()).wire("object", peak("Mass")).run();
    }
    EXPECT_EQ(written(first), written(second));
}

TEST(ReportKind, needsNothingWired) {
    KindHarness bench("Report", "empty");
    bench.set("file", "page.html").run();
    pageOf(textIn(bench.folder() / "page.html"));
    EXPECT_TRUE(bench.kind().isRunReporter());
    EXPECT_TRUE(bench.kind().ports({}).outputs.empty());
}

}  // namespace
