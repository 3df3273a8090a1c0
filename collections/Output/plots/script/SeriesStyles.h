#pragma once

#include "Output/plots/contents/PlotContents.h"

#include <cstddef>
#include <string>
#include <vector>

namespace velmorak {

/// The input with the look of the object at a position, counted from 0.
std::string lookInput(std::size_t position);

/// @throws Failure, with the input, if the user wants a style that is not among these.
void allowStyles(const PlotSeries& series, std::size_t position, const std::vector<ObjectStyle>& styles,
                 const std::string& what);

/// Chooses how each series is drawn. Unless the user chooses, histograms beside a curve or a stack are drawn as points,
/// others as steps.
void chooseStyles(PlotContents& contents, const PlotStyle& style);

}  // namespace velmorak
