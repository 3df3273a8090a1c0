#include "root/BasketCache.h"

#include <algorithm>

namespace velmorak::root {
namespace {

/// Enough for the columns and threads of a typical run; a basket has some ten thousand bytes.
constexpr std::size_t maxSlots = 256;

}  // namespace

BasketCache::BasketPtr BasketCache::get(const void* key, const std::function<Basket()>& load) {
    std::promise<BasketPtr> promise;
    std::shared_future<BasketPtr> basket;
    bool isMine = false;
    {
        const MutexLock lock(mutex);
        const auto found =
            std::find_if(slots.begin(), slots.end(), [key](const Slot& slot) { return slot.key == key; });
        if (found != slots.end()) {
            slots.splice(slots.begin(), slots, found);
        } else {
            isMine = true;
            slots.push_front({key, promise.get_future().share()});
            if (slots.size() > maxSlots) {
                slots.pop_back();
            }
        }
        basket = slots.front().basket;
    }
    if (isMine) {
        try {
            promise.set_value(std::make_shared<const Basket>(load()));
        } catch (...) {
            promise.set_exception(std::current_exception());
        }
    }
    return basket.get();
}

}  // namespace velmorak::root
