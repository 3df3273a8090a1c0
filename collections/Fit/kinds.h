#pragma once

#include <velmorak/Kind.h>

#include <memory>

/// Makes the kinds of the collection; each is described by its own summary, ports and notes.
namespace velmorak {

std::unique_ptr<Kind> makeFit();

}  // namespace velmorak
