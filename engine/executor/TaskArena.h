#pragma once

namespace velmorak {

/// Has the call made by another thread of the arena that this one is in. This much is built without the checker of
/// threads: the scheduler's insides, which are not ours, are built so too, and half of a handover would look like a
/// race.
void enqueue(void (*call)(void*), void* argument);

}  // namespace velmorak
