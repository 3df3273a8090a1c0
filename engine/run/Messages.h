#pragma once

#include <chrono>
#include <functional>
#include <iosfwd>
#include <mutex>
#include <string>

namespace velmorak {

/// What the user reads of a run: whole lines, and a line of progress that does not come too often. On a terminal the
/// line of progress is drawn again in its place; elsewhere it is a line like the others.
/// Threads: every operation may be called on any thread.
class Messages {
public:
    using Clock = std::function<std::chrono::steady_clock::time_point()>;

    Messages(std::ostream& stream, bool isTerminal, Clock clock = std::chrono::steady_clock::now);

    /// Control characters are written out.
    void line(const std::string& text);
    /// The text of one or more lines, behind a line of its own.
    void lines(const std::string& title, const std::string& text);
    /// Starts the time after which the first progress is shown, so that a short run shows none.
    void beginProgress();
    /// @return true when a line of progress is due; the caller then makes one for showProgress.
    bool isProgressDue();
    void showProgress(const std::string& text);
    /// Takes the line of progress off the terminal.
    void endProgress();

    /// Nothing more is written, whoever calls.
    void silence();

private:
    void write(const std::string& shown);
    void erase();

    std::ostream& stream;
    bool isTerminal;
    Clock clock;
    std::mutex mutex;
    std::chrono::steady_clock::time_point lastShown;
    bool isShown = false;
    bool isSilent = false;
};

}  // namespace velmorak
