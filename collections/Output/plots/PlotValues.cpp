#include "PlotValues.h"

#include "Output/Ports.h"
#include "PlotWords.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>

namespace velmorak {

namespace {

constexpr std::array<std::string_view, 3> allFormats = {"png", "svg", "pdf"};

/// Names of the legend positions, in the order of LegendPlace.
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

constexpr double minSize = 3.0;
constexpr double maxSize = 100.0;
constexpr double minDpi = 30.0;
constexpr double maxDpi = 1200.0;
constexpr double maxPixels = 12000.0;

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

bool isControl(char c) {
    return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
}

/// Words separated by blanks or commas.
std::vector<std::string> wordsOf(const std::string& text) {
    std::vector<std::string> words(1);
    for (const char c : text) {
        if (c != ' ' && c != ',' && c != '\t') {
            words.back() += c;
        } else if (!words.back().empty()) {
            words.emplace_back();
        }
    }
    if (words.back().empty()) {
        words.pop_back();
    }
    return words;
}

std::string formatsRefusal(const std::string& text) {
    const std::vector<std::string> words = wordsOf(text);
    for (const std::string& word : words) {
        if (std::find(allFormats.begin(), allFormats.end(), word) == allFormats.end()) {
            return "\"" + word + "\" is not one of png, svg and pdf.";
        }
    }
    return words.empty() ? "Enter at least one format: png, svg or pdf." : "";
}

/// @return false if the word is neither a finite number nor *.
bool readEnd(const std::string& word, std::optional<double>& end) {
    double number = 0.0;
    if (word == "*") {
        return true;
    }
    if (!readNumber(word, number) || !std::isfinite(number)) {
        return false;
    }
    end = number;
    return true;
}

std::string readRange(const std::string& text, PlotRange& range) {
    const std::vector<std::string> words = wordsOf(text);
    if (words.empty()) {
        return {};
    }
    if (words.size() != 2 || !readEnd(words[0], range.low) || !readEnd(words[1], range.high)) {
        return "Enter two numbers, or * for an end that is left open.";
    }
    if (range.low && range.high && !(*range.low < *range.high)) {
        return "The first end must be less than the second.";
    }
    return {};
}

bool isRange(const std::string& input) {
    return input == "xrange" || input == "yrange" || input == "zrange" || input == "panelrange";
}

std::string sizeRefusal(const std::string& text) {
    const std::vector<std::string> words = wordsOf(text);
    std::vector<double> sides(words.size(), 0.0);
    bool isRead = words.size() == 2;
    for (std::size_t i = 0; i < words.size(); ++i) {
        isRead = isRead && readNumber(words[i], sides[i]) && sides[i] >= minSize && sides[i] <= maxSize;
    }
    return isRead ? "" : "Enter width and height in cm, each from 3 to 100, as in: 16 10.";
}

std::string dpiRefusal(const std::string& text) {
    double dpi = 0.0;
    const bool isGood = readNumber(text, dpi) && dpi >= minDpi && dpi <= maxDpi;
    return isGood ? "" : "Enter the number of dots per inch, from 30 to 1200.";
}

bool isLook(const std::string& input) {
    return input.starts_with("look");
}

/// @return what a reader of values says about a text; empty if it accepts it.
template <typename Reader>
std::string sentenceOf(const Reader& reader, const std::string& text) {
    try {
        static_cast<void>(reader(text));
    } catch (const Failure& failure) {
        return failure.what();
    }
    return {};
}

PlotAxis axisOf(const PlotValue& valueOf, const std::string& letter) {
    PlotAxis axis{.title = valueOf(letter + "label"), .range = {}, .hasLog = valueOf("log" + letter) == "yes"};
    axis.range = rangeIn(valueOf(letter + "range"));
    return axis;
}

std::vector<std::string> partsOf(const std::string& text) {
    std::vector<std::string> parts(1);
    for (const char c : text) {
        if (c == ';') {
            parts.emplace_back();
        } else if (c != ' ' || !parts.back().empty()) {
            parts.back() += c;
        }
    }
    return parts;
}

template <typename Choice>
Choice chosen(const PlotValue& valueOf, const std::string& input, const std::vector<std::string>& choices) {
    const auto found = std::find(choices.begin(), choices.end(), valueOf(input));
    return static_cast<Choice>(found == choices.end() ? 0 : found - choices.begin());
}

void readSize(const PlotValue& valueOf, PlotStyle& style) {
    const std::vector<std::string> words = wordsOf(valueOf("size"));
    readNumber(words[0], style.width);
    readNumber(words[1], style.height);
    readNumber(valueOf("dpi"), style.dpi);
    constexpr double cmPerInch = 2.54;
    if (std::max(style.width, style.height) * style.dpi / cmPerInch > maxPixels) {
        throw Failure("dpi", "the picture would have more than 12000 pixels on a side; choose less cm or less dpi");
    }
}

std::vector<PlotGuide> guidesOf(const PlotValue& valueOf) {
    std::vector<PlotGuide> guides = regionsIn(valueOf("regions"));
    const std::vector<PlotGuide> lines = linesIn(valueOf("lines"));
    guides.insert(guides.end(), lines.begin(), lines.end());
    return guides;
}

InputSpec lookSpec() {
    return textInput(
        "look",
        "How the object is drawn, in any order: a style (points, line, steps, filled, stacked, band; for two "
        "quantities colours or contours), a colour (red, #0072B2), a dash (solid, dashed, dotted), and in "
        "double quotes its text in the legend. Empty: chosen for the whole picture.");
}

/// The inputs that a plain picture does not need, without the looks.
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
        textInput("size", "Width and height of the picture in cm.", "16 10"),
        textInput("dpi", "Dots per inch of a PNG.", "254"),
    };
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

/// Values of inputs that are not shown are their defaults.
PlotValue withDefaults(const PlotValue& valueOf) {
    return [&valueOf, inputs = advancedInputs()](const std::string& name) {
        const std::string text = valueOf(name);
        const auto input =
            std::find_if(inputs.begin(), inputs.end(), [&](const InputSpec& one) { return one.name == name; });
        return text.empty() && input != inputs.end() ? input->value : text;
    };
}

}  // namespace

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
                    "Shows the inputs for the colour scale, lists, a lower panel, lines, regions, text, size and "
                    "looks. Those with a "
                    "value of their own are always shown.",
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

