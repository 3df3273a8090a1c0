#include "Plot.h"

#include "Gnuplot.h"
#include "PlotScript.h"
#include "Ports.h"

#include <algorithm>
#include <fstream>
#include <utility>

namespace velmorak {

namespace {

const InputSpec histogramInput = {
    .name = "histogram", .description = "Histogram to draw, as steps with its errors.", .type = ValueType::Histogram};

InputSpec choiceInput(const std::string& name, const std::string& description, const std::string& value) {
    return {
        .name = name, .description = description, .type = ValueType::Choice, .value = value, .choices = {"no", "yes"}};
}

std::vector<InputSpec> valueInputs() {
    return {
        {.name = "file",
         .description =
             "Name of the picture in the results folder, without ending: .png, .svg, and the script .gp with "
             "its data .dat are added. Empty: the name of this plug-in.",
         .type = ValueType::Text},
        {.name = "title",
         .description = "Shown above the picture. Empty: the title of the histogram, if there is only one.",
         .type = ValueType::Text},
        {.name = "xlabel",
         .description = "Title of the horizontal axis with its unit. Empty: that of the first histogram.",
         .type = ValueType::Text},
        {.name = "ylabel",
         .description = "Title of the vertical axis. Empty: entries, with the width of a bin where all have the same.",
         .type = ValueType::Text},
        choiceInput("logx", "Logarithmic horizontal axis, from the first edge above 0.", "no"),
        choiceInput("logy", "Logarithmic vertical axis; a bin that is not above 0 stays empty.", "no"),
        choiceInput("legend", "Names the histograms by their titles; of several also the statistics.", "no"),
        choiceInput("statistics", "Shows entries, mean and rms of what lies in range.", "yes"),
    };
}

bool isControl(char c) {
    return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
}

/// The unit that stands in brackets at the end of an axis title; empty where there is none.
std::string unitIn(const std::string& axisTitle) {
    const std::size_t open = axisTitle.rfind('[');
    if (open == std::string::npos || !axisTitle.ends_with(']'))
        return {};
    return axisTitle.substr(open + 1, axisTitle.size() - open - 2);
}

bool isWeighted(const Histogram1D& histogram) {
    const BinSums sums = histogram.inRange();
    return sums.w != static_cast<double>(sums.entries) || sums.ww != sums.w;
}

std::string defaultYLabel(const std::vector<HistogramPtr>& histograms, const std::string& xLabel) {
    const bool hasWeights =
        std::any_of(histograms.begin(), histograms.end(), [](const HistogramPtr& h) { return isWeighted(*h); });
    const std::string quantity = hasWeights ? "Sum of weights" : "Entries";
    const Axis& axis = histograms.front()->axis();
    const bool haveOneWidth = std::all_of(histograms.begin(), histograms.end(), [&](const HistogramPtr& h) {
        return h->axis().isRegular() && h->axis().width(0) == axis.width(0);
    });
    const std::string unit = unitIn(xLabel);
    if (!haveOneWidth || unit.empty())
        return quantity + " / bin";
    const std::string width = roundedText(axis.width(0));
    return quantity + " / " + (width == "1" ? unit : "(" + width + " " + unit + ")");
}

std::string firstNotEmpty(const std::string& text, const std::string& otherwise) {
    return text.empty() ? otherwise : text;
}

std::string withoutEnding(const std::string& file) {
    for (const std::string ending : {".png", ".svg"})
        if (file.size() > ending.size() && file.ends_with(ending))
            return file.substr(0, file.size() - ending.size());
    return file;
}

PlotStyle styleOf(const Arguments& arguments, const std::vector<HistogramPtr>& histograms) {
    PlotStyle style;
    const std::string ownTitle = histograms.size() == 1 ? histograms.front()->title : std::string();
    style.title = firstNotEmpty(arguments.text("title"), ownTitle);
    style.xLabel = firstNotEmpty(arguments.text("xlabel"), histograms.front()->axis().title);
    style.yLabel = firstNotEmpty(arguments.text("ylabel"), defaultYLabel(histograms, style.xLabel));
    style.hasLogX = arguments.text("logx") == "yes";
    style.hasLogY = arguments.text("logy") == "yes";
    style.hasLegend = arguments.text("legend") == "yes";
    style.hasStatistics = arguments.text("statistics") == "yes";
    return style;
}

void writeText(const std::filesystem::path& file, const std::string& text) {
    std::ofstream out(file, std::ios::binary);
    out.write(text.data(), static_cast<std::streamsize>(text.size()));
    out.close();
    if (!out)
        throw Failure(file.string() + " could not be written");
}

void copyFile(const std::filesystem::path& from, const std::filesystem::path& to) {
    std::error_code error;
    if (!std::filesystem::copy_file(from, to, std::filesystem::copy_options::overwrite_existing, error))
        throw Failure(to.string() + " could not be written: " + error.message());
}

/// Draws in a folder of its own under the names that the files will have, so that the script gives the same picture
/// when it is run by hand beside its data.
void draw(const std::vector<HistogramPtr>& histograms, const PlotStyle& style, const std::string& resultName,
          RunContext& context) {
    const PlotFrame frame = frameOf(histograms, style);
    const ScratchFolder scratch;
    writeText(scratch.path() / (style.baseName + ".dat"), plotData(histograms, frame, style));
    writeText(scratch.path() / (style.baseName + ".gp"), plotScript(histograms, frame, style));
    runGnuplot(scratch.path(), "./" + style.baseName + ".gp", context);
    for (const std::string ending : {".dat", ".gp", ".png", ".svg"})
        context.writeResult(resultName + ending, [&](const std::filesystem::path& file) {
            copyFile(scratch.path() / (style.baseName + ending), file);
        });
}

}  // namespace

std::string PlotKind::summary() const {
    return "Draws histograms into one picture, as PNG and SVG, with script and data to change it by hand.";
}

std::string PlotKind::notes() const {
    return R"(The picture is drawn by gnuplot, which the package gnuplot-nox brings. The error of a bin is the square root of its sum of
squared weights. Script and data stay beside the picture: change them and run `gnuplot` on the script in that folder. A
title is drawn letter for letter; write µ, ⁺ or ² rather than a markup. `]]>` is drawn as `]] >`, and what is no valid
UTF-8 as a question mark.)";
}

