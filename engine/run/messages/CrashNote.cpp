#include "run/messages/CrashNote.h"

#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <csignal>
#include <cstddef>
#include <cstring>
#include <utility>

namespace velmorak {
namespace {

struct CrashSignal {
    int number;
    const char* name;
};

constexpr std::array<CrashSignal, 5> crashSignals{{{SIGSEGV, "segmentation fault"},
                                                   {SIGBUS, "bus error"},
                                                   {SIGILL, "illegal instruction"},
                                                   {SIGFPE, "arithmetic error"},
                                                   {SIGABRT, "abort"}}};

/// Title for this thread. The handler must find it without a call that may allocate.
[[gnu::tls_model("initial-exec")]] thread_local const char* currentTitle = nullptr;

/// A stack for the handler, because an overflow of the thread's stack is one of the crashes.
class SpareStack {
public:
    SpareStack();
    ~SpareStack();
    SpareStack(const SpareStack&) = delete;
    SpareStack& operator=(const SpareStack&) = delete;

    /// Creates that of the thread on first use.
    void use() const {}

private:
    static constexpr std::size_t size = std::size_t{1} << 16;
    void* bytes = nullptr;
};

SpareStack::SpareStack() {
    stack_t present{};
    if (sigaltstack(nullptr, &present) != 0 || (present.ss_flags & SS_DISABLE) == 0) {
        return;  // Another handler is installed.
    }
    void* const memory = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) {
        return;
    }
    stack_t own{};
    own.ss_sp = memory;
    own.ss_size = size;
    if (sigaltstack(&own, nullptr) == 0) {
        bytes = memory;
    } else {
        munmap(memory, size);
    }
}

SpareStack::~SpareStack() {
    if (bytes) {
        stack_t none{};
        none.ss_flags = SS_DISABLE;
        sigaltstack(&none, nullptr);
        munmap(bytes, size);
    }
}

thread_local const SpareStack spareStack;

/// Calls async-signal-safe functions only.
void put(const char* text) {
    static_cast<void>(write(STDERR_FILENO, text, std::strlen(text)) < 0);
}

void putNote(int number) {
    if (!currentTitle) {
        return;
    }
    put("\n");
    put(currentTitle);
    put(" crashed (");
    for (const CrashSignal& each : crashSignals) {
        if (each.number == number) {
            put(each.name);
        }
    }
    put("); the program ends.\n");
}

/// Set by the first thread that crashes.
std::atomic_flag hasCrashed = ATOMIC_FLAG_INIT;
[[gnu::tls_model("initial-exec")]] thread_local bool isInHandler = false;

extern "C" void nameCrash(int number) {
    if (!std::exchange(isInHandler, true)) {
        if (hasCrashed.test_and_set()) {
            // Another thread crashed before, and ends the program when its note is written.
            for (;;) {
                pause();
            }
        }
        putNote(number);
    }
    // The signal stays blocked until this handler returns, and then ends the program.
    static_cast<void>(signal(number, SIG_DFL));
    raise(number);
}

}  // namespace

CrashNote::CrashNote(const char* title) : outer(currentTitle) {
    spareStack.use();
    currentTitle = title;
}

CrashNote::~CrashNote() {
    currentTitle = outer;
}

void nameCrashes() {
    for (const CrashSignal& each : crashSignals) {
        struct sigaction present {};
        if (sigaction(each.number, nullptr, &present) != 0 || (present.sa_flags & SA_SIGINFO) != 0 ||
            present.sa_handler != SIG_DFL) {
            continue;
        }
        struct sigaction naming {};
        naming.sa_handler = &nameCrash;
        naming.sa_flags = SA_ONSTACK;
        sigemptyset(&naming.sa_mask);
        sigaction(each.number, &naming, nullptr);
    }
}

}  // namespace velmorak
