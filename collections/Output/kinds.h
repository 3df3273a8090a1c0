#pragma once

#include <velmorak/Kind.h>

#include <memory>

/// Makes the kinds of the collection; each is described by its own summary, ports and notes.
namespace velmorak {

std::unique_ptr<Kind> makePlot();
std::unique_ptr<Kind> makeAidaWriter();
std::unique_ptr<Kind> makeCsvWriter();
std::unique_ptr<Kind> makePrint();
std::unique_ptr<Kind> makeReport();

}  // namespace velmorak
