#include "PointerTest.h"

#include <gtkmm/button.h>

#include <chrono>
#include <cstdlib>
#include <thread>

namespace {

using ::testing::ElementsAre;

// A library that takes long to end a run: the window waits and handles no events.
class WaitingWindow : public PointerTest {
protected:
    WaitingWindow() { show("run deaf\n"); }

    void start() {
        const std::size_t before = recording::callsOf("Run").size();
        click(window->startButton);
        ASSERT_TRUE(pumpUntil([before] { return recording::callsOf("Run").size() > before; }));
    }
};

TEST_F(WaitingWindow, asksOnceAndForgetsTheClicksThatWereMadeMeanwhile) {
    start();
    recording::forgetCalls();
    // The pointer is on the button; only this thread acts while the window waits.
    std::thread impatient([] {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        while (recording::callsOf("Stop").empty() && std::chrono::steady_clock::now() < deadline) {
            std::this_thread::yield();
        }
        EXPECT_FALSE(recording::callsOf("Stop").empty()) << "the window has not called Stop within 60 s";
        EXPECT_EQ(std::system("xdotool click --repeat 5 --delay 120 1"), 0);
        recording::letRunEnd();
    });
    window->startButton.clicked();
    impatient.join();
    catchUp();
    EXPECT_THAT(recording::edits(), ElementsAre("Stop()", "Run has ended() [worker]", "Reset()"));
    EXPECT_FALSE(window->startButton.get_active());
    EXPECT_EQ(window->startButton.get_label(), "Start");
    start();
    recording::letRunEnd();
    EXPECT_TRUE(pumpUntil([this] { return !window->startButton.get_active(); }));
}

}  // namespace
