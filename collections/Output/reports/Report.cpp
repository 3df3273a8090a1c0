#include "Output/kinds.h"

#include "Output/Ports.h"
#include "Output/plots/script/Drawing.h"
#include "Output/texts/TextOutput.h"
#include "PlotSettings.h"
#include "ReportPage.h"
#include "ReportPdf.h"

#include <velmorak/Dates.h>

#include <algorithm>
#include <chrono>
#include <optional>
#include <utility>

namespace velmorak {

namespace {

const InputSpec objectInput = {.name = "object",
                               .description =
                                   "Number, text, histogram, list of histograms, profile, points or function for the "
                                   "report. A function is drawn over the "
                                   "object before it. Values that are missing because a plug-in failed are named.",
                               .type = ValueType::Any,
                               .isOptional = true};

std::string outputOf(const RunRecord& record, const std::string& plugin, const std::string& input) {
    for (const RecordedPlugin& recorded : record.plugins) {
        for (const RecordedInput& each : recorded.inputs) {
            if (recorded.name == plugin && each.name == input) {
                return each.output;
            }
        }
    }
    return {};
}

std::vector<ReportItem> itemsOf(const Arguments& arguments, const RunRecord& record, const RunContext& context) {
    std::vector<ReportItem> items;
    for (const std::string& input : numberedInputs(arguments, "objects", "object")) {
        if (arguments.isWired(input)) {
            items.push_back({.input = input,
                             .plugin = arguments.sourceName(input),
                             .output = outputOf(record, context.pluginName(), input),
                             .value = arguments.value(input)});
        }
    }
    return items;
}

/// Items that are drawn together: an object, and the functions that follow it.
std::vector<std::vector<const ReportItem*>> frames(const std::vector<ReportItem>& items) {
    std::vector<std::vector<const ReportItem*>> all;
    for (const ReportItem& item : items) {
        const auto* object = std::get_if<DataObjectPtr>(&item.value);
        if (!object) {
            continue;
        }
        const bool isOver = (*object)->type() == ValueType::Function && !all.empty();
        if (!isOver) {
            all.emplace_back();
        }
        all.back().push_back(&item);
    }
    return all;
}

/// Objects, and the Plot that draws them, too, if there is one.
struct ReportDrawing {
    PlotPicture picture;  ///< With the settings of that Plot.
    std::string plot;     ///< Its name.
};

ReportDrawing drawingOf(const std::vector<const ReportItem*>& frame, const RunRecord& record) {
    ReportDrawing drawing;
    std::vector<ItemSource> sources;
    for (const ReportItem* item : frame) {
        drawing.picture.objects.push_back(
            {.input = item->input, .maker = item->plugin, .object = std::get<DataObjectPtr>(item->value)});
        sources.push_back({.plugin = item->plugin, .output = item->output});
    }
    if (auto settings = settingsInRun(record, sources)) {
        drawing.picture.style = std::move(settings->style);
        drawing.plot = std::move(settings->plot);
    }
    return drawing;
}

std::string headingOf(const PlotObject& first) {
    return first.object->title.empty() ? first.maker : first.object->title;
}

ReportPicture drawn(const PlotPicture& drawing, RunContext& context) {
    ReportPicture picture{.heading = headingOf(drawing.objects.front()), .svg = {}, .sentence = {}};
    try {
        picture.svg = drawnSvg(drawing, context);
    } catch (const Failure& failure) {
        picture.sentence = failure.what();
        context.warn(picture.heading + ": " + picture.sentence);
    }
    return picture;
}

bool isIn(const std::vector<PictureInRun>& pictures, const std::string& plot) {
    return std::any_of(pictures.begin(), pictures.end(), [&](const PictureInRun& one) { return one.plot == plot; });
}

/// Draws the pictures of the page. @return those for the PDF: what can be drawn, and is not in the PDF already.
std::vector<PlotPicture> drawAll(ReportContents& contents, const std::vector<PictureInRun>& inRun,
                                 RunContext& context) {
    std::vector<PlotPicture> others;
    for (const std::vector<const ReportItem*>& frame : frames(contents.items)) {
        ReportDrawing drawing = drawingOf(frame, contents.record);
        contents.pictures.push_back(drawn(drawing.picture, context));
        if (!contents.pictures.back().svg.empty() && !isIn(inRun, drawing.plot)) {
            others.push_back(std::move(drawing.picture));
        }
    }
    return others;
}

std::string titleOf(const std::string& given, const RunRecord& record, const RunContext& context) {
    if (!given.empty()) {
        return given;
    }
    const std::string ending = ".zedra";
    const std::string& document = record.document;
    if (document.empty()) {
        return context.pluginName();
    }
    return document.ends_with(ending) ? document.substr(0, document.size() - ending.size()) : document;
}

double secondsNow() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return static_cast<double>(std::chrono::duration_cast<std::chrono::seconds>(now).count());
}

/// To the minute.
std::string dateOfRun(const RunContext& context) {
    const std::optional<double> given = context.fixedDate();
    const std::string text = dateText(given ? *given : secondsNow());
    constexpr std::size_t day = 10;
    constexpr std::size_t minute = 16;
    return text.size() > minute ? text.substr(0, day) + " " + text.substr(day + 1, minute - day - 1) + " UTC" : text;
}

/// Writes a page about the whole run.
class ReportKind : public Function {
public:
    std::string name() const override { return "Report"; }
    std::string summary() const override;
    std::string notes() const override;
    bool isRunReporter() const override { return true; }
    Ports ports(const ValueTexts& values) const override;
    void evaluate(const Arguments& arguments, Results& results, RunContext& context) const override;
};

}  // namespace

