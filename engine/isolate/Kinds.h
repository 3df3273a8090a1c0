#pragma once

#include "isolate/Host.h"

#include <velmorak/Kind.h>

#include <cstddef>
#include <memory>

namespace velmorak::isolation {

class Desk;

/// @return a process for questions about values that no run asks; shared by the kinds of a collection.
std::shared_ptr<Desk> newDesk(std::shared_ptr<Host> host);

/// @param number of the kind among those that the host declares.
/// @return the kind as the library uses it, whose code runs in a helper process for each plug-in; null if the
/// collection
///         has registered null.
std::unique_ptr<Kind> isolatedKind(std::shared_ptr<Host> host, std::shared_ptr<Desk> desk, std::size_t number);

}  // namespace velmorak::isolation
