#pragma once

#include <velmorak/Kind.h>

#include <memory>

/// Factories of the collection's kinds. What a kind does is described by its summary, ports and notes.
namespace velmorak {

std::unique_ptr<Kind> makeHistogram1D();
std::unique_ptr<Kind> makeHistogram2D();
std::unique_ptr<Kind> makeHistogram3D();
std::unique_ptr<Kind> makeProfile1D();
std::unique_ptr<Kind> makeProfile2D();
std::unique_ptr<Kind> makeCategoryHistogram();
std::unique_ptr<Kind> makeGroupedHistogram();
std::unique_ptr<Kind> makeRebin();
std::unique_ptr<Kind> makeScale();
std::unique_ptr<Kind> makeSmooth();
std::unique_ptr<Kind> makeCombine();
std::unique_ptr<Kind> makePickHistogram();
std::unique_ptr<Kind> makeProject();
std::unique_ptr<Kind> makeCumulative();
std::unique_ptr<Kind> makeCompare();
std::unique_ptr<Kind> makeStatistics();
std::unique_ptr<Kind> makeQuantileEdges();

}  // namespace velmorak
