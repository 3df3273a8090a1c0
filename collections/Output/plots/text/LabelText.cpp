#include "Output/plots/text/LabelText.h"

#include "Output/plots/text/PlotText.h"

#include <velmorak/Utf8.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>

namespace velmorak {

namespace {

using Level = LabelRun::Level;

constexpr std::size_t notThere = std::string::npos;
/// Deeper markup is shown letter for letter.
constexpr int maxDepth = 8;

bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

/// Commands that add a mark to the characters of their argument.
struct Accent {
    std::string_view command;
    std::string_view mark;
};
constexpr std::array accents = {Accent{"bar", "\u0304"},   Accent{"overline", "\u0305"}, Accent{"hat", "\u0302"},
                                Accent{"tilde", "\u0303"}, Accent{"dot", "\u0307"},      Accent{"vec", "\u20D7"}};
constexpr std::array<std::string_view, 7> wrappers = {"mathrm", "text", "mathbf", "mathit", "mathsf", "textrm", "rm"};

std::string_view accentOf(const std::string& command) {
    const auto* const found =
        std::find_if(accents.begin(), accents.end(), [&](const Accent& accent) { return accent.command == command; });
    return found == accents.end() ? std::string_view() : found->mark;
}

bool isWrapper(const std::string& command) {
    return std::find(wrappers.begin(), wrappers.end(), command) != wrappers.end();
}

/// Reads a label once from left to right.
class LabelReader {
public:
    explicit LabelReader(const std::string& text) : text(text), partner(text.size(), notThere) { pairBraces(); }

    std::vector<LabelRun> read();

private:
    void pairBraces();
    /// @return the position of the brace that closes the argument that begins at a position; notThere if none does.
    std::size_t argumentEnd(std::size_t at) const;
    void add(std::string_view part, Level level);
    void readRange(std::size_t from, std::size_t to, Level level, bool isMath, int depth);
    std::size_t readOne(std::size_t at, std::size_t to, Level level, bool isMath, int depth);
    std::size_t readScript(std::size_t at, std::size_t to, Level level, bool isMath, int depth);
    std::size_t readBackslash(std::size_t at, std::size_t to, Level level, bool isMath, int depth);
    std::size_t readCommand(const std::string& command, std::size_t after, Level level, bool isMath, int depth);
    std::size_t readDollar(std::size_t at, std::size_t to, Level level, int depth);
    std::string plainArgument(std::size_t open, bool isMath, int depth) const;
    std::size_t addRoot(std::size_t open, Level level, bool isMath, int depth);
    std::size_t addFraction(std::size_t open, Level level, bool isMath, int depth);
    std::size_t addAccented(std::size_t open, std::string_view mark, Level level, bool isMath, int depth);
    bool hasMarkup(std::size_t from, std::size_t to) const;
    std::string commandAt(std::size_t at) const;
    bool isKnown(const std::string& command, std::size_t after) const;

    const std::string& text;
    std::vector<std::size_t> partner;  ///< Of each opening brace the closing one.
    std::vector<LabelRun> runs;
};

std::vector<LabelRun> LabelReader::read() {
    readRange(0, text.size(), Level::Normal, false, 0);
    return std::move(runs);
}

std::size_t LabelReader::argumentEnd(std::size_t at) const {
    return at < text.size() && text[at] == '{' ? partner[at] : notThere;
}

void LabelReader::pairBraces() {
    std::vector<std::size_t> open;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\\' && i + 1 < text.size() && (text[i + 1] == '{' || text[i + 1] == '}')) {
            ++i;
        } else if (text[i] == '{') {
            open.push_back(i);
        } else if (text[i] == '}' && !open.empty()) {
            partner[open.back()] = i;
            open.pop_back();
        }
    }
}

void LabelReader::add(std::string_view part, Level level) {
    if (part.empty()) {
        return;
    }
    if (runs.empty() || runs.back().level != level) {
        runs.push_back({.level = level, .text = {}});
    }
    runs.back().text += part;
}

void LabelReader::readRange(std::size_t from, std::size_t to, Level level, bool isMath, int depth) {
    while (from < to) {
        from = readOne(from, to, level, isMath, depth);
    }
}

