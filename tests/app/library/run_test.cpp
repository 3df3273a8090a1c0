#include "LibraryTest.h"

#include <gtkmm/main.h>

#include <algorithm>
#include <chrono>
#include <iostream>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

/// The start button and a run that would take years.
class LongRun : public LibraryTest {
protected:
    class Window : public vkWindow {
    public:
        using vkWindow::startButton;
    };

    LongRun() {
        window.reset();
        put(folder / "long.zedra", R"({"zedra": 1, "plugins": [
            {"name": "Make", "kind": "RandomTable", "inputs": [{"name": "rows", "value": "9007199254740992"}]},
            {"name": "Fill", "kind": "Histogram1D", "inputs": [{"name": "table", "from": ["Make", "table"]},
                                                               {"name": "expression", "value": "x"}]}]})");
        editor = std::make_unique<Window>();
        editor->setManager(*manager);
        editor->open((folder / "long.zedra").string());
    }

    void click() { editor->startButton.clicked(); }
    bool isIdle() { return editor->startButton.get_label() == "Start" && !editor->startButton.get_active(); }
    void pump() {
        while (Gtk::Main::events_pending()) {
            Gtk::Main::iteration(false);
        }
    }

    std::unique_ptr<Window> editor;
};

TEST_F(LongRun, isEndedByAClickAtAnyMomentAfterItsStart) {
    for (int i = 0; i < 60; ++i) {
        const Clock::time_point begin = Clock::now();
        click();
        // From immediately after the start to well into the run.
        while (Clock::now() - begin < std::chrono::microseconds(i * i * 10)) {
            pump();
        }
        click();
        EXPECT_TRUE(isIdle()) << i;
    }
    pump();
    EXPECT_TRUE(isIdle());
}

TEST_F(LongRun, isEndedByResetToo) {
    click();
    const Clock::time_point begin = Clock::now();
    // A reset before the run has begun has no effect.
    while (!isIdle() && Clock::now() - begin < std::chrono::seconds(60)) {
        manager->Reset();
        pump();
    }
    EXPECT_TRUE(isIdle());
}

TEST_F(LongRun, isEndedByTheEndOfItsPluginsAndWindow) {
    click();
    manager->DeletePlugin(1);
    manager->DeletePlugin(0);
    pump();
    editor.reset();
    EXPECT_TRUE(manager->plugins.empty());
}

}  // namespace
