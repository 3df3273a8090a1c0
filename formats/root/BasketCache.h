#pragma once

#include "root/Basket.h"

#include <functional>
#include <future>
#include <list>
#include <memory>
#include <mutex>

namespace velmorak::root {

/// The baskets that were unpacked last: one that lies across the border of two chunks is not unpacked twice.
/// Threads: get may be called on several threads at once; of those that ask for the same basket, one loads it.
class BasketCache {
public:
    using BasketPtr = std::shared_ptr<const Basket>;

    /// @param key  of the basket: any address that is its own.
    /// @param load unpacks the basket; what it throws, all that wait for the basket throw.
    BasketPtr get(const void* key, const std::function<Basket()>& load);

private:
    struct Slot {
        const void* key = nullptr;
        std::shared_future<BasketPtr> basket;
    };

    std::mutex mutex;
    std::list<Slot> slots;  ///< The one used last in front.
};

}  // namespace velmorak::root
