#pragma once

#include "root/objects/Object.h"

#include <velmorak/Value.h>

namespace velmorak::root {

/// The fraction of passed fills in each bin of a TEfficiency of one axis, with the confidence interval that the object
/// asks for: Clopper-Pearson, normal, Wilson or Agresti-Coull (L. D. Brown, T. T. Cai, A. DasGupta, Statist. Sci. 16
/// (2001) 101). Bins without fills are left out.
/// @throws Failure if it has several axes or weights, asks for another interval, or is incomplete.
DataObjectPtr efficiencyFrom(const Object& object);

struct Interval {
    double low = 0.0;
    double high = 0.0;
};

/// Clopper-Pearson: the largest range of probabilities that are not excluded by the fills on either side.
/// @param passed of total, both integral. @param level of confidence, between 0 and 1.
Interval clopperPearson(double passed, double total, double level);

/// Regularised incomplete beta function I_x(a, b) by its continued fraction (NIST Digital Library of Mathematical
/// Functions, 8.17.22). Relative error below 1e-12 for a, b below 1e6.
double incompleteBeta(double a, double b, double x);

}  // namespace velmorak::root
