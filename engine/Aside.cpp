#include "Aside.h"

#include <oneapi/tbb/task_arena.h>

#include <atomic>
#include <memory>

namespace velmorak {
namespace {

/// Hands the work over in a way that a tool which checks our threads can see; into the library that schedules them it
/// cannot.
class Handover {
public:
    explicit Handover(std::function<void()>* work) { place.store(work, std::memory_order_release); }
    Handover(const Handover& other) {
        place.store(other.place.load(std::memory_order_acquire), std::memory_order_release);
    }
    Handover& operator=(const Handover&) = delete;
    ~Handover() = default;

    void operator()() const {
        const std::unique_ptr<std::function<void()>> work(place.load(std::memory_order_acquire));
        (*work)();
    }

private:
    std::atomic<std::function<void()>*> place;
};

}  // namespace

void doAside(std::function<void()> work) {
    auto kept = std::make_unique<std::function<void()>>(std::move(work));
    oneapi::tbb::task_arena(oneapi::tbb::task_arena::attach{}).enqueue(Handover(kept.get()));
    static_cast<void>(kept.release());
}

}  // namespace velmorak
