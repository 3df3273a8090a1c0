#include "PlotValues.h"

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
    return {"automatic", "steps", "points"};
}

std::vector<std::string> statisticsChoices() {
    return {"no", "automatic", "yes"};
}

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
    return input == "xrange" || input == "yrange" || input == "zrange";
}

PlotAxis axisOf(const Arguments& arguments, const std::string& letter) {
    PlotAxis axis{
        .title = arguments.text(letter + "label"), .range = {}, .hasLog = arguments.text("log" + letter) == "yes"};
    axis.range = rangeIn(arguments.text(letter + "range"));
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
Choice chosen(const Arguments& arguments, const std::string& input, const std::vector<std::string>& choices) {
    const auto found = std::find(choices.begin(), choices.end(), arguments.text(input));
    return static_cast<Choice>(found - choices.begin());
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
        textInput("zlabel", "Title of the colour scale with its unit. Empty: the quantity that is shown."),
        rangeInput("xrange", "horizontal axis"),
        rangeInput("yrange", "vertical axis"),
        rangeInput("zrange", "colours"),
        choiceInput("logx", "Logarithmic horizontal axis, from the first edge above 0.", "no"),
        choiceInput("logy", "Logarithmic vertical axis; values that are not above 0 are not drawn.", "no"),
        choiceInput("logz", "Logarithmic colour scale; bins that are not above 0 stay white.", "no"),
        choiceInput("style",
                    "How histograms are drawn; automatic: as points if there is a function, else as "
                    "steps.",
                    "automatic", histogramStyleChoices()),
        choiceInput("legend", "Position of the legend; automatic: in an upper corner, if there are several objects.",
                    "automatic", legendChoices()),
        textInput("labels", "Names in the legend, separated by semicolons. Empty: the titles of the objects."),
        choiceInput("statistics",
                    "Shows entries, mean and rms in range, and fit results; automatic: if there is "
                    "one object, with or without a function; yes: for several objects in the legend.",
                    "automatic", statisticsChoices()),
    };
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
    return isRange(input) ? rangeRefusal(value) : std::string();
}

PlotStyle plotStyleOf(const Arguments& arguments) {
    for (const std::string input : {"file", "formats", "xrange", "yrange", "zrange"}) {
        if (const std::string reason = plotRefusal(input, arguments.text(input)); !reason.empty()) {
            throw Failure(input, reason);
        }
    }
    PlotStyle style;
    for (const std::string& word : wordsOf(arguments.text("formats"))) {
        if (std::find(style.formats.begin(), style.formats.end(), word) == style.formats.end()) {
            style.formats.push_back(word);
        }
    }
    style.title = arguments.text("title");
    style.x = axisOf(arguments, "x");
    style.y = axisOf(arguments, "y");
    style.z = axisOf(arguments, "z");
    style.labels = partsOf(arguments.text("labels"));
    style.legend = chosen<LegendPlace>(arguments, "legend", legendChoices());
    style.histograms = chosen<HistogramStyle>(arguments, "style", histogramStyleChoices());
    style.statistics = chosen<StatisticsDisplay>(arguments, "statistics", statisticsChoices());
    return style;
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
