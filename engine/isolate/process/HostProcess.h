#pragma once

#include "isolate/Declaration.h"
#include "isolate/Host.h"
#include "isolate/process/HelperProcess.h"

#include <functional>
#include <vector>

namespace velmorak::isolation {

/// What a host has loaded.
struct LoadedCollection {
    std::vector<LoadedKind> kinds;
    bool hasFormats = false;
};

/// The work of the process of a host: loads a collection when it is asked to, and forks helpers until the program that
/// has started it ends. Descriptors 3 to 5 are its socket, a pipe that the program holds open, and the memory of its
/// messages.
/// @param load loads the collection. @throws std::exception with the reason.
/// @return the status of the process.
int runHost(const std::function<LoadedCollection(const Load&)>& load);

}  // namespace velmorak::isolation
