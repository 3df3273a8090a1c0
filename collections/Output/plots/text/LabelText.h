#pragma once

#include <string>
#include <vector>

/// Labels of pictures: text with a small part of LaTeX's markup.
///
/// _{...} and ^{...} are subscripts and superscripts; within $...$ also _x and ^x. \mu, \to, \pm and the like are
/// symbols; \sqrt{}, \bar{}, \hat{}, \tilde{}, \vec{}, \frac{}{}, \mathrm{} and \text{} take arguments. Whatever is no
/// such markup, unbalanced braces and unknown commands included, is shown letter for letter.
namespace velmorak {

/// A part of a label at one height.
struct LabelRun {
    enum class Level { Normal, Subscript, Superscript };
    Level level = Level::Normal;
    std::string text;

    bool operator==(const LabelRun&) const = default;
};

/// @return the parts in order; neighbours differ in level.
std::vector<LabelRun> labelRuns(const std::string& label);

/// @return the label for gnuplot's enhanced mode, quoted: no text can become a command or markup of gnuplot.
std::string quotedLabel(const std::string& label);

/// @return a text quoted for gnuplot's enhanced mode, shown letter for letter.
std::string quotedPlain(const std::string& text);

/// @return as quotedLabel, for the label of a tic, where gnuplot would format percent signs.
std::string quotedTic(const std::string& label);

/// @return the width in characters of normal size.
double labelWidth(const std::string& label);

/// @return the symbol of a command, without its backslash: "mu" gives "μ"; empty if there is none.
std::string labelSymbol(const std::string& command);

}  // namespace velmorak
