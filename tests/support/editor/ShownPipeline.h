#pragma once

#include "EditorTest.h"

#include <string>

/// Compares the canvas with the library: one box for each plug-in and nothing else, one path for each binding and
/// between its ports, the maps of the same size, and the selected colour on the selected box only.
/// @return what differs, in words; empty where nothing does.
std::string differencesBetween(OpenWindow& window, QzManager& library);

/// Every plug-in with its place on the canvas and the sources of its inputs, by name: "50 700 a=First.value b=".
std::map<std::string, std::string> contentsOf(QzManager& library);
