#include "Output/plots/text/PlotWords.h"

#include <velmorak/Failure.h>
#include <velmorak/Value.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>

namespace velmorak {

namespace {

struct NamedColour {
    std::string_view name;
    std::string_view value;
};

/// The seven of M. Okabe and K. Ito's palette under their common names, and shades beside them.
constexpr std::array colourTable = {
    NamedColour{"black", "#000000"},     NamedColour{"blue", "#0072B2"},       NamedColour{"red", "#D55E00"},
    NamedColour{"green", "#009E73"},     NamedColour{"pink", "#CC79A7"},       NamedColour{"orange", "#E69F00"},
    NamedColour{"lightblue", "#56B4E9"}, NamedColour{"yellow", "#F0E442"},     NamedColour{"purple", "#7A3E9D"},
    NamedColour{"brown", "#8C564B"},     NamedColour{"grey", "#808080"},       NamedColour{"lightgrey", "#C8C8C8"},
    NamedColour{"darkgrey", "#404040"},  NamedColour{"darkred", "#A00000"},    NamedColour{"darkblue", "#003C71"},
    NamedColour{"darkgreen", "#00573F"}, NamedColour{"lightgreen", "#8FD3B6"}, NamedColour{"white", "#FFFFFF"}};

bool isHexColour(const std::string& word) {
    return word.size() == 7 && word.front() == '#' && std::all_of(word.begin() + 1, word.end(), [](char c) {
               return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
           });
}

bool isBlank(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

/// "gray" and "dark grey" are as good as "grey" and "darkgrey"; "colour=" and "style=" may precede a word.
std::string withoutPrefix(const std::string& word) {
    for (const std::string_view prefix : {"colour=", "color=", "style=", "line="}) {
        if (word.starts_with(prefix)) {
            return word.substr(prefix.size());
        }
    }
    return word;
}

struct NamedStyle {
    std::string_view name;
    ObjectStyle style;
};
constexpr std::array styleTable = {
    NamedStyle{"points", ObjectStyle::Points},    NamedStyle{"point", ObjectStyle::Points},
    NamedStyle{"line", ObjectStyle::Line},        NamedStyle{"steps", ObjectStyle::Steps},
    NamedStyle{"step", ObjectStyle::Steps},       NamedStyle{"filled", ObjectStyle::Filled},
    NamedStyle{"stacked", ObjectStyle::Stacked},  NamedStyle{"stack", ObjectStyle::Stacked},
    NamedStyle{"band", ObjectStyle::Band},        NamedStyle{"colours", ObjectStyle::Colours},
    NamedStyle{"colors", ObjectStyle::Colours},   NamedStyle{"colourmap", ObjectStyle::Colours},
    NamedStyle{"colormap", ObjectStyle::Colours}, NamedStyle{"contours", ObjectStyle::Contours},
    NamedStyle{"contour", ObjectStyle::Contours}};

bool takeWord(const std::string& word, ObjectLook& look) {
    const auto* const style =
        std::find_if(styleTable.begin(), styleTable.end(), [&](const NamedStyle& one) { return one.name == word; });
    if (style != styleTable.end() && look.style == ObjectStyle::Automatic) {
        look.style = style->style;
        return true;
    }
    if (const auto colour = colourNamed(word); colour && look.colour.empty()) {
        look.colour = *colour;
        return true;
    }
    if (const auto dash = dashNamed(word); dash && !look.dash) {
        look.dash = *dash;
        return true;
    }
    if (const auto width = widthNamed(word); width && look.width == 1.0) {
        look.width = *width;
        return true;
    }
    if (word == "reference" && !look.isReference) {
        look.isReference = true;
        return true;
    }
    return false;
}

[[noreturn]] void throwUnknownWord(const std::string& word, bool isGuide) {
    throw Failure("\"" + word + "\" has no meaning here, or says again what another word says. " +
                  (isGuide ? std::string()
                           : std::string("Styles: points, line, steps, filled, stacked, band; colours, contours. ")) +
                  "Colours: " + colourNames() +
                  " or #rrggbb. Dashes: solid, dashed, dotted, dashdotted. Widths: thin, "
                  "thick." +
                  (isGuide ? "" : " Also: reference.") + " Text for the legend: in double quotes.");
}

double finiteNumber(const PlotWord& word) {
    double number = 0.0;
    if (word.isQuoted || !readNumber(word.text, number) || !std::isfinite(number)) {
        throw Failure("\"" + word.text + "\" is not a number.");
    }
    return number;
}

PlotGuide guideOf(const PlotWords& words, bool isRegion) {
    const std::size_t numbers = isRegion ? 2 : 1;
    const std::string& axis = words.front().text;
    if ((axis != "x" && axis != "y") || words.size() < 1 + numbers) {
        throw Failure(isRegion ? "Begin a region with x or y and two numbers, as in: x 80 100 orange \"signal\"."
                               : "Begin a line with x or y and a number, as in: x 91.2 red dashed \"Z\".");
    }
    PlotGuide guide;
    guide.isVertical = axis == "x";
    guide.from = finiteNumber(words[1]);
    if (isRegion) {
        guide.to = finiteNumber(words[2]);
        if (!(guide.from < *guide.to)) {
            throw Failure("The first end of a region must be less than the second.");
        }
    }
    ObjectLook look;
    for (std::size_t i = 1 + numbers; i < words.size(); ++i) {
        if (words[i].isQuoted && guide.legend.empty()) {
            guide.legend = words[i].text;
        } else if (words[i].isQuoted || !takeWord(withoutPrefix(words[i].text), look) ||
                   look.style != ObjectStyle::Automatic || look.isReference) {
            throwUnknownWord(words[i].text, true);
        }
    }
    guide.colour = look.colour.empty() ? guide.colour : look.colour;
    guide.dash = look.dash.value_or(guide.dash);
    guide.width = look.width;
    return guide;
}

std::vector<PlotGuide> guidesIn(const std::string& text, bool isRegion) {
    std::vector<PlotGuide> guides;
    for (const PlotWords& words : itemsIn(text)) {
        guides.push_back(guideOf(words, isRegion));
    }
    return guides;
}

/// @return the corner that the first two words name.
std::optional<LegendPlace> cornerNamed(const PlotWords& words) {
    if (words.size() < 2 || words[0].isQuoted || words[1].isQuoted) {
        return std::nullopt;
    }
    const std::string both = words[0].text + " " + words[1].text;
    constexpr std::array<std::string_view, 4> names = {"top left", "top right", "bottom left", "bottom right"};
    const auto* const found = std::find(names.begin(), names.end(), both);
    if (found == names.end()) {
        return std::nullopt;
    }
    return static_cast<LegendPlace>(static_cast<int>(LegendPlace::TopLeft) + static_cast<int>(found - names.begin()));
}

/// @return the part of the frame that a word gives; nothing if it does not.
std::optional<double> fractionIn(const PlotWord& word) {
    double number = 0.0;
    const bool isFraction = !word.isQuoted && readNumber(word.text, number) && number >= 0.0 && number <= 1.0;
    return isFraction ? std::optional(number) : std::nullopt;
}

PlotNote noteOf(const PlotWords& words) {
    PlotNote note;
    std::size_t first = 0;
    if (const auto corner = cornerNamed(words); corner && words.size() > 2) {
        note.corner = *corner;
        first = 2;
    } else if (words.size() >= 4 && words[0].text == "at" && !words[0].isQuoted) {
        note.place = {finiteNumber(words[1]), finiteNumber(words[2])};
        first = 3;
    }
    for (std::size_t i = first; i < words.size(); ++i) {
        note.text += (i > first ? " " : "") + words[i].text;
    }
    return note;
}

}  // namespace

std::vector<PlotWords> itemsIn(const std::string& text) {
    std::vector<PlotWords> items(1);
    bool isInWord = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '"' && !isInWord) {
            const std::size_t end = text.find('"', i + 1);
            if (end == std::string::npos) {
                throw Failure("A text in double quotes does not end.");
            }
            items.back().push_back({.text = text.substr(i + 1, end - i - 1), .isQuoted = true});
            i = end;
        } else if (text[i] == ';') {
            items.emplace_back();
            isInWord = false;
        } else if (isBlank(text[i])) {
            isInWord = false;
        } else {
            if (!isInWord) {
                items.back().emplace_back();
            }
            isInWord = true;
            items.back().back().text += text[i];
        }
    }
    std::erase_if(items, [](const PlotWords& words) { return words.empty(); });
    return items;
}

