#pragma once

#include "PlotFrame.h"

namespace velmorak {

/// A text as gnuplot takes it, in single quotes, where no character has a meaning of its own; the quote itself is
/// joined on. Whatever ends a line or is no valid UTF-8 is replaced, so that no text can become a command.
std::string quotedForGnuplot(const std::string& text);

/// At most five digits, as people read them.
std::string roundedText(double number);

/// The numbers of the picture: for each histogram a block with its outline and one with its error bars.
std::string plotData(const std::vector<HistogramPtr>& histograms, const PlotFrame& frame, const PlotStyle& style);

/// Draws baseName.png and baseName.svg from baseName.dat, all in the current folder.
std::string plotScript(const std::vector<HistogramPtr>& histograms, const PlotFrame& frame, const PlotStyle& style);

}  // namespace velmorak
