#pragma once

#include <velmorak/Mutex.h>
#include <velmorak/Tasks.h>

#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

namespace velmorak {

/// Something that is made before it is needed, by whichever thread comes first.
/// Threads: make may be called by any, take and cancel by one.
template <typename Product>
class Ahead {
public:
    /// Lets another thread of the run begin as soon as one is free.
    static std::shared_ptr<Ahead> begin(std::function<Product()> maker) {
        auto ahead = std::make_shared<Ahead>(std::move(maker));
        spawnTask([ahead] { ahead->make(); });
        return ahead;
    }

    explicit Ahead(std::function<Product()> maker) : maker(std::move(maker)) {}

    /// Makes the product, unless that has begun.
    void make() VELMORAK_EXCLUDES(mutex) {
        const MutexLock lock(mutex);
        if (state == State::Waiting) {
            makeUnlocked();
        }
    }

    /// Makes the product, or waits for the thread that does. May be called once.
    /// @throws what the maker threw.
    Product take() VELMORAK_EXCLUDES(mutex) {
        const MutexLock lock(mutex);
        if (state == State::Waiting) {
            makeUnlocked();
        }
        wait();
        if (error) {
            std::rethrow_exception(error);
        }
        return std::move(*product);
    }

    /// Destroys the product, and waits for a thread that is making it.
    void cancel() VELMORAK_EXCLUDES(mutex) {
        const MutexLock lock(mutex);
        wait();
        state = State::Ended;
        product.reset();
    }

private:
    enum class State { Waiting, Making, Ended };

    void wait() VELMORAK_REQUIRES(mutex) {
        while (state == State::Making) {
            change.wait(mutex);
        }
    }

    /// Releases the mutex meanwhile.
    void makeUnlocked() VELMORAK_REQUIRES(mutex) {
        state = State::Making;
        mutex.unlock();
        std::optional<Product> made;
        std::exception_ptr thrown;
        try {
            made.emplace(maker());
        } catch (...) {
            thrown = std::current_exception();
        }
        mutex.lock();
        product = std::move(made);
        error = thrown;
        state = State::Ended;
        change.notifyAll();
    }

    const std::function<Product()> maker;
    Mutex mutex;
    ConditionVariable change;
    State state VELMORAK_GUARDED_BY(mutex) = State::Waiting;
    std::optional<Product> product VELMORAK_GUARDED_BY(mutex);
    std::exception_ptr error VELMORAK_GUARDED_BY(mutex);
};

}  // namespace velmorak
