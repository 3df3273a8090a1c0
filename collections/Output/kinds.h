#pragma once

#include <velmorak/Kind.h>

#include <memory>

/// Factories of the collection's kinds. What a kind does is described by its summary, ports and notes.
namespace velmorak {

std::unique_ptr<Kind> makePlot();
std::unique_ptr<Kind> makeAidaWriter();
std::unique_ptr<Kind> makeCsvWriter();
std::unique_ptr<Kind> makeRootWriter();
std::unique_ptr<Kind> makePrint();
std::unique_ptr<Kind> makeReport();

}  // namespace velmorak