std::optional<std::string> colourNamed(const std::string& word) {
    if (isHexColour(word)) {
        return word;
    }
    std::string name = word;
    if (const std::size_t at = name.find("gray"); at != std::string::npos) {
        name.replace(at, 4, "grey");
    }
    const auto* const found =
        std::find_if(colourTable.begin(), colourTable.end(), [&](const NamedColour& one) { return one.name == name; });
    return found == colourTable.end() ? std::nullopt : std::optional(std::string(found->value));
}

std::optional<Dash> dashNamed(const std::string& word) {
    constexpr std::array<std::string_view, 4> names = {"solid", "dashed", "dotted", "dashdotted"};
    const auto* const found = std::find(names.begin(), names.end(), word);
    if (found == names.end()) {
        return std::nullopt;
    }
    return static_cast<Dash>(1 + static_cast<int>(found - names.begin()));
}

std::optional<double> widthNamed(const std::string& word) {
    constexpr double thin = 0.5;
    constexpr double thick = 1.8;
    return word == "thin" ? std::optional(thin) : word == "thick" ? std::optional(thick) : std::nullopt;
}

std::string colourNames() {
    std::string names;
    for (const NamedColour& one : colourTable) {
        names += (names.empty() ? "" : ", ") + std::string(one.name);
    }
    return names;
}

