#include "root/BasketCache.h"

#include <exception>
#include <iterator>
#include <utility>

namespace velmorak::root {
namespace {

std::size_t bytesOf(const Basket& basket) {
    return sizeof(Basket) + basket.content.size() + basket.offsets.size() * sizeof(basket.offsets[0]);
}

}  // namespace

BasketCache::BasketPtr BasketCache::get(const void* key, const std::function<Basket()>& load) {
    std::promise<BasketPtr> promise;
    std::shared_future<BasketPtr> basket;
    {
        const MutexLock lock(mutex);
        if (const auto found = byKey.find(key); found != byKey.end()) {
            slots.splice(slots.begin(), slots, found->second);
            basket = slots.front().basket;
        } else {
            slots.push_front({key, promise.get_future().share()});
            byKey.emplace(key, slots.begin());
        }
    }
    if (basket.valid()) {
        return basket.get();
    }
    try {
        auto loaded = std::make_shared<const Basket>(load());
        promise.set_value(loaded);
        keep(key, bytesOf(*loaded));
        return loaded;
    } catch (...) {
        promise.set_exception(std::current_exception());
        keep(key, sizeof(Basket));
        throw;
    }
}

/// Counts a basket that has been loaded, and forgets those used longest ago; never that one.
void BasketCache::keep(const void* key, std::size_t bytesOfBasket) {
    const MutexLock lock(mutex);
    const auto found = byKey.find(key);
    if (found == byKey.end()) {
        return;
    }
    found->second->bytes = bytesOfBasket;
    total += bytesOfBasket;
    while (total > maxBytes && slots.size() > 1) {
        const auto last = std::prev(slots.end());
        if (last->key == key || last->bytes == 0) {
            break;
        }
        total -= last->bytes;
        byKey.erase(last->key);
        slots.erase(last);
    }
}

std::size_t BasketCache::bytes() const {
    const MutexLock lock(mutex);
    return total;
}

}  // namespace velmorak::root
