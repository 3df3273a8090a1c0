#pragma once

#include <functional>
#include <memory>
#include <string>

/// Shows notifications on the user's desktop, over the session's D-Bus. Without a desktop it does nothing.
/// Threads: every operation may be called on any thread.
class Notifier {
public:
    /// @param clicked called on a thread of the notifier.
    explicit Notifier(std::function<void()> clicked);
    ~Notifier();
    Notifier(const Notifier&) = delete;
    Notifier& operator=(const Notifier&) = delete;

    void show(const std::string& title, const std::string& sentence);

private:
    struct Desktop;
    std::unique_ptr<Desktop> desktop;  ///< Null without one.
};
