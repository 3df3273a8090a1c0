#pragma once

#include <functional>

namespace velmorak {

/// Lets another thread of the run do the work, as soon as there is one; how many there are is for the run to say. What
/// was written before the call is seen by the work. The work must not throw.
void spawnTask(std::function<void()> work);

}  // namespace velmorak
