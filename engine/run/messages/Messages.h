#pragma once

#include <velmorak/Mutex.h>

#include <chrono>
#include <functional>
#include <iosfwd>
#include <string>

namespace velmorak {

/// Writes the messages of a run: whole lines, and a progress line at most ten times a second on a terminal, where it is
/// redrawn in place, and every five seconds elsewhere.
/// Threads: every operation may be called on any thread.
class Messages {
public:
    using Clock = std::function<std::chrono::steady_clock::time_point()>;

    Messages(std::ostream& stream, bool isTerminal, Clock clock = std::chrono::steady_clock::now);

    /// Escapes control characters.
    void line(const std::string& text);
    /// A title line, then the text, which may have several lines.
    void lines(const std::string& title, const std::string& text);
    /// Starts the interval before the first progress line, so that a short run shows none.
    void beginProgress();
    /// Lets the caller skip the work of composing a progress line that is not due.
    bool isProgressDue();
    void showProgress(const std::string& text);
    /// Erases the progress line on a terminal.
    void endProgress();

    /// Also gives each line, and each text as a whole, to this function; an empty one ends that.
    void setObserver(std::function<void(const std::string&)> observer);

    /// Ignores all later calls.
    void silence();

private:
    void write(const std::string& shown);
    void erase() VELMORAK_REQUIRES(mutex);

    std::ostream& stream VELMORAK_GUARDED_BY(mutex);
    bool isTerminal;
    Clock clock;
    Mutex mutex;
    std::chrono::steady_clock::time_point lastShown VELMORAK_GUARDED_BY(mutex);
    bool isShown VELMORAK_GUARDED_BY(mutex) = false;
    bool isSilent VELMORAK_GUARDED_BY(mutex) = false;
    std::function<void(const std::string&)> also VELMORAK_GUARDED_BY(mutex);
};

}  // namespace velmorak
