#pragma once

namespace velmorak {

/// @return whether the calling thread is the first of its program. In a program with windows that is the one that the
///         user waits for.
bool isMainThread();

/// Lowers the priority of the calling thread, and of threads that it starts from now on, so that a run on all
/// processors leaves windows responsive. A thread that is lower already stays where it is. The system does not let a
/// thread rise again.
void lowerPriority();

}  // namespace velmorak
