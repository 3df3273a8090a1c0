#include "StopOnSignal.h"

#include <chrono>
#include <csignal>
#include <utility>

namespace {

/// Ends the wait for the others; nobody else sends it to this program.
constexpr int wakeUp = SIGUSR1;

sigset_t heldSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, wakeUp);
    return signals;
}

}  // namespace

void StopOnSignal::holdSignals() {
    const sigset_t signals = heldSignals();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

StopOnSignal::StopOnSignal(std::function<void()> stop) : stop(std::move(stop)), watcher([this] { watch(); }) {}

StopOnSignal::~StopOnSignal() {
    {
        const std::scoped_lock lock(mutex);
        isOver = true;
    }
    over.notify_all();
    pthread_kill(watcher.native_handle(), wakeUp);
    watcher.join();
}

void StopOnSignal::watch() {
    const sigset_t signals = heldSignals();
    int signal = 0;
    if (sigwait(&signals, &signal) == 0 && signal != wakeUp) {
        asked = true;
        stopUntilOver();
    }
}

void StopOnSignal::stopUntilOver() {
    constexpr std::chrono::milliseconds pause{20};
    std::unique_lock lock(mutex);
    while (!isOver) {
        lock.unlock();
        stop();
        lock.lock();
        over.wait_for(lock, pause, [this] { return isOver; });
    }
}
