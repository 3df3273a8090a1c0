/// velmorak_bench_button: how long after a click on the button, by an event of the X server, its label is back at
/// "Start", over a run that would not end by itself. Needs a screen and xdotool.
#include <QzManager.h>
#include <Row.h>
#include <vkWindow.h>

#include <glibmm/main.h>
#include <glibmm/spawn.h>
#include <gtkmm/main.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <random>
#include <stdexcept>

#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr int stops = 200;
constexpr double limitMs = 500;

class Window : public vkWindow {
public:
    using vkWindow::startButton;

    bool isIdle() { return startButton.get_label() == "Start" && !startButton.get_active(); }
};

double since(Clock::time_point begin) {
    return std::chrono::duration<double, std::milli>(Clock::now() - begin).count();
}

template <typename Condition>
void turnUntil(Condition isMet) {
    const Clock::time_point begin = Clock::now();
    // So that the loop wakes up also where nothing happens.
    sigc::connection clock = Glib::signal_timeout().connect([] { return true; }, 5);
    while (!isMet()) {
        if (since(begin) > 30000) {
            throw std::runtime_error("the button did not answer within 30 s");
        }
        Gtk::Main::iteration(true);
    }
    clock.disconnect();
}

/// Moves the pointer to the middle of the button and clicks, from another program.
void click(Window& window) {
    int left = 0;
    int top = 0;
    window.startButton.get_window()->get_origin(left, top);
    const Gtk::Allocation area = window.startButton.get_allocation();
    Glib::spawn_async(
        "",
        std::vector<std::string>{"xdotool", "mousemove", std::to_string(left + area.get_x() + area.get_width() / 2),
                                 std::to_string(top + area.get_y() + area.get_height() / 2), "click", "1"},
        Glib::SPAWN_SEARCH_PATH);
}

fs::path document(const fs::path& folder) {
    const fs::path file = folder / "long.zedra";
    std::ofstream(file) << R"({"zedra": 1, "plugins": [
        {"name": "Make", "kind": "RandomTable", "inputs": [{"name": "rows", "value": "9007199254740992"}]},
        {"name": "Fill", "kind": "Histogram1D", "inputs": [{"name": "table", "from": ["Make", "table"]},
                                                           {"name": "expression", "value": "x"}]}]})";
    return file;
}

/// @return the time of each stop from the click to the label, in ms, the start of the program that clicks included.
std::vector<double> stopTimes(Window& window) {
    std::mt19937 random(20261121);
    std::vector<double> times;
    for (int i = 0; i < stops; ++i) {
        click(window);
        turnUntil([&] { return !window.isIdle(); });
        const double wait = std::uniform_real_distribution<double>(0, 600)(random);
        const Clock::time_point begun = Clock::now();
        turnUntil([&] { return since(begun) > wait; });
        const Clock::time_point asked = Clock::now();
        click(window);
        turnUntil([&] { return window.isIdle(); });
        times.push_back(since(asked));
    }
    return times;
}

}  // namespace

int main(int argc, char** argv) {
    gdk_set_allowed_backends("x11");
    Gtk::Main toolkit(argc, argv);
    std::string name = (fs::temp_directory_path() / "velmorak-button-XXXXXX").string();
    const fs::path folder = mkdtemp(name.data());
    setenv("XDG_CACHE_HOME", folder.c_str(), 1);
    {
        QzManager manager("QzAnalysisFactory");
        Window window;
        window.setManager(manager);
        window.open(document(folder).string());
        window.show();
        turnUntil([&] { return window.startButton.get_mapped(); });
        std::vector<double> times = stopTimes(window);
        std::sort(times.begin(), times.end());
        velmorak::bench::printNotSlower("label back after a click, p99 of 200", "a limit", times[stops * 99 / 100],
                                        limitMs, 1.0);
    }
    fs::remove_all(folder);
    return 0;
}
