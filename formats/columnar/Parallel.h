#pragma once

#include <cstddef>
#include <functional>

namespace velmorak::columnar {

/// Calls task(0), ..., task(count - 1) on the threads of the run that are free, and on the calling one.
/// @throws what a task has thrown, after all have ended.
void inParallel(std::size_t count, const std::function<void(std::size_t)>& task);

}  // namespace velmorak::columnar
