#include "kinds.h"

#include "Drawing.h"
#include "Gnuplot.h"
#include "PlotValues.h"
#include "Ports.h"

#include <algorithm>
#include <utility>

namespace velmorak {

namespace {

const InputSpec objectInput = {
    .name = "object",
    .description = "Histogram, profile, points or function to draw. Two quantities are drawn as colours, alone.",
    .type = ValueType::Any};

std::vector<PlotObject> objectsOf(const Arguments& arguments) {
    std::vector<PlotObject> objects;
    for (const std::string& input : numberedInputs(arguments, "objects", "object")) {
        if (!arguments.isWired(input)) {
            throw Failure(input, "nothing is wired");
        }
        const auto* object = std::get_if<DataObjectPtr>(&arguments.value(input));
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
        throw Failure(to.string() + " could not be written: " + error.message());
    }
}

/// Draws in a folder of its own under the names that the files will have, so that the script gives the same picture
/// when it is run by hand beside its data.
void draw(PlotContents& contents, const PlotStyle& style, const std::string& resultName, RunContext& context) {
    const PlotFiles files = plotFiles(contents, style);
    for (const std::string& warning : contents.warnings) {
        context.warn(warning);
    }
    const ScratchFolder scratch;
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
           "data "
           "to change it by hand.";
}

std::string PlotKind::notes() const {
    return R"(One picture takes any number of objects over one quantity, or one histogram or profile over two, whose bins become
colours. Functions lie over the data, where they say that they hold; they take 601 samples, evenly along the axis as it is
drawn.

| object | is drawn as |
|---|---|
| histogram | steps, or points with bars as long as a bin is wide; error: square root of the sum of squared weights |
| profile | points: mean of each bin that has entries, with the error of the mean |
| points | points with the errors that they carry, upwards and downwards; of one dimension side by side |
| function of one argument | a curve |
| histogram, profile over two | colours; a bin without entries stays white |

The colours of objects are M. Okabe and K. Ito's, those of bins viridis; both can be told apart by any colour vision, and
marks and dashes differ too. The statistics box shows entries, mean and rms of what lies in range, under- and overflow and
NaN where there are some, and of a fitted function χ² and parameters with their errors. The vertical axis reaches so high
that box and legend hide nothing.

On a logarithmic axis a bin or point that is not above 0 is not drawn, and a bar that reaches below 0 ends at the frame. What
is infinite or no number is left out. Both are said as a warning, but for bins that simply are empty.

The picture is drawn by gnuplot, which the package gnuplot-nox brings. Script and data stay beside the picture: change them
and run `gnuplot` on the script in that folder. A title is drawn letter for letter; write µ, ⁺ or ² rather than a markup.
`]]>` is drawn as `]] >`, and what is no valid UTF-8 as a question mark. The same objects give the same bytes; a PDF has a
fixed date for that.)";
}

Ports PlotKind::ports(const ValueTexts& values) const {
    Ports ports;
    ports.inputs = {objectInput,
                    countInput("objects", "Number of objects in the picture, 1 to 16; each has an input of its own.")};
    for (InputSpec& input : plotValueInputs()) {
        ports.inputs.push_back(std::move(input));
    }
    addNumbered(ports, objectInput, numberedCount(values, "objects"));
    return ports;
}

std::string PlotKind::refusal(const std::string& input, const std::string& value) const {
    return plotRefusal(input, value);
}

void PlotKind::evaluate(const Arguments& arguments, Results&, RunContext& context) const {
    const std::vector<PlotObject> objects = objectsOf(arguments);
    PlotStyle style = plotStyleOf(arguments);
    const std::string& file = arguments.text("file");
    const std::string resultName = file.empty() ? asFileName(context.pluginName()) : withoutPictureEnding(file);
    style.baseName = std::filesystem::path(resultName).filename().string();
    if (style.baseName.empty()) {
        throw Failure("file", "\"" + file + "\" cannot be the name of a picture");
    }
    PlotContents contents = plotContents(objects, style);
    draw(contents, style, resultName, context);
}

std::unique_ptr<Kind> makePlot() {
    return std::make_unique<PlotKind>();
}

}  // namespace velmorak
