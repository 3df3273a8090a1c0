#pragma once

#include <cstddef>
#include <functional>

/// Lets readers and kinds use several threads of the current run.
namespace velmorak {

/// @return how many threads the run that the calling thread belongs to has; 1 outside of a run.
std::size_t runThreads();

/// Runs the task on another thread of the run that the calling thread belongs to, as soon as one is free. A task that
/// has not begun when the run ends is discarded, so the caller must be able to finish without it.
/// The task must not throw. Outside of a run, it is discarded at once.
void spawnTask(std::function<void()> task);

}  // namespace velmorak
