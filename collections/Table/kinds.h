#pragma once

#include <velmorak/Kind.h>

#include <memory>

/// Factories of the collection's kinds. What a kind does is described by its summary, ports and notes.
namespace velmorak {

std::unique_ptr<Kind> makeFormula();
std::unique_ptr<Kind> makeFilter();
std::unique_ptr<Kind> makeSelect();
std::unique_ptr<Kind> makeRange();
std::unique_ptr<Kind> makeConcat();
std::unique_ptr<Kind> makeCutFlow();
std::unique_ptr<Kind> makeExplode();
std::unique_ptr<Kind> makeGroupBy();
std::unique_ptr<Kind> makeJoin();
std::unique_ptr<Kind> makeSort();
std::unique_ptr<Kind> makeUnique();
std::unique_ptr<Kind> makeSample();
std::unique_ptr<Kind> makeTail();
std::unique_ptr<Kind> makeRename();
std::unique_ptr<Kind> makeWindow();
std::unique_ptr<Kind> makeResample();
std::unique_ptr<Kind> makePowerSpectrum();

}  // namespace velmorak
