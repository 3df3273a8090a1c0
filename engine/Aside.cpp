#include "Aside.h"

#include "Enqueue.h"

#include <atomic>
#include <memory>
#include <utility>

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

}  // namespace

void doAside(std::function<void()> work) {
    auto handover = std::make_unique<Handover>();
    handover->work = std::move(work);
    handover->isHanded.store(true, std::memory_order_release);
    enqueue(&take, handover.get());
    static_cast<void>(handover.release());
}

}  // namespace velmorak
