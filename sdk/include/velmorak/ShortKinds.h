#pragma once

/// Kinds in a few lines: the author gives names, descriptions and a function, or a struct, and its signature says the
/// rest. rowWise, accumulate, fromValues, rowSource and fileSource register a kind each; their headers describe them.
///     VELMORAK_COLLECTION(registry) {
///         registry.group("Mine");
///         velmorak::rowWise(registry, {"Polar", "Adds radius and angle of two columns."},
///                           {{"x", "First column."}, {"y", "Second column."}}, {{"r"}, {"phi", "rad"}},
///                           [](double x, double y) { return std::array{elementary::hypot(x, y), elementary::atan2(y,
///                           x)}; });
///     }
/// A kind that these do not suffice for derives from a class in Kind.h.
#include <velmorak/short/Accumulate.h>
#include <velmorak/short/FromValues.h>
#include <velmorak/short/RowWise.h>
#include <velmorak/short/Sources.h>
