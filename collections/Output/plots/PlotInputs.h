#pragma once

#include "Output/plots/script/PlotStyle.h"

#include <velmorak/Kind.h>

/// The inputs of a Plot, except for its first object and the number of objects.
namespace velmorak {

/// The inputs that every Plot shows.
std::vector<InputSpec> plotValueInputs();

/// The inputs that a plain picture does not need, without the looks.
std::vector<InputSpec> advancedInputs();

/// Appends the inputs that depend on values: those for a lower panel, lines, regions, text, size and looks if they are
/// asked for or have values of their own, and the second and further objects.
void addFurtherInputs(Ports& ports, const InputSpec& object, const ValueTexts& values);

/// The inputs that are shown with the value "yes" of advanced, as a table in Markdown.
std::string advancedInputsAsTable();

/// Choices, in the order of LegendPlace, ObjectStyle, StatisticsDisplay and PanelKind.
std::vector<std::string> legendChoices();
std::vector<std::string> histogramStyleChoices();
std::vector<std::string> statisticsChoices();
std::vector<std::string> panelChoices();

}  // namespace velmorak
