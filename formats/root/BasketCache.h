#pragma once

#include "root/Basket.h"

#include <velmorak/Mutex.h>

#include <functional>
#include <future>
#include <list>
#include <memory>

namespace velmorak::root {

/// Caches the baskets decompressed last, so that one that spans two chunks is decompressed once.
/// Threads: get may be called on several threads at once; if several request the same basket, one of them loads it.
class BasketCache {
public:
    using BasketPtr = std::shared_ptr<const Basket>;

    /// @param key  any address that is unique to the basket.
    /// @param load decompresses the basket; all threads that wait for the basket rethrow its exceptions.
    BasketPtr get(const void* key, const std::function<Basket()>& load);

private:
    struct Slot {
        const void* key = nullptr;
        std::shared_future<BasketPtr> basket;
    };

    Mutex mutex;
    std::list<Slot> slots VELMORAK_GUARDED_BY(mutex);  ///< Most recently used first.
};

}  // namespace velmorak::root
