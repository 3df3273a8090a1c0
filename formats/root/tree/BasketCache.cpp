#include "root/tree/BasketCache.h"

#include <algorithm>
#include <exception>
#include <iterator>
#include <utility>

namespace velmorak::root {
namespace {

std::size_t bytesOf(const Basket& basket) {
    return sizeof(Basket) + basket.content.size() + basket.offsets.size() * sizeof(basket.offsets[0]);
}

}  // namespace

BasketCache::BasketPtr BasketCache::get(const void* key, const std::function<Basket()>& load, Use use) {
    if (use.entries > 0 && use.used >= use.entries) {
        return std::make_shared<const Basket>(load());
    }
    std::promise<BasketPtr> promise;
    std::shared_future<BasketPtr> basket;
    {
        const MutexLock lock(mutex);
        if (const auto found = byKey.find(key); found != byKey.end()) {
            slots.splice(slots.begin(), slots, found->second);
            basket = slots.front().basket;
        } else {
            slots.push_front({key, promise.get_future().share()});
            slots.front().entriesLeft = use.entries == 0 ? UINT64_MAX : use.entries;
            byKey.emplace(key, slots.begin());
        }
        countUse(slots.begin(), use);
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

void BasketCache::countUse(Slots::iterator slot, Use use) {
    if (use.entries > 0) {
        slot->entriesLeft -= std::min(slot->entriesLeft, use.used);
    }
    if (slot->entriesLeft == 0) {
        erase(slot);
    }
}

void BasketCache::erase(Slots::iterator slot) {
    total -= slot->bytes;
    byKey.erase(slot->key);
    slots.erase(slot);
}

/// Counts a basket that has been loaded, and forgets those used longest ago; never that one.
void BasketCache::keep(const void* key, std::size_t bytesOfBasket) {
    const MutexLock lock(mutex);
    const auto found = byKey.find(key);
    if (found == byKey.end()) {
        return;
    }
    // It may have been erased and loaded again meanwhile.
    total += bytesOfBasket - found->second->bytes;
    found->second->bytes = bytesOfBasket;
    while (total > maxBytes && slots.size() > 1) {
        const auto last = std::prev(slots.end());
        if (last->key == key || last->bytes == 0) {
            break;
        }
        erase(last);
    }
}

std::size_t BasketCache::bytes() const {
    const MutexLock lock(mutex);
    return total;
}

}  // namespace velmorak::root
