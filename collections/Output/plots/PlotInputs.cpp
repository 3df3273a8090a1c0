#include "PlotInputs.h"

#include "Output/Ports.h"

#include <utility>

namespace velmorak {

namespace {

InputSpec textInput(const std::string& name, const std::string& description, const std::string& value = "") {
    return {.name = name, .description = description, .type = ValueType::Text, .value = value};
}

InputSpec choiceInput(const std::string& name, const std::string& description, const std::string& value,
                      const std::vector<std::string>& choices = {"no", "yes"}) {
    return {.name = name, .description = description, .type = ValueType::Choice, .value = value, .choices = choices};
}

InputSpec rangeInput(const std::string& name, const std::string& axis) {
    return textInput(name, "Range of the " + axis +
                               ", as two numbers in its unit; * for an end that follows the "
                               "contents. Empty: both do.");
}

InputSpec lookSpec() {
    return textInput(
        "look",
        "How the object is drawn, in any order: a style (points, line, steps, filled, stacked, band; for two "
        "quantities colours or contours), a colour (red, #0072B2), a dash (solid, dashed, dotted), and in "
        "double quotes its text in the legend. Empty: chosen for the whole picture.");
}

/// An input without a default has an empty value only if it is wired.
bool isShown(const InputSpec& input, const ValueTexts& values) {
    const auto advanced = values.find("advanced");
    const auto own = values.find(input.name);
    return (advanced != values.end() && advanced->second == "yes") ||
           (own != values.end() && (own->second != input.value || own->second.empty()));
}

void addAdvanced(Ports& ports, InputSpec input, const ValueTexts& values) {
    if (isShown(input, values)) {
        ports.inputs.push_back(std::move(input));
    }
}

void addLook(Ports& ports, std::size_t object, const ValueTexts& values) {
    InputSpec look = lookSpec();
    look.name = numberedName(look.name, object);
    addAdvanced(ports, std::move(look), values);
}

}  // namespace

std::vector<std::string> legendChoices() {
    return {"no", "automatic", "top left", "top right", "bottom left", "bottom right"};
}

std::vector<std::string> histogramStyleChoices() {
    return {"automatic", "steps", "points", "line", "filled", "stacked", "band"};
}

std::vector<std::string> statisticsChoices() {
    return {"no", "automatic", "yes", "top left", "top right", "bottom left", "bottom right"};
}

std::vector<std::string> panelChoices() {
    return {"no", "ratio", "difference", "pull"};
}

std::vector<InputSpec> advancedInputs() {
    return {
        textInput("zlabel", "Title of the colour scale with its unit. Empty: the quantity that is shown."),
        rangeInput("zrange", "colours"),
        choiceInput("logz", "Logarithmic colour scale; bins that are not above 0 stay white.", "no"),
        choiceInput("groups",
                    "How a list of histograms is drawn. Grid: each in a frame of its own. Overlaid: all in one frame.",
                    "grid", {"grid", "overlaid"}),
        choiceInput("panel",
                    "Lower panel that compares the other objects with the stack, the function, the object whose look "
                    "says reference, or else the second object.",
                    "no", panelChoices()),
        rangeInput("panelrange", "vertical axis of the lower panel"),
        textInput("lines",
                  "Vertical and horizontal lines, separated by semicolons, each with x or y, a number, and if wanted "
                  "colour, dash and legend: x 91.2 red dashed \"Z boson\"; y 0."),
        textInput("regions", "Shaded regions, as lines but with two numbers: x 80 100 orange \"signal region\"."),
        textInput("text",
                  "Free text in the picture; each part between semicolons is a line. Top left, unless it begins with "
                  "another corner (bottom right ...) or with at and two fractions of the frame (at 0.5 0.7 ...)."),
        textInput("statisticsplace",
                  "Place of the statistics box: a corner (top left, bottom right ...), or the distances of its upper "
                  "left corner from the left and the lower side of the frame, as fractions of the frame (0.6 0.9). "
                  "Empty: as statistics says."),
        textInput("size", "Width and height of the picture in cm.", "16 10"),
        textInput("dpi", "Dots per inch of a PNG.", "254"),
    };
}

std::vector<InputSpec> plotValueInputs() {
    return {
        textInput("file",
                  "Name of the picture in the results folder, without extension; the script .gp with its "
                  "data .dat is written, too. Empty: the name of this plug-in."),
        textInput("formats", "Formats of the picture: png, svg, pdf, or several of them.", "png svg"),
        textInput("title", "Title shown above the picture. Empty: the title of the object, if there is only one."),
        textInput("xlabel",
                  "Title of the horizontal axis with its unit. Empty: that of the first object that has one."),
        textInput(
            "ylabel",
            "Title of the vertical axis with its unit. Empty: that of the object; for a histogram entries, with the "
            "bin width if all bins are equal."),
        rangeInput("xrange", "horizontal axis"),
        rangeInput("yrange", "vertical axis"),
        choiceInput("logx", "Logarithmic horizontal axis, from the first edge above 0.", "no"),
        choiceInput("logy", "Logarithmic vertical axis; values that are not above 0 are not drawn.", "no"),
        choiceInput("style",
                    "How histograms without a look of their own are drawn; automatic: as points if there is a function "
                    "or a stack, else as steps.",
                    "automatic", histogramStyleChoices()),
        choiceInput("legend",
                    "Position of the legend; automatic: in the emptiest corner, if there are several objects.",
                    "automatic", legendChoices()),
        textInput("labels", "Names in the legend, separated by semicolons. Empty: the titles of the objects."),
        choiceInput(
            "statistics",
            "Shows entries, mean and rms in range, and fit results, in the emptiest corner or in the one named; "
            "automatic: if there is one object, with or without a function; yes: for several objects in the "
            "legend.",
            "automatic", statisticsChoices()),
        choiceInput("advanced",
                    "Shows the inputs for the colour scale, a lower panel, lines, regions, text, the place of the "
                    "statistics box, "
                    "size and looks. Those with a value of their own are always shown.",
                    "no"),
    };
}

std::string advancedInputsAsTable() {
    std::vector<InputSpec> inputs = advancedInputs();
    inputs.push_back(lookSpec());
    std::string table = "| input | default | meaning |\n|---|---|---|\n";
    for (const InputSpec& input : inputs) {
        std::string name = "`" + input.name + "`";
        name += input.name == "look" ? ", `look2` ..." : "";
        table += "| " + name + " | " + input.value + " | " + input.description + " |\n";
    }
    return table;
}

void addFurtherInputs(Ports& ports, const InputSpec& object, const ValueTexts& values) {
    for (InputSpec& input : advancedInputs()) {
        addAdvanced(ports, std::move(input), values);
    }
    addLook(ports, 0, values);
    const std::size_t count = numberedCount(values, "objects");
    for (std::size_t i = 1; i < count; ++i) {
        ports.inputs.push_back(object);
        ports.inputs.back().name = numberedName(object.name, i);
        addLook(ports, i, values);
    }
}

}  // namespace velmorak
