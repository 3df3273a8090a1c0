#pragma once

#include "Output/plots/script/PlotStyle.h"

#include <optional>
#include <string>
#include <vector>

/// Small languages of the Plot's values: items separated by semicolons, of words and texts in double quotes.
namespace velmorak {

struct PlotWord {
    std::string text;
    bool isQuoted = false;
};

using PlotWords = std::vector<PlotWord>;

/// @return the words of each item; items without words are left out.
/// @throws Failure, without an input, for a quote that does not end.
std::vector<PlotWords> itemsIn(const std::string& text);

/// @return "#rrggbb" for a name of a colour or such a number; nothing for any other word.
std::optional<std::string> colourNamed(const std::string& word);
std::optional<Dash> dashNamed(const std::string& word);
/// @return the factor of "thin" and "thick".
std::optional<double> widthNamed(const std::string& word);
/// @return the names of colours, for messages.
std::string colourNames();

/// @return the look that a text describes, for example: points black "Data".
/// @throws Failure, without an input, if a word has no meaning or two contradict each other.
ObjectLook lookIn(const std::string& text);

/// @return lines: x 91.2 red dashed "Z"; y 0
/// @throws Failure, without an input.
std::vector<PlotGuide> linesIn(const std::string& text);
/// @return regions: x 80 100 orange "signal region"
/// @throws Failure, without an input.
std::vector<PlotGuide> regionsIn(const std::string& text);
/// @return the place of a box: bottom left, or 0.6 0.9; an empty text gives none.
/// @throws Failure, without an input.
BoxPlace boxPlaceIn(const std::string& text);
/// @return free texts: each item is drawn on a line of its own.
std::vector<PlotNote> notesIn(const std::string& text);

}  // namespace velmorak
