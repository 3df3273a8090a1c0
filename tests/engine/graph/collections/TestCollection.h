#pragma once

#include <atomic>

/// How many plug-ins of the kind Waiter are at work. The tests find it by its name in the loaded collection.
extern "C" __attribute__((visibility("default"))) std::atomic<int> waitersRunning;
