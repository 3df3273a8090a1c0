#pragma once

#include <velmorak/Kind.h>

#include <memory>

/// Factories of the collection's kinds. What a kind does is described by its summary, ports and notes.
namespace velmorak {

std::unique_ptr<Kind> makeFit();

}  // namespace velmorak