std::string ReportKind::summary() const {
    return "Writes one HTML page about the whole run: pipeline, pictures, numbers, fits, failures and where everything "
           "came "
           "from.";
}

std::string ReportKind::notes() const {
    return R"(The page is one self-contained file that opens without a network. It contains

- failures with their reasons, and the plug-ins that could not run because of them
- the pipeline with its boxes and wires
- each histogram, list of histograms, profile and set of points that is wired to the report, drawn with the settings of the `Plot` that draws
  it, too, if there is one; a function is drawn over the object wired before it
- parameters of functions, with errors, χ²/ndf and p-value if they were fitted
- numbers, with their errors, and texts: lines with tabs, such as those of `CutFlow`, become a table
- the document as it was run and the files that were read, with SHA-256 sums, the versions of the library and of each
  kind, seeds, the date, and the values of all plug-ins, folded

A report is written when everything else has ended, even if one of its inputs failed, and in every run. The same
pipeline with the same files gives the same bytes, but for the date. This is when the run began, or what the environment
variable `SOURCE_DATE_EPOCH` says; `velmorak-run --again` keeps that of the recorded run. With `pdf`, pictures are also written as one PDF beside the page. All its pages are as large as the first picture;
pictures of another size are scaled to it. Values with errors are rounded as by `Print`; all digits are in `run.json`.)";
}

Ports ReportKind::ports(const ValueTexts& values) const {
    Ports ports;
    ports.inputs = {
        objectInput,
        countInput("objects", "Number of items in the report, 1 to 16; each has its own input."),
        {.name = "file",
         .description = "Name of the page in the results folder. Empty: the name of this plug-in with .html.",
         .type = ValueType::Text},
        {.name = "title",
         .description = "Heading of the page. Empty: the name of the document.",
         .type = ValueType::Text},
        {.name = "comment", .description = "A paragraph below the heading.", .type = ValueType::Text},
        {.name = "pdf",
         .description =
             "Yes: all pictures of the report are also written as one PDF, a page each, beside the page. Run: "
             "first those of every Plot of the run, then those of the report that no Plot draws.",
         .type = ValueType::Choice,
         .value = "no",
         .choices = {"no", "yes", "run"}},
    };
    addNumbered(ports, objectInput, numberedCount(values, "objects"));
    return ports;
}

void ReportKind::evaluate(const Arguments& arguments, Results&, RunContext& context) const {
    ReportContents contents;
    contents.record = context.record();
    contents.title = titleOf(arguments.text("title"), contents.record, context);
    contents.comment = arguments.text("comment");
    contents.date = dateOfRun(context);
    contents.items = itemsOf(arguments, contents.record, context);
    const std::string& pdf = arguments.text("pdf");
    PdfContents pictures{.inRun = pdf == "run" ? picturesInRun(contents.record) : std::vector<PictureInRun>()};
    pictures.ofReport = drawAll(contents, pictures.inRun, context);
    const std::string file = writtenFileName(arguments, context, ".html");
    TextOutput output(file, reportPage(contents), context);
    output.complete();
    if (pdf == "no") {
        return;
    }
    if (pictures.inRun.empty() && pictures.ofReport.empty()) {
        context.warn("pdf: the " + std::string(pdf == "run" ? "run" : "report") +
                     " has no pictures, so there is no PDF");
        return;
    }
    writeReportPdf(file, pictures, context);
}

std::unique_ptr<Kind> makeReport() {
    return std::make_unique<ReportKind>();
}

}  // namespace velmorak
