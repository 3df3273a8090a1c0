#include "PointerTest.h"

#include <gtkmm/button.h>

#include <cstdlib>
#include <thread>

namespace {

using ::testing::ElementsAre;

// A library that takes long to end a run: the window waits, and serves nobody.
class Waiting : public PointerTest {
protected:
    Waiting() { show("run deaf\n"); }

    void start() {
        const std::size_t before = recording::callsOf("Run").size();
        click(window->startButton);
        ASSERT_TRUE(pumpUntil([before] { return recording::callsOf("Run").size() > before; }));
    }
};

TEST_F(Waiting, asksOnceAndForgetsTheClicksThatWereMadeMeanwhile) {
    start();
    recording::forgetCalls();
    // The pointer stands on the button; nobody but this thread acts while the window waits.
    std::thread impatient([] {
        while (recording::callsOf("Stop").empty()) {
            std::this_thread::yield();
        }
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
