#include "Messages.h"

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
    const std::scoped_lock lock(mutex);
    erase();
    stream << text + "\n" << std::flush;
}

void Messages::beginProgress() {
    const std::scoped_lock lock(mutex);
    lastShown = clock();
}

bool Messages::isProgressDue() {
    const std::scoped_lock lock(mutex);
    const auto passed = clock() - lastShown;
    return isTerminal ? passed >= terminalPause : passed >= plainPause;
}

void Messages::showProgress(const std::string& text) {
    const std::scoped_lock lock(mutex);
    lastShown = clock();
    erase();
    stream << (isTerminal ? text : text + "\n") << std::flush;
    isShown = isTerminal;
}

void Messages::endProgress() {
    const std::scoped_lock lock(mutex);
    erase();
    stream << std::flush;
}

void Messages::erase() {
    if (isShown) {
        stream << "\r\x1b[K";
        isShown = false;
    }
}

}  // namespace velmorak