Ports PlotKind::ports(const ValueTexts& values) const {
    Ports ports;
    ports.inputs = {histogramInput,
                    countInput("count", "Number of histograms in the picture, 1 to 16; each has an input of its own.")};
    for (InputSpec& input : valueInputs())
        ports.inputs.push_back(std::move(input));
    addNumbered(ports, histogramInput, numberedCount(values, "count"));
    return ports;
}

std::string PlotKind::refusal(const std::string& input, const std::string& value) const {
    if (input == "file" && std::any_of(value.begin(), value.end(), isControl))
        return "The name of a file has no line ends or other control characters.";
    return {};
}

void PlotKind::evaluate(const Arguments& arguments, Results&, RunContext& context) const {
    std::vector<HistogramPtr> histograms;
    for (const std::string& input : numberedInputs(arguments, "count", "histogram"))
        histograms.push_back(arguments.histogram(input));
    const std::string& file = arguments.text("file");
    if (std::string reason = refusal("file", file); !reason.empty())
        throw Failure("file", reason);
    const std::string resultName = file.empty() ? asFileName(context.pluginName()) : withoutEnding(file);
    PlotStyle style = styleOf(arguments, histograms);
    style.baseName = std::filesystem::path(resultName).filename().string();
    if (style.baseName.empty())
        throw Failure("file", "\"" + file + "\" cannot be the name of a picture");
    draw(histograms, style, resultName, context);
}

}  // namespace velmorak
