#include "Output/kinds.h"

#include "Output/Ports.h"
#include "Output/plots/contents/PlotValues.h"
#include "Output/plots/script/Drawing.h"
#include "Output/plots/script/Gnuplot.h"
#include "PlotInputs.h"
#include "shared/AppendInputs.h"

#include <velmorak/TemporaryFolder.h>

#include <algorithm>
#include <utility>

namespace velmorak {

namespace {

std::string firstLine(const std::string& text) {
    return text.substr(0, text.find('\n'));
}

const InputSpec objectInput = {.name = "object",
                               .description =
                                   "Histogram, list of histograms, profile, points or function to draw. "
                                   "Two-dimensional objects are drawn as colours and need their own plot.",
                               .type = ValueType::Any,
                               .mayFail = true};

/// @param missing receives a line for each object that is not there because its plug-in failed.
std::vector<PlotObject> objectsOf(const Arguments& arguments, std::vector<std::string>& missing) {
    std::vector<PlotObject> objects;
    for (const std::string& input : numberedInputs(arguments, "objects", "object")) {
        if (!arguments.isWired(input)) {
            throw Failure(input, "nothing is wired");
        }
        const auto* object = std::get_if<DataObjectPtr>(&arguments.value(input));
        if (const std::string why = arguments.whyMissing(input); !why.empty() && !object) {
            missing.push_back("\"" + arguments.sourceName(input) + "\" is missing: " + firstLine(why));
            continue;
        }
        if (!object) {
            throw Failure(input, "a number or text cannot be drawn; wire a histogram, profile, points or function");
        }
        objects.push_back({.input = input, .maker = arguments.sourceName(input), .object = *object});
    }
    return objects;
}

void copyFile(const std::filesystem::path& from, const std::filesystem::path& to) {
    std::error_code error;
    if (!std::filesystem::copy_file(from, to, std::filesystem::copy_options::overwrite_existing, error)) {
        throw Failure(to.string() + " cannot be written: " + error.message());
    }
}

/// Draws in a temporary folder with the final file names, so that the script reproduces the picture when it is run by
/// hand next to its data.
void draw(PlotSheet& sheet, const PlotStyle& style, const std::string& resultName, RunContext& context) {
    const PlotFiles files = plotFiles(sheet, style);
    for (const std::string& warning : sheet.warnings()) {
        context.warn(warning);
    }
    const TemporaryFolder scratch("plot");
    drawInto(scratch.path(), files, style, context);
    std::vector<std::string> endings = {"dat", "gp"};
    endings.insert(endings.end(), style.formats.begin(), style.formats.end());
    const auto leave = [&](const std::string& ending) {
        context.writeResult(resultName + "." + ending, [&](const std::filesystem::path& file) {
            copyFile(scratch.path() / (style.baseName + "." + ending), file);
        });
    };
    std::for_each(endings.begin(), endings.end(), leave);
}

/// Draws objects into one picture.
class PlotKind : public Function {
public:
    std::string name() const override { return "Plot"; }
    std::string summary() const override;
    std::string notes() const override;
    Ports ports(const ValueTexts& values) const override;
    std::string refusal(const std::string& input, const std::string& value) const override;
    void evaluate(const Arguments& arguments, Results& results, RunContext& context) const override;
};

}  // namespace

std::string PlotKind::summary() const {
    return "Draws histograms, profiles, points and functions into one picture, as PNG, SVG or PDF, with script and "
           "data to change it by hand.";
}

std::string PlotKind::notes() const {
    return R"(A picture shows any number of one-dimensional objects, or two-dimensional histograms and profiles: one as colours,
others as contours. Functions are drawn over the data within their range of validity, with 601 samples that are equidistant
along the axis as drawn; a fitted one is dotted beyond the range of the fit. [Pictures](../plots.md) shows looks, stacks,
lower panels, lines, regions, texts and the markup of labels.

These inputs are shown if `advanced` is yes, and always if they have a value of their own:

)" + advancedInputsAsTable() +
           R"(
| object | drawn as |
|---|---|
| histogram | steps, points, a line, a filled area, a part of a stack, or a band; error: square root of the sum of squared weights |
| profile | points, a line or a band: mean of each bin that has entries, with the error of the mean |
| points | points, a line or a band, with their errors upwards and downwards; one-dimensional points are drawn side by side |
| function of one argument | a curve, or the area below it |
| list of histograms | a grid with a frame for each, or overlaid in one frame, as `groups` says |
| two-dimensional histogram, profile | colours, or lines of equal height; bins without entries stay white |

In a grid, the histograms of several lists are drawn in one frame if their keys are equal, and any other object is drawn in
every frame. Each frame has a vertical axis of its own unless `yrange` is set. If the picture has no room for all frames, it
shows the first ones, and says so.

Objects use the colours of M. Okabe and K. Ito, bins use viridis; both suit every type of colour vision, and
markers and dashes differ, too. The statistics box shows entries, mean and rms in range, fills below and above the axis, and
NaN if there are any; the sums of weights if there are weights; and of a fitted function χ² and parameters with their errors.
Box and legend are in the emptiest corners, and the vertical axis extends far enough that they hide nothing. If the box has
no room for all lines, it says how many are missing, as does a warning.

On a logarithmic axis, bins and points that are not positive are not drawn, and error bars that extend below 0 end at the
frame. Infinite and NaN values are left out. A warning reports both, except for bins that are simply empty.

If the plug-in of an object failed, the others are drawn, and a line below the picture says which one is missing and why. The
curve of a fit that did not converge is marked in the legend.

Pictures are drawn by gnuplot, from the package gnuplot-nox. Script and data are kept beside the picture: edit them
and run `gnuplot` on the script in that folder. `]]>` is drawn as `]] >`, invalid UTF-8 as question marks. The same objects
give the same bytes; for this, a PDF has a fixed date.)";
}

Ports PlotKind::ports(const ValueTexts& values) const {
    Ports ports;
    ports.inputs = {objectInput,
                    countInput("objects", "Number of objects in the picture, 1 to 16; each has its own input.")};
    appendInputs(ports.inputs, plotValueInputs());
    addFurtherInputs(ports, objectInput, values);
    return ports;
}

std::string PlotKind::refusal(const std::string& input, const std::string& value) const {
    return plotRefusal(input, value);
}

void PlotKind::evaluate(const Arguments& arguments, Results&, RunContext& context) const {
    std::vector<std::string> missing;
    const std::vector<PlotObject> objects = objectsOf(arguments, missing);
    const std::size_t count = numberedInputs(arguments, "objects", "object").size();
    PlotStyle style = plotStyleOf(
        [&](const std::string& input) { return arguments.has(input) ? arguments.text(input) : std::string(); }, count);
    const std::string& file = arguments.text("file");
    const std::string resultName = pictureName(file, context.pluginName());
    style.baseName = std::filesystem::path(resultName).filename().string();
    if (style.baseName.empty()) {
        throw Failure("file", "\"" + file + "\" is not a valid file name for a picture");
    }
    PlotSheet sheet = plotSheet(objects, style, missing);
    draw(sheet, style, resultName, context);
}

std::unique_ptr<Kind> makePlot() {
    return std::make_unique<PlotKind>();
}

}  // namespace velmorak
