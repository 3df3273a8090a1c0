#pragma once

#include <velmorak/Mutex.h>

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <unordered_map>
#include <utility>

namespace velmorak::isolation {

/// What a helper process has made, by the numbers that the program knows it by.
/// Threads: any.
class Objects {
public:
    /// Numbers that the program has not chosen.
    std::uint64_t newNumber() {
        const MutexLock lock(mutex);
        return ++last;
    }
    template <typename Object>
    void put(std::uint64_t number, std::shared_ptr<Object> object) {
        const MutexLock lock(mutex);
        all[number] = std::const_pointer_cast<std::remove_const_t<Object>>(object);
    }
    /// @param Object that it was put as. @return null if there is none.
    template <typename Object>
    std::shared_ptr<Object> find(std::uint64_t number) {
        const MutexLock lock(mutex);
        const auto found = all.find(number);
        return found == all.end() ? nullptr : std::static_pointer_cast<Object>(found->second);
    }
    template <typename Object>
    std::shared_ptr<Object> at(std::uint64_t number) {
        std::shared_ptr<Object> object = find<Object>(number);
        if (!object) {
            throw std::runtime_error("a message between the program and a helper process is damaged");
        }
        return object;
    }
    /// @return the object, which is forgotten; null if there is none. It is destroyed outside of the lock.
    std::shared_ptr<void> take(std::uint64_t number) {
        const MutexLock lock(mutex);
        const auto found = all.find(number);
        if (found == all.end()) {
            return nullptr;
        }
        std::shared_ptr<void> object = std::move(found->second);
        all.erase(found);
        return object;
    }

private:
    Mutex mutex;
    std::unordered_map<std::uint64_t, std::shared_ptr<void>> all VELMORAK_GUARDED_BY(mutex);
    std::uint64_t last VELMORAK_GUARDED_BY(mutex) = std::uint64_t{1} << 63U;
};

}  // namespace velmorak::isolation
