#pragma once

#include "root/Basket.h"

#include <velmorak/Mutex.h>

#include <cstddef>
#include <functional>
#include <future>
#include <list>
#include <memory>
#include <unordered_map>

namespace velmorak::root {

/// Keeps the baskets decompressed last, so that one that spans several chunks is decompressed once. Their number is
/// limited by their bytes: one cluster of a typical tree fits.
/// Threads: get may be called on several threads at once; if several request the same basket, one of them loads it.
class BasketCache {
public:
    using BasketPtr = std::shared_ptr<const Basket>;

    static constexpr std::size_t maxBytes = std::size_t{128} << 20U;

    /// @param key  any address that is unique to the basket.
    /// @param load decompresses the basket; all threads that wait for the basket rethrow its exceptions.
    BasketPtr get(const void* key, const std::function<Basket()>& load);
    /// Bytes of the baskets that are kept.
    std::size_t bytes() const;

private:
    struct Slot {
        const void* key = nullptr;
        std::shared_future<BasketPtr> basket;
        std::size_t bytes = 0;  ///< 0 until the basket is loaded.
    };
    using Slots = std::list<Slot>;

    void keep(const void* key, std::size_t bytesOfBasket);

    mutable Mutex mutex;
    Slots slots VELMORAK_GUARDED_BY(mutex);  ///< Most recently used first.
    std::unordered_map<const void*, Slots::iterator> byKey VELMORAK_GUARDED_BY(mutex);
    std::size_t total VELMORAK_GUARDED_BY(mutex) = 0;
};

}  // namespace velmorak::root