ObjectLook lookIn(const std::string& text) {
    ObjectLook look;
    const std::vector<PlotWords> items = itemsIn(text);
    if (items.size() > 1) {
        throw Failure("A look describes one object; a semicolon cannot separate several.");
    }
    for (const PlotWord& word : items.empty() ? PlotWords() : items.front()) {
        if (word.isQuoted && !look.legend) {
            look.legend = word.text;
        } else if (word.isQuoted || !takeWord(withoutPrefix(word.text), look)) {
            throwUnknownWord(word.text, false);
        }
    }
    return look;
}

std::vector<PlotGuide> linesIn(const std::string& text) {
    return guidesIn(text, false);
}

std::vector<PlotGuide> regionsIn(const std::string& text) {
    return guidesIn(text, true);
}

BoxPlace boxPlaceIn(const std::string& text) {
    const std::vector<PlotWords> items = itemsIn(text);
    if (items.empty()) {
        return {};
    }
    if (const PlotWords& words = items.front(); items.size() == 1 && words.size() == 2) {
        if (const auto corner = cornerNamed(words)) {
            return {.corner = corner};
        }
        const auto x = fractionIn(words[0]);
        const auto y = fractionIn(words[1]);
        if (x && y) {
            return {.point = std::array{*x, *y}};
        }
    }
    throw Failure(
        "Enter a corner, as in: bottom left; or the distances of the upper left corner of the box from the left and "
        "the lower side of the frame, as two numbers from 0 to 1, as in: 0.6 0.9.");
}

std::vector<PlotNote> notesIn(const std::string& text) {
    std::vector<PlotNote> notes;
    for (const PlotWords& words : itemsIn(text)) {
        notes.push_back(noteOf(words));
    }
    return notes;
}

}  // namespace velmorak
