#pragma once

#include <QzKind.h>

#include <filesystem>
#include <vector>

namespace velmorak {

/// Lists the documents `<folder>/<group>/<name>.zedra`. Groups of the same name in several folders are one; groups and
/// names are in alphabetical order, those of an earlier folder first.
std::vector<QzExample> listExamples(const std::vector<std::filesystem::path>& folders);

}  // namespace velmorak
