#include "StopOnSignal.h"

#include "Options.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <string_view>
#include <utility>

namespace {

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

/// Ends the wait for the other signals; nobody else sends it to this program.
constexpr int wakeUp = SIGUSR1;

sigset_t heldSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, wakeUp);
    return signals;
}

/// @return the signal that came, or 0 when none did in that time.
int waitFor(Seconds time) {
    const sigset_t signals = heldSignals();
    const auto nanoseconds = std::chrono::duration_cast<std::chrono::nanoseconds>(time).count();
    constexpr long perSecond = 1'000'000'000;
    const timespec limit{nanoseconds / perSecond, nanoseconds % perSecond};
    return std::max(0, sigtimedwait(&signals, nullptr, &limit));
}

[[noreturn]] void endUnstarted() {
    constexpr std::string_view sentence = "velmorak-run: stopped before the run began\n";
    static_cast<void>(write(STDERR_FILENO, sentence.data(), sentence.size()) < 0);
    _exit(WasStopped);
}

}  // namespace

void StopOnSignal::holdSignals() {
    const sigset_t signals = heldSignals();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

StopOnSignal::StopOnSignal(double timeoutSeconds) : timeoutSeconds(timeoutSeconds), watcher([this] { watch(); }) {}

StopOnSignal::~StopOnSignal() {
    isOver = true;
    pthread_kill(watcher.native_handle(), wakeUp);
    watcher.join();
}

StopOnSignal::Stoppable::Stoppable(StopOnSignal& signals, std::function<void()> stop) : signals(signals) {
    const velmorak::MutexLock lock(signals.mutex);
    signals.stop = std::move(stop);
}

StopOnSignal::Stoppable::~Stoppable() {
    const velmorak::MutexLock lock(signals.mutex);
    signals.stop = nullptr;
}

/// Before the run nothing has been written: the program may end while it reads a document.
void StopOnSignal::callStop() {
    const velmorak::MutexLock lock(mutex);
    if (!stop && !asked) {
        endUnstarted();
    }
    asked = true;
    if (stop) {
        stop();
    }
}

void StopOnSignal::watch() {
    constexpr Seconds longWait{3600.0};
    const Clock::time_point begin = Clock::now();
    while (!isOver) {
        const Seconds passed = Clock::now() - begin;
        const Seconds left = timeoutSeconds > 0.0 ? Seconds(timeoutSeconds - passed.count()) : longWait;
        const int signal = left.count() > 0.0 ? waitFor(std::min(left, longWait)) : 0;
        const bool isLate = timeoutSeconds > 0.0 && Clock::now() - begin >= Seconds(timeoutSeconds);
        if (signal == SIGINT || signal == SIGTERM || isLate) {
            stopUntilOver(signal != 0);
            return;
        }
    }
}

void StopOnSignal::stopUntilOver(bool isSignalled) {
    constexpr Seconds pause{0.02};
    while (!isOver) {
        callStop();
        const int signal = waitFor(pause);
        if (signal != SIGINT && signal != SIGTERM) {
            continue;
        }
        if (isSignalled) {
            _exit(WasStopped);
        }
        isSignalled = true;
    }
}
