#pragma once

#include "root/objects/Object.h"

#include <velmorak/Value.h>

#include <cstddef>
#include <string>

/// Histograms, profiles and graphs of a file as the system's own objects.
namespace velmorak::root {

/// @return 1 to 3 for the classes TH1*, TH2* and TH3*; 0 for others.
std::size_t histogramAxes(const std::string& className);
/// @return 1 for TProfile, 2 for TProfile2D; 0 for others.
std::size_t profileAxes(const std::string& className);
bool isGraph(const std::string& className);

/// Contents with under- and overflow, sums of squared weights, titles and labels. A file has no sums of the filled
/// quantities by bin, only for all of them together: in each bin they are set such that mean, standard deviation and
/// correlation of the whole are those of the file, as long as its sums match its contents; otherwise all fills of a bin
/// count as its centre. The number of entries of a bin is that of weights of 1 which have its error.
/// @throws Failure if the object is not a histogram, or is incomplete.
DataObjectPtr histogramFrom(const Object& object);

/// @throws Failure if the object is not a profile, or is incomplete.
DataObjectPtr profileFrom(const Object& object);

/// Points of a graph with its errors, or of a TEfficiency of one axis with the errors that it asks for.
/// @throws Failure if the object is neither, or is incomplete.
DataObjectPtr pointsFrom(const Object& object);

}  // namespace velmorak::root
