#pragma once

#include <velmorak/Kind.h>

#include <memory>

/// Factories of the collection's kinds. What a kind does is described by its summary, ports and notes.
namespace velmorak {

std::unique_ptr<Kind> makeNumber();
std::unique_ptr<Kind> makeMeasurement();
std::unique_ptr<Kind> makeText();
std::unique_ptr<Kind> makeAdder();
std::unique_ptr<Kind> makeSubtractor();
std::unique_ptr<Kind> makeMultiplier();
std::unique_ptr<Kind> makeDivider();
std::unique_ptr<Kind> makeFunction();

}  // namespace velmorak
