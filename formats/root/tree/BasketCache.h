#pragma once

#include "root/tree/Basket.h"

#include <velmorak/Mutex.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <future>
#include <list>
#include <memory>
#include <unordered_map>

namespace velmorak::root {

/// Keeps the baskets decompressed last, so that one that spans several chunks is decompressed once, until all of their
/// entries have been used. Their number is limited by their bytes: one cluster of a typical tree fits.
/// Threads: get may be called on several threads at once; if several request the same basket, one of them loads it.
class BasketCache {
public:
    using BasketPtr = std::shared_ptr<const Basket>;

    static constexpr std::size_t maxBytes = std::size_t{128} << 20U;

    /// How much of a basket a caller uses.
    struct Use {
        std::uint64_t entries = 0;  ///< Of the basket.
        std::uint64_t used = 0;     ///< Of them, now.
    };

    /// @param key  any address that is unique to the basket.
    /// @param load decompresses the basket; all threads that wait for the basket rethrow its exceptions.
    /// @param use  a basket of which all entries have been used is not kept; without it, only the limit counts.
    BasketPtr get(const void* key, const std::function<Basket()>& load, Use use = {0, 0});
    /// Bytes of the baskets that are kept.
    std::size_t bytes() const;

private:
    struct Slot {
        const void* key = nullptr;
        std::shared_future<BasketPtr> basket;
        std::size_t bytes = 0;  ///< 0 until the basket is loaded.
        std::uint64_t entriesLeft = UINT64_MAX;
    };
    using Slots = std::list<Slot>;

    void countUse(Slots::iterator slot, Use use) VELMORAK_REQUIRES(mutex);
    void erase(Slots::iterator slot) VELMORAK_REQUIRES(mutex);
    void keep(const void* key, std::size_t bytesOfBasket);

    mutable Mutex mutex;
    Slots slots VELMORAK_GUARDED_BY(mutex);  ///< Most recently used first.
    std::unordered_map<const void*, Slots::iterator> byKey VELMORAK_GUARDED_BY(mutex);
    std::size_t total VELMORAK_GUARDED_BY(mutex) = 0;
};

}  // namespace velmorak::root
