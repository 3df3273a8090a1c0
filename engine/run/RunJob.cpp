#include "run/RunJob.h"

#include "run/LastExit.h"

#include <utility>

namespace velmorak {
RunJob::RunJob(std::shared_ptr<Messages> messages, RunListener* listener)
    : messages(std::move(messages)), listener(listener), isListening(listener != nullptr) {}

void RunJob::askToEnd() {
    const std::scoped_lock lock(mutex);
    stopping = true;
    change.notify_all();
}

void RunJob::begin(std::function<void()> work) {
    ledger.emplace(pipeline);
    thread = std::thread([self = shared_from_this(), work = std::move(work)] {
        std::optional<NodeError> error;
        try {
            error = errorIn(work);
        } catch (const LeftBehind&) {
            return;
        }
        const std::scoped_lock lock(self->mutex);
        self->failure = std::move(error);
        self->isOver = true;
        self->change.notify_all();
    });
}

bool RunJob::wait(const Runner::Grace& grace) {
    const auto hasEnded = [this] { return isOver; };
    // If no kind is being called, the run is writing its own files, and complete results are worth the wait.
    constexpr int maxGraces = 10;
    std::unique_lock lock(mutex);
    change.wait(lock, [this] { return isOver || stopping; });
    for (int i = 0; i < maxGraces && !isOver; ++i) {
        grace(lock, change, hasEnded);
        if (!isOver && !ledger->underWay().empty()) {
            break;
        }
    }
    if (!isOver) {
        return false;
    }
    lock.unlock();
    thread.join();
    return true;
}

std::vector<std::size_t> RunJob::leaveBehind() {
    std::vector<std::size_t> unresponsive = ledger->underWay();
    ledger->leaveBehind();
    listener.close();
    messages->silence();
    thread.detach();  // It may never end.
    endWithoutDestructors();
    return unresponsive;
}

}  // namespace velmorak
