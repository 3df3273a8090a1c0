#pragma once

#include "root/objects/Object.h"

#include <velmorak/Value.h>

#include <string>

namespace velmorak::root {

/// @throws Failure for an object that a ROOT file cannot hold: a function, points of other than two dimensions, or a
///         histogram of too many cells.
void requireWritable(const DataObject& object, const std::string& name);

/// Converts a data object for a file: histograms become TH1D, TH2D and TH3D, profiles TProfile and TProfile2D, points
/// of two dimensions TGraphErrors, or TGraphAsymmErrors where errors are asymmetric.
/// @param name that the object has in the file.
/// @param object of which requireWritable says nothing.
Object objectForFile(const DataObject& object, const std::string& name);

}  // namespace velmorak::root