std::string rangeRefusal(const std::string& text) {
    PlotRange ignored;
    return readRange(text, ignored);
}

PlotRange rangeIn(const std::string& text) {
    PlotRange range;
    readRange(text, range);
    return range;
}

std::string plotRefusal(const std::string& input, const std::string& value) {
    if (input == "file" && std::any_of(value.begin(), value.end(), isControl)) {
        return "A file name must not contain line ends or other control characters.";
    }
    if (input == "formats") {
        return formatsRefusal(value);
    }
    if (input == "size") {
        return sizeRefusal(value);
    }
    if (input == "dpi") {
        return dpiRefusal(value);
    }
    if (input == "lines" || input == "regions") {
        return sentenceOf(input == "lines" ? linesIn : regionsIn, value);
    }
    if (input == "text" || isLook(input)) {
        return input == "text" ? sentenceOf(notesIn, value) : sentenceOf(lookIn, value);
    }
    return isRange(input) ? rangeRefusal(value) : std::string();
}

PlotStyle plotStyleOf(const PlotValue& shownValueOf, std::size_t objects) {
    const PlotValue valueOf = withDefaults(shownValueOf);
    std::vector<std::string> inputs = {"file",  "formats", "xrange", "yrange", "zrange", "panelrange",
                                       "lines", "regions", "text",   "size",   "dpi"};
    for (std::size_t i = 0; i < objects; ++i) {
        inputs.push_back(numberedName("look", i));
    }
    for (const std::string& input : inputs) {
        if (const std::string reason = plotRefusal(input, valueOf(input)); !reason.empty()) {
            throw Failure(input, reason);
        }
    }
    PlotStyle style;
    for (const std::string& word : wordsOf(valueOf("formats"))) {
        if (std::find(style.formats.begin(), style.formats.end(), word) == style.formats.end()) {
            style.formats.push_back(word);
        }
    }
    style.title = valueOf("title");
    style.x = axisOf(valueOf, "x");
    style.y = axisOf(valueOf, "y");
    style.z = axisOf(valueOf, "z");
    style.labels = partsOf(valueOf("labels"));
    for (std::size_t i = 0; i < objects; ++i) {
        style.looks.push_back(lookIn(valueOf(numberedName("look", i))));
    }
    style.legend = chosen<LegendPlace>(valueOf, "legend", legendChoices());
    style.histograms = chosen<ObjectStyle>(valueOf, "style", histogramStyleChoices());
    style.statistics = chosen<StatisticsDisplay>(valueOf, "statistics", statisticsChoices());
    style.lists = valueOf("groups") == "overlaid" ? ListDisplay::Overlaid : ListDisplay::Grid;
    style.panel = chosen<PanelKind>(valueOf, "panel", panelChoices());
    style.panelRange = rangeIn(valueOf("panelrange"));
    style.guides = guidesOf(valueOf);
    style.notes = notesIn(valueOf("text"));
    readSize(valueOf, style);
    return style;
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

std::string withoutPictureEnding(const std::string& file) {
    for (const std::string_view format : allFormats) {
        const std::string ending = "." + std::string(format);
        if (file.size() > ending.size() && file.ends_with(ending)) {
            return file.substr(0, file.size() - ending.size());
        }
    }
    return file;
}

}  // namespace velmorak