/// @return the position behind what was read.
std::size_t LabelReader::readOne(std::size_t at, std::size_t to, Level level, bool isMath, int depth) {
    const char c = text[at];
    if (depth < maxDepth) {
        if (c == '_' || c == '^') {
            return readScript(at, to, level, isMath, depth);
        }
        if (c == '\\') {
            return readBackslash(at, to, level, isMath, depth);
        }
        if (c == '$' && !isMath) {
            return readDollar(at, to, level, depth);
        }
        if (c == '{' && isMath && argumentEnd(at) != notThere) {
            readRange(at + 1, partner[at], level, isMath, depth + 1);
            return partner[at] + 1;
        }
    }
    const bool isMinus = c == '-' && (isMath || level != Level::Normal);
    const std::size_t length = std::max<std::size_t>(1, characterBytes(std::string_view(text).substr(at, to - at)));
    add(isMinus ? std::string_view("−") : std::string_view(text).substr(at, length), level);
    return at + length;
}

std::size_t LabelReader::readScript(std::size_t at, std::size_t to, Level level, bool isMath, int depth) {
    const Level own = text[at] == '_' ? Level::Subscript : Level::Superscript;
    const Level inner = level == Level::Normal ? own : level;
    if (const std::size_t end = argumentEnd(at + 1); end != notThere) {
        readRange(at + 2, end, inner, isMath, depth + 1);
        return end + 1;
    }
    if (isMath && at + 1 < to && text[at + 1] != '{' && text[at + 1] != '$' && text[at + 1] != ' ') {
        return readOne(at + 1, to, inner, true, depth + 1);
    }
    add(std::string_view(text).substr(at, 1), level);
    return at + 1;
}

std::string LabelReader::commandAt(std::size_t at) const {
    std::size_t end = at + 1;
    while (end < text.size() && isLetter(text[end])) {
        ++end;
    }
    return text.substr(at + 1, end - at - 1);
}

bool LabelReader::isKnown(const std::string& command, std::size_t after) const {
    const std::size_t end = argumentEnd(after);
    if (command == "sqrt" || isWrapper(command) || !accentOf(command).empty()) {
        return end != notThere;
    }
    if (command == "frac") {
        return end != notThere && argumentEnd(end + 1) != notThere;
    }
    return command == "left" || command == "right" || !labelSymbol(command).empty();
}

std::size_t LabelReader::readBackslash(std::size_t at, std::size_t to, Level level, bool isMath, int depth) {
    const char next = at + 1 < to ? text[at + 1] : ' ';
    if (isLetter(next)) {
        const std::string command = commandAt(at);
        const std::size_t after = at + 1 + command.size();
        if (isKnown(command, after)) {
            return readCommand(command, after, level, isMath, depth);
        }
    } else if (at + 1 < to && std::string_view("{}$%#&_^").find(next) != notThere) {
        add(std::string_view(text).substr(at + 1, 1), level);
        return at + 2;
    } else if (at + 1 < to && (next == ',' || next == ';')) {
        add(next == ',' ? "\u2009" : " ", level);
        return at + 2;
    }
    add("\\", level);
    return at + 1;
}

std::size_t LabelReader::readCommand(const std::string& command, std::size_t after, Level level, bool isMath,
                                     int depth) {
    if (command == "sqrt") {
        return addRoot(after, level, isMath, depth);
    }
    if (command == "frac") {
        return addFraction(after, level, isMath, depth);
    }
    if (isWrapper(command)) {
        readRange(after + 1, partner[after], level, isMath, depth + 1);
        return partner[after] + 1;
    }
    if (const std::string_view mark = accentOf(command); !mark.empty()) {
        return addAccented(after, mark, level, isMath, depth);
    }
    add(labelSymbol(command), level);
    // An empty group ends a command, as in \mu{}m.
    return argumentEnd(after) == after + 1 ? after + 2 : after;
}

/// @return an argument as one text, without heights.
std::string LabelReader::plainArgument(std::size_t open, bool isMath, int depth) const {
    std::string inner = text.substr(open + 1, partner[open] - open - 1);
    if (depth + 1 >= maxDepth) {
        return inner;
    }
    LabelReader reader(inner);
    reader.readRange(0, inner.size(), Level::Normal, isMath, depth + 1);
    std::string all;
    for (const LabelRun& run : reader.runs) {
        all += run.text;
    }
    return all;
}

std::size_t LabelReader::addRoot(std::size_t open, Level level, bool isMath, int depth) {
    const bool isLong = characterCount(plainArgument(open, isMath, depth)) > 1 &&
                        text.find('_', open) >= partner[open] && text.find('\\', open) >= partner[open];
    add(isLong ? "√(" : "√", level);
    readRange(open + 1, partner[open], level, isMath, depth + 1);
    add(isLong ? ")" : "", level);
    return partner[open] + 1;
}

