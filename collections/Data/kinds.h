#pragma once

#include <velmorak/Kind.h>

#include <memory>
#include <vector>

/// Makes the kinds of the collection; each is described by its own summary, ports and notes.
namespace velmorak {

std::unique_ptr<Kind> makeAidaTable();
std::unique_ptr<Kind> makeCsvTable();
std::unique_ptr<Kind> makeRandomTable();
std::unique_ptr<Kind> makeRootTable();
/// AidaHistogram, AidaProfile, AidaPoints and AidaFunction.
std::vector<std::unique_ptr<Kind>> makeAidaObjects();

}  // namespace velmorak
