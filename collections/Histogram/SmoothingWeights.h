#pragma once

#include <cstddef>
#include <vector>

/// Weights of neighbouring values in smoothing.
namespace velmorak {

/// @return the weights divided by their sum.
std::vector<double> normalised(std::vector<double> weights);

/// exp(-distance² / 2 sigma²).
double gaussianWeight(double distance, double sigma);
/// @return the distance up to which Gaussian weights are used: 4 sigma, rounded.
std::size_t reachOf(double sigma);

/// Weights with which the values at -reach to reach add up to the value at a place of the polynomial that fits them
/// best: P. A. Gorry, Anal. Chem. 62 (1990) 570, equation 8.
/// @param degree of the polynomial, at most 2 reach.
/// @param place  from -reach to reach.
std::vector<double> polynomialWeights(std::size_t reach, std::size_t degree, double place);

}  // namespace velmorak