std::size_t LabelReader::addFraction(std::size_t open, Level level, bool isMath, int depth) {
    for (const bool isFirst : {true, false}) {
        const std::string inner = plainArgument(open, isMath, depth);
        const bool isSum = inner.find_first_of("+- /") != notThere;
        add(isFirst ? "" : "/", level);
        add(isSum ? "(" : "", level);
        readRange(open + 1, partner[open], level, isMath, depth + 1);
        add(isSum ? ")" : "", level);
        open = isFirst ? partner[open] + 1 : open;
    }
    return partner[open] + 1;
}

std::size_t LabelReader::addAccented(std::size_t open, std::string_view mark, Level level, bool isMath, int depth) {
    const std::string inner = plainArgument(open, isMath, depth);
    for (std::size_t i = 0; i < inner.size();) {
        const std::size_t length = std::max<std::size_t>(1, characterBytes(std::string_view(inner).substr(i)));
        add(inner.substr(i, length) + std::string(mark), level);
        i += length;
    }
    return partner[open] + 1;
}

bool LabelReader::hasMarkup(std::size_t from, std::size_t to) const {
    for (std::size_t i = from; i < to; ++i) {
        const bool isScript = (text[i] == '_' || text[i] == '^') && i + 1 < to && text[i + 1] != ' ';
        if (isScript || (text[i] == '\\' && isKnown(commandAt(i), i + 1 + commandAt(i).size()))) {
            return true;
        }
    }
    return false;
}

/// Dollars are markup only as a pair around markup: "5 $ to 7 $" is not.
std::size_t LabelReader::readDollar(std::size_t at, std::size_t to, Level level, int depth) {
    const std::size_t end = text.find('$', at + 1);
    if (end == notThere || end >= to || !hasMarkup(at + 1, end)) {
        add("$", level);
        return at + 1;
    }
    readRange(at + 1, end, level, true, depth + 1);
    return end + 1;
}

/// Escapes what gnuplot's enhanced mode would take as markup.
std::string escapedForEnhanced(const std::string& text) {
    std::string safe;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (std::string_view("\\{}_^@&~").find(c) != notThere) {
            safe += '\\';
        }
        safe += c;
        // The SVG terminal would read \U+2212 as a character.
        if (c == '\\' && i + 2 < text.size() && text[i + 1] == 'U' && text[i + 2] == '+') {
            safe += "\u2060";
        }
    }
    return safe;
}

/// Programs drop blanks at the ends of a part of a text in an SVG.
std::string withFirmEnds(std::string text) {
    constexpr const char* firmBlank = "\u00A0";
    if (text.ends_with(' ')) {
        text.replace(text.size() - 1, 1, firmBlank);
    }
    if (text.starts_with(' ')) {
        text.replace(0, 1, firmBlank);
    }
    return text;
}

std::string enhanced(const std::string& label) {
    std::string all;
    const std::vector<LabelRun> runs = labelRuns(label);
    for (const LabelRun& run : runs) {
        const std::string safe = escapedForEnhanced(runs.size() > 1 ? withFirmEnds(run.text) : run.text);
        all += run.level == Level::Normal      ? safe
               : run.level == Level::Subscript ? "_{" + safe + "}"
                                               : "^{" + safe + "}";
    }
    return all;
}

}  // namespace

std::vector<LabelRun> labelRuns(const std::string& label) {
    return LabelReader(label).read();
}

std::string quotedLabel(const std::string& label) {
    return quotedForGnuplot(enhanced(label));
}

std::string quotedPlain(const std::string& text) {
    return quotedForGnuplot(escapedForEnhanced(text));
}

std::string quotedTic(const std::string& label) {
    std::string doubled;
    for (const char c : enhanced(label)) {
        doubled += c == '%' ? "%%" : std::string(1, c);
    }
    return quotedForGnuplot(doubled);
}

double labelWidth(const std::string& label) {
    constexpr double small = 0.68;
    double width = 0.0;
    for (const LabelRun& run : labelRuns(label)) {
        width += (run.level == Level::Normal ? 1.0 : small) * static_cast<double>(characterCount(run.text));
    }
    return width;
}

}  // namespace velmorak
