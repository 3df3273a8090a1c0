#include "Desktop.h"

#include <charconv>
#include <stdexcept>

namespace {

std::string run(const std::vector<std::string>& command, const std::string& display) {
    Process process(command, {.environment = {{"DISPLAY", display}}, .folder = {}});
    process.wait(20000);
    std::string text = process.output();
    while (!text.empty() && text.back() == '\n') {
        text.pop_back();
    }
    return text;
}

}  // namespace

Desktop::Desktop() {
    // The server chooses a free display number and prints it on the given descriptor, its standard output.
    server = std::make_unique<Process>(std::vector<std::string>{"Xvfb", "-displayfd", "1", "-screen", "0",
                                                                "1280x1200x24", "-nolisten", "tcp", "-noreset"});
    if (!waitFor([this] { return server->output().ends_with('\n'); })) {
        throw std::runtime_error("Xvfb did not start: " + server->errors());
    }
    displayName = ":" + server->output().substr(0, server->output().find('\n'));
    manager = std::make_unique<Process>(std::vector<std::string>{"openbox"},
                                        Process::Setting{.environment = {{"DISPLAY", displayName}}, .folder = {}});
    const bool isManaged = waitFor([this] {
        return run({"xprop", "-root", "_NET_SUPPORTING_WM_CHECK"}, displayName).find("window id") != std::string::npos;
    });
    if (!isManaged) {
        throw std::runtime_error("openbox did not start: " + manager->errors());
    }
}

Process::Setting Desktop::setting(const std::filesystem::path& folder) const {
    return {.environment = {{"DISPLAY", displayName},
                            {"WAYLAND_DISPLAY", ""},
                            {"NO_AT_BRIDGE", "1"},
                            {"GTK_OVERLAY_SCROLLING", "0"}},
            .folder = folder};
}

std::string Desktop::act(const std::vector<std::string>& words) const {
    std::vector<std::string> command{"xdotool"};
    command.insert(command.end(), words.begin(), words.end());
    return run(command, displayName);
}

void Desktop::pressKeys(const std::vector<std::string>& keys) const {
    for (const std::string& key : keys) {
        act({"key", "--delay", "50", key});
    }
}

void Desktop::click(int x, int y, int button) const {
    // No --sync: the server handles the requests in order, and waiting takes long if the pointer is already there.
    act({"mousemove", std::to_string(x), std::to_string(y), "click", std::to_string(button)});
}

std::string Desktop::windowOf(const Process& program) const {
    std::string window;
    waitFor([&] {
        const std::string found =
            act({"search", "--onlyvisible", "--all", "--pid", std::to_string(program.id()), "--class", "."});
        window = found.substr(0, found.find('\n'));
        return !window.empty();
    });
    return window;
}

bool Desktop::activate(const std::string& window) const {
    ScreenArea before;
    return waitFor([&] {
        act({"windowactivate", window});
        const ScreenArea now = areaOf(window);
        const bool isStill = now == before && now.width > 0;
        before = now;
        const bool isFramed =
            run({"xprop", "-id", window, "_NET_FRAME_EXTENTS"}, displayName).find('=') != std::string::npos;
        return isStill && isFramed && act({"getactivewindow"}) == window && act({"getwindowfocus"}) == window;
    });
}

ScreenArea Desktop::areaOf(const std::string& window) const {
    // Not with xdotool, which adds the window manager's frame twice.
    const std::string facts = run({"xwininfo", "-id", window}, displayName);
    const auto number = [&facts](const std::string& heading) {
        const std::size_t place = facts.find(heading);
        int value = 0;
        if (place != std::string::npos) {
            const std::size_t digits = facts.find_first_not_of(' ', place + heading.size());
            std::from_chars(facts.data() + digits, facts.data() + facts.size(), value);
        }
        return value;
    };
    return {number("Absolute upper-left X:"), number("Absolute upper-left Y:"), number("Width:"), number("Height:")};
}

void Desktop::screenshot(const std::filesystem::path& file) const {
    std::filesystem::create_directories(file.parent_path());
    run({"import", "-window", "root", "-depth", "8", file.string()}, displayName);
}
