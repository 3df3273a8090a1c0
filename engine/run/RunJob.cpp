#include "run/RunJob.h"

#include "run/HelperKind.h"
#include "run/messages/LastExit.h"

#include <utility>

namespace velmorak {

RunJob::RunJob(std::shared_ptr<Messages> messages, RunListener* listener)
    : messages(std::move(messages)), announcement(Announcement::begin()), listener({listener, announcement.get()}) {
    if (announcement) {
        this->messages->setObserver(
            [target = announcement.get()](const std::string& line) { target->addMessage(line); });
    }
}

RunJob::~RunJob() {
    messages->setObserver({});
}

void RunJob::askToEnd() {
    const MutexLock lock(mutex);
    stopping = true;
    change.notifyAll();
}

void RunJob::begin(std::function<void()> work) {
    ledger.emplace(pipeline);
    thread = std::thread([self = shared_from_this(), work = std::move(work)] {
        std::optional<NodeError> error;
        try {
            error = errorIn(work);
        } catch (const RunAbandoned&) {
            return;
        }
        RunJob& job = *self;
        const MutexLock lock(job.mutex);
        job.failure = std::move(error);
        job.isOver = true;
        job.change.notifyAll();
    });
}

bool RunJob::wait(const Runner::Grace& grace) {
    if (!waitForEnd(grace)) {
        return false;
    }
    thread.join();
    return true;
}

bool RunJob::waitForEnd(const Runner::Grace& grace) {
    // If no kind is being called, the run is writing its own files, and complete results are worth the wait.
    constexpr int maxGraces = 10;
    const auto hasEnded = [this]() VELMORAK_NO_THREAD_SAFETY_ANALYSIS { return isOver; };  // Called with the mutex.
    const MutexLock lock(mutex);
    while (!isOver && !stopping) {
        change.wait(mutex);
    }
    for (int i = 0; i < maxGraces && !isOver; ++i) {
        grace(mutex, change, hasEnded);
        if (!isOver && !mayEnd(ledger->underWay())) {
            break;
        }
    }
    return isOver;
}

/// Ends helper processes that do not stop. @return whether no other kind is being called.
bool RunJob::mayEnd(const std::vector<std::size_t>& underWay) {
    bool isAnyHere = false;
    for (const std::size_t position : underWay) {
        const auto* const elsewhere = dynamic_cast<const HelperKind*>(pipeline.nodes[position].kind);
        isAnyHere = isAnyHere || elsewhere == nullptr;
        if (elsewhere) {
            elsewhere->endDeaf();
            hasEndedHelpers = true;
        }
    }
    return !isAnyHere;
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
