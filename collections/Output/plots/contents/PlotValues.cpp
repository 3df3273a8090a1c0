#include "Output/plots/contents/PlotValues.h"

#include "Output/Ports.h"
#include "Output/plots/PlotInputs.h"
#include "Output/plots/text/PlotWords.h"
#include "shared/WrittenFile.h"

#include <velmorak/Failure.h>
#include <velmorak/Value.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>

namespace velmorak {

namespace {

constexpr std::array<std::string_view, 3> allFormats = {"png", "svg", "pdf"};

constexpr double minSize = 3.0;
constexpr double maxSize = 100.0;
constexpr double minDpi = 30.0;
constexpr double maxDpi = 1200.0;
constexpr double maxPixels = 12000.0;

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
    if (input == "statisticsplace") {
        return sentenceOf(boxPlaceIn, value);
    }
    if (input == "text" || isLook(input)) {
        return input == "text" ? sentenceOf(notesIn, value) : sentenceOf(lookIn, value);
    }
    return isRange(input) ? rangeRefusal(value) : std::string();
}

PlotStyle plotStyleOf(const PlotValue& shownValueOf, std::size_t objects) {
    const PlotValue valueOf = withDefaults(shownValueOf);
    std::vector<std::string> inputs = {"file",  "formats", "xrange", "yrange", "zrange", "panelrange",
                                       "lines", "regions", "text",   "size",   "dpi",    "statisticsplace"};
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
    style.statisticsPlace = boxPlaceIn(valueOf("statisticsplace"));
    style.lists = valueOf("groups") == "overlaid" ? ListDisplay::Overlaid : ListDisplay::Grid;
    style.panel = chosen<PanelKind>(valueOf, "panel", panelChoices());
    style.panelRange = rangeIn(valueOf("panelrange"));
    style.guides = guidesOf(valueOf);
    style.notes = notesIn(valueOf("text"));
    readSize(valueOf, style);
    return style;
}

std::string pictureName(const std::string& file, const std::string& plugin) {
    if (file.empty()) {
        return asFileName(plugin);
    }
    for (const std::string_view format : allFormats) {
        const std::string ending = "." + std::string(format);
        if (file.size() > ending.size() && file.ends_with(ending)) {
            return file.substr(0, file.size() - ending.size());
        }
    }
    return file;
}

}  // namespace velmorak
