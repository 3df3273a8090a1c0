#pragma once

#include "Process.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

/// A rectangle on the screen, in pixels.
struct ScreenArea {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    bool operator==(const ScreenArea&) const = default;
};

/// A private virtual screen (Xvfb) with a window manager (openbox), and real input events (xdotool).
class Desktop {
public:
    Desktop();

    const std::string& display() const { return displayName; }
    /// Environment that makes a program appear on this screen.
    Process::Setting setting(const std::filesystem::path& folder) const;

    /// Runs xdotool with these arguments. @return its output without the last line end.
    std::string act(const std::vector<std::string>& words) const;
    void pressKeys(const std::vector<std::string>& keys) const;
    void click(int x, int y, int button = 1) const;

    /// Waits for a visible window of that process. @return its number, empty if none appeared.
    std::string windowOf(const Process& program) const;
    /// Waits until the window no longer moves and has the keyboard focus. @return false if that does not happen.
    bool activate(const std::string& window) const;
    ScreenArea areaOf(const std::string& window) const;

    /// Saves a picture of the whole screen.
    void screenshot(const std::filesystem::path& file) const;

private:
    std::string displayName;
    std::unique_ptr<Process> server;
    std::unique_ptr<Process> manager;
};
