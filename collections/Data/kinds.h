#pragma once

#include <velmorak/Kind.h>

#include <memory>
#include <vector>

/// Factories of the collection's kinds. What a kind does is described by its summary, ports and notes.
namespace velmorak {

std::unique_ptr<Kind> makeAidaTable();
std::unique_ptr<Kind> makeCsvTable();
std::unique_ptr<Kind> makeGeant4Histogram();
std::unique_ptr<Kind> makeHepMcTable();
std::unique_ptr<Kind> makeRandomTable();
std::unique_ptr<Kind> makeRootTable();
std::unique_ptr<Kind> makeYodaObjects();
/// AidaHistogram, AidaProfile, AidaPoints and AidaFunction.
std::vector<std::unique_ptr<Kind>> makeAidaObjects();

}  // namespace velmorak
