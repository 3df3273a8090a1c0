#pragma once

#include "Process.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

/// A place and an extent on the screen, in pixels.
struct ScreenArea {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    bool operator==(const ScreenArea&) const = default;
};

/// A screen of its own (Xvfb) with a window manager (openbox), and hands that act on it (xdotool).
class Desktop {
public:
    Desktop();

    const std::string& display() const { return displayName; }
    /// Environment for a program that is to appear on this screen.
    Process::Setting setting(const std::filesystem::path& folder) const;

    /// Runs xdotool with these words. @return what it printed, without the last line end.
    std::string act(const std::vector<std::string>& words) const;
    void pressKeys(const std::vector<std::string>& keys) const;
    void click(int x, int y, int button = 1) const;

    /// Waits for a shown window of that process. @return its number, empty when none came.
    std::string windowOf(const Process& program) const;
    /// Waits until the window stands still in its place and has the keyboard. @return false when it does not come so
    /// far.
    bool activate(const std::string& window) const;
    ScreenArea areaOf(const std::string& window) const;

    /// Writes the whole screen as a picture.
    void screenshot(const std::filesystem::path& file) const;

private:
    std::string displayName;
    std::unique_ptr<Process> server;
    std::unique_ptr<Process> manager;
};
