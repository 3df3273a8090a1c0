#pragma once

#include <velmorak/Kind.h>
#include <velmorak/Mutex.h>

#include <exception>
#include <functional>
#include <memory>

namespace velmorak {

/// A file that is opened before it is needed, by whichever thread comes first.
/// Threads: open may be called by any, take and cancel by one.
class FileAhead {
public:
    explicit FileAhead(std::function<std::unique_ptr<TableReader>()> opener) : opener(std::move(opener)) {}

    /// Opens the file, unless that has begun.
    void open();
    /// Opens the file, or waits until it is open.
    /// @return its reader. @throws what opening threw.
    std::unique_ptr<TableReader> take();
    /// Does not return while the file is being opened, and closes it.
    void cancel();

private:
    enum class State { Waiting, Opening, Ended };

    void openUnlocked() VELMORAK_REQUIRES(mutex);

    const std::function<std::unique_ptr<TableReader>()> opener;
    Mutex mutex;
    ConditionVariable change;
    State state VELMORAK_GUARDED_BY(mutex) = State::Waiting;
    std::unique_ptr<TableReader> reader VELMORAK_GUARDED_BY(mutex);
    std::exception_ptr error VELMORAK_GUARDED_BY(mutex);
};

}  // namespace velmorak
