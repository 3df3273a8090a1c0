#pragma once

#include "EditorTest.h"

#include <string>

/// Compares the canvas with the library: exactly one box for each plug-in, exactly one path for each binding, between
/// its ports, maps of the same size, and the colour of a selection on the selected box only.
/// @return the differences, in words; empty if there are none.
std::string differencesBetween(OpenWindow& window, QzManager& library);

/// Every plug-in with its position on the canvas and the sources of its inputs, by name: "50 700 a=First.value b=".
std::map<std::string, std::string> contentsOf(QzManager& library);
