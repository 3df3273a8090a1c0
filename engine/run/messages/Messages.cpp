#include "run/messages/Messages.h"

#include "run/messages/LongLine.h"
#include "run/messages/Visible.h"

#include <ostream>
#include <utility>

namespace velmorak {
namespace {

constexpr std::chrono::milliseconds terminalPause{100};
constexpr std::chrono::seconds plainPause{5};

}  // namespace

Messages::Messages(std::ostream& stream, bool isTerminal, Clock clock)
    : stream(stream), isTerminal(isTerminal), clock(std::move(clock)), lastShown(this->clock()) {}

void Messages::line(const std::string& text) {
    write(withoutLongLines(visibleMessage(text)) + "\n");
}

void Messages::lines(const std::string& title, const std::string& text) {
    const bool endsLine = text.ends_with('\n');
    write(visible(title) + "\n" + visibleLines(text) + (endsLine ? "" : "\n"));
}

void Messages::write(const std::string& shown) {
    const MutexLock lock(mutex);
    if (isSilent) {
        return;
    }
    erase();
    stream << shown << std::flush;
    if (also) {
        also(shown.substr(0, shown.size() - 1));
    }
}

void Messages::setObserver(std::function<void(const std::string&)> observer) {
    const MutexLock lock(mutex);
    also = std::move(observer);
}

void Messages::beginProgress() {
    const MutexLock lock(mutex);
    lastShown = clock();
}

bool Messages::isProgressDue() {
    const MutexLock lock(mutex);
    const auto passed = clock() - lastShown;
    return isTerminal ? passed >= terminalPause : passed >= plainPause;
}

void Messages::showProgress(const std::string& text) {
    const MutexLock lock(mutex);
    if (isSilent) {
        return;
    }
    lastShown = clock();
    erase();
    stream << visible(text) << (isTerminal ? "" : "\n") << std::flush;
    isShown = isTerminal;
}

void Messages::endProgress() {
    const MutexLock lock(mutex);
    if (!isSilent) {
        erase();
        stream << std::flush;
    }
}

void Messages::silence() {
    const MutexLock lock(mutex);
    erase();
    isSilent = true;
}

void Messages::erase() {
    if (isShown) {
        stream << "\r\x1b[K";
        isShown = false;
    }
}

}  // namespace velmorak
