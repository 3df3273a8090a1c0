#pragma once

#include "isolate/Channel.h"
#include "isolate/process/Task.h"

#include <velmorak/Kind.h>

#include <memory>
#include <string>
#include <vector>

namespace velmorak::isolation {

/// A kind as its collection has registered it.
struct LoadedKind {
    std::string group;
    std::unique_ptr<Kind> kind;  ///< May be null.
};

/// The work of a helper process: answers questions until the program closes the connection.
/// @param page begins with a byte: whether the run is being stopped.
[[noreturn]] void runHelper(const std::vector<LoadedKind>& kinds, const Task& task, Channel control,
                            FileDescriptor page);

}  // namespace velmorak::isolation
