#pragma once

#include <velmorak/Mutex.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <future>
#include <list>
#include <memory>
#include <utility>

namespace velmorak::columnar {

/// Keeps the decoded parts of a file, such as pages, until all of their rows have been used, so that a part that
/// several chunks need is decoded once. If more parts than a limit are in use, those used least recently go first.
/// Threads: any; if several request the same part, one of them loads it and the others wait.
template <typename Part>
class PartCache {
public:
    using Key = std::array<std::uint64_t, 3>;
    using PartPtr = std::shared_ptr<const Part>;

    /// @param maxBytes of all parts; a Part has bytes().
    explicit PartCache(std::size_t maxBytes) : maxBytes(maxBytes) {}

    /// @param rows that the part has, and of them those that the caller uses now.
    /// @param load is called at most once while the part is kept; all threads that wait rethrow its exceptions.
    PartPtr get(const Key& key, std::uint64_t rows, std::uint64_t used, const std::function<Part()>& load) {
        if (used >= rows) {
            return std::make_shared<const Part>(load());
        }
        std::promise<PartPtr> promise;
        bool isMine = false;
        const std::shared_future<PartPtr> part = find(key, rows, used, promise, isMine);
        if (isMine) {
            fulfil(key, promise, load);
        }
        return part.get();
    }

private:
    struct Slot {
        Key key{};
        std::uint64_t rowsLeft = 0;
        std::size_t bytes = 0;
        std::shared_future<PartPtr> part;
    };

    std::shared_future<PartPtr> find(const Key& key, std::uint64_t rows, std::uint64_t used,
                                     std::promise<PartPtr>& promise, bool& isMine) {
        const MutexLock lock(mutex);
        auto slot = slots.begin();
        while (slot != slots.end() && slot->key != key) {
            ++slot;
        }
        isMine = slot == slots.end();
        if (isMine) {
            slots.push_front({key, rows, 0, promise.get_future().share()});
        } else {
            slots.splice(slots.begin(), slots, slot);
        }
        Slot& first = slots.front();
        std::shared_future<PartPtr> part = first.part;
        first.rowsLeft -= std::min(used, first.rowsLeft);
        if (first.rowsLeft == 0) {
            total -= first.bytes;
            slots.pop_front();
        }
        return part;
    }

    void fulfil(const Key& key, std::promise<PartPtr>& promise, const std::function<Part()>& load) {
        try {
            PartPtr part = std::make_shared<const Part>(load());
            const std::size_t bytes = part->bytes();
            promise.set_value(std::move(part));
            account(key, bytes);
        } catch (...) {
            promise.set_exception(std::current_exception());
        }
    }

    void account(const Key& key, std::size_t bytes) {
        const MutexLock lock(mutex);
        for (Slot& slot : slots) {
            if (slot.key == key && slot.bytes == 0) {
                slot.bytes = bytes;
                total += bytes;
            }
        }
        while (total > maxBytes && slots.size() > 1) {
            total -= slots.back().bytes;
            slots.pop_back();
        }
    }

    const std::size_t maxBytes;
    Mutex mutex;
    std::size_t total VELMORAK_GUARDED_BY(mutex) = 0;
    std::list<Slot> slots VELMORAK_GUARDED_BY(mutex);  ///< Most recently used first.
};

}  // namespace velmorak::columnar
