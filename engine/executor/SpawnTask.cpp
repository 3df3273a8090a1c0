#include <velmorak/Tasks.h>

#include "executor/TaskArena.h"

#include <atomic>
#include <memory>
#include <utility>

// Of the address sanitizer, whichever compiler it comes with; null without it.
// NOLINTNEXTLINE(bugprone-reserved-identifier)
extern "C" __attribute__((weak)) void __lsan_ignore_object(const void* object);

namespace velmorak {
namespace {

/// Hands the work over in a way that a tool which checks our threads can see; into the library that schedules them it
/// cannot.
struct Handover {
    std::function<void()> work;
    std::atomic<bool> isHanded = false;
};

void take(void* handed) {
    const std::unique_ptr<Handover> handover(static_cast<Handover*>(handed));
    static_cast<void>(handover->isHanded.load(std::memory_order_acquire));
    handover->work();
}

/// A program that ends before a thread has come leaves the work in the scheduler's queue, as it leaves the thread. That
/// is no leak, but a tool which looks for leaks cannot see into that queue.
void leaveToScheduler(const Handover* handover) {
    if (__lsan_ignore_object) {
        __lsan_ignore_object(handover);
    }
}

}  // namespace

void spawnTask(std::function<void()> work) {
    auto handover = std::make_unique<Handover>();
    handover->work = std::move(work);
    handover->isHanded.store(true, std::memory_order_release);
    leaveToScheduler(handover.get());
    enqueue(&take, handover.get());
    static_cast<void>(handover.release());
}

}  // namespace velmorak
