#include "files/FileAhead.h"

#include <utility>

namespace velmorak {

void FileAhead::open() {
    const MutexLock lock(mutex);
    if (state == State::Waiting) {
        openUnlocked();
    }
}

std::unique_ptr<TableReader> FileAhead::take() {
    const MutexLock lock(mutex);
    if (state == State::Waiting) {
        openUnlocked();
    }
    while (state == State::Opening) {
        change.wait(mutex);
    }
    if (error) {
        std::rethrow_exception(error);
    }
    return std::move(reader);
}

void FileAhead::cancel() {
    const MutexLock lock(mutex);
    while (state == State::Opening) {
        change.wait(mutex);
    }
    state = State::Ended;
    reader.reset();
}

/// Releases the mutex while it opens the file.
void FileAhead::openUnlocked() {
    state = State::Opening;
    mutex.unlock();
    std::unique_ptr<TableReader> opened;
    std::exception_ptr thrown;
    try {
        opened = opener();
    } catch (...) {
        thrown = std::current_exception();
    }
    mutex.lock();
    reader = std::move(opened);
    error = thrown;
    state = State::Ended;
    change.notifyAll();
}

}  // namespace velmorak
