#pragma once

#include "ScanTable.h"

#include <string>

/// An SVG picture with a panel for each number output that differs between runs, over the scanned input that has most
/// values. Runs that agree in the other inputs are joined by lines.
std::string scanPicture(const ScanTable& table);
