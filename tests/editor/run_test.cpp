#include "EditorTest.h"

using ::testing::ElementsAre;

namespace {

class Run : public EditorTest {
protected:
    Run() { restart(script() + "run blocks\n"); }

    void start() {
        window->startButton.clicked();
        ASSERT_TRUE(pumpUntil([] { return recording::isRunning(); }));
    }

    bool isIdle() {
        return window->startButton.get_label() == "Start" && !window->startButton.get_active() && !window->worker;
    }
};

}  // namespace

TEST_F(Run, goesOnInAWorkerWhileTheButtonSaysStop) {
    start();
    EXPECT_THAT(recording::edits(), ElementsAre("Run() [worker]"));
    EXPECT_EQ(window->startButton.get_label(), "Stop");
    EXPECT_TRUE(window->startButton.get_active());
    EXPECT_NE(window->worker, nullptr);
}

TEST_F(Run, endsByItselfAndStopIsCalledOnceMore) {
    start();
    recording::letRunEnd();
    EXPECT_TRUE(pumpUntil([this] { return isIdle(); }));
    EXPECT_THAT(recording::edits(), ElementsAre("Run() [worker]", "Run has ended() [worker]", "Stop()"));
}

TEST_F(Run, isStoppedByASecondClick) {
    start();
    window->startButton.clicked();
    EXPECT_TRUE(isIdle());
    const std::vector<std::string> calls = {"Run() [worker]", "Stop()", "Run has ended() [worker]"};
    EXPECT_EQ(recording::edits(), calls);
    pump();  // delivers the worker's signal
    EXPECT_TRUE(isIdle());
    EXPECT_EQ(recording::edits(), calls);
}

TEST_F(Run, theSecondEndCallsTheEndHandlerTwice) {
    start();
    recording::letRunEnd();
    ASSERT_TRUE(pumpUntil([this] { return isIdle(); }));
    start();
    recording::forgetCalls();
    recording::letRunEnd();
    ASSERT_TRUE(pumpUntil([this] { return isIdle(); }));
    pump();
    // Each call that finds the button pressed in would stop once more; the second one finds it released.
    EXPECT_THAT(recording::edits(), ElementsAre("Run has ended() [worker]", "Stop()"));
    EXPECT_TRUE(isIdle());
}

TEST_F(Run, canBeStartedAgainAfterItWasStopped) {
    for (int i = 0; i < 5; ++i) {
        start();
        window->startButton.clicked();
        pump();
        EXPECT_TRUE(isIdle());
    }
    EXPECT_EQ(recording::callsOf("Run").size(), 5U);
}

TEST_F(Run, isNotWaitedForWhenTheSignalOfTheOneBeforeComes) {
    start();
    window->startButton.clicked();
    window->startButton.clicked();
    pump();  // delivers the first run's signal
    EXPECT_EQ(window->startButton.get_label(), "Stop");
    EXPECT_TRUE(window->startButton.get_active());
    window->startButton.clicked();
    EXPECT_TRUE(isIdle());
    pump();
    EXPECT_TRUE(isIdle());
}

TEST_F(Run, isStoppedBeforeTheLibraryHasBegunIt) {
    for (int i = 0; i < 3; ++i) {
        window->startButton.clicked();
        window->startButton.clicked();
        EXPECT_TRUE(isIdle());
    }
    EXPECT_EQ(recording::callsOf("Run").size(), 3U);
    EXPECT_EQ(recording::callsOf("Stop").size(), 3U);
}

TEST_F(Run, isStartedBySetRunAsByAClick) {
    window->setRun();
    EXPECT_TRUE(pumpUntil([] { return recording::isRunning(); }));
    EXPECT_TRUE(window->startButton.get_active());
    EXPECT_EQ(window->startButton.get_label(), "Stop");
}

TEST_F(Run, setRunDuringARunStopsIt) {
    start();
    window->setRun();
    EXPECT_TRUE(isIdle());
}

TEST_F(Run, resetCallsResetAndNothingElse) {
    window->resetButton.clicked();
    EXPECT_THAT(recording::calls(), ElementsAre("Reset()"));
}

TEST_F(Run, resetDuringARunDoesNotWait) {
    start();
    window->resetButton.clicked();
    EXPECT_TRUE(recording::isRunning());
    EXPECT_THAT(recording::edits(), ElementsAre("Run() [worker]", "Reset()"));
}

TEST_F(Run, disablesNothing) {
    start();
    for (const Gtk::Widget* widget : std::vector<Gtk::Widget*>{
             &window->startButton, &window->resetButton, &window->kindSelector, &window->canvas, window->menuBar}) {
        EXPECT_TRUE(widget->is_sensitive());
    }
    for (const auto& action : window->actionGroup->get_actions()) {
        EXPECT_TRUE(action->is_sensitive()) << action->get_name();
    }
}

TEST_F(Run, editsGoThroughWhileItGoesOn) {
    start();
    add("Adder");
    window->pldelete("Adder");
    EXPECT_TRUE(recording::isRunning());
    EXPECT_THAT(recording::callsOf("DeletePlugin"), ElementsAre("DeletePlugin(0)"));
}

TEST_F(Run, theWindowStopsItAndWaitsBeforeItGoes) {
    start();
    window.reset();
    EXPECT_FALSE(recording::isRunning());
    EXPECT_THAT(recording::edits(), ElementsAre("Run() [worker]", "Stop()", "Run has ended() [worker]"));
}

TEST_F(Run, theWindowCallsNothingWhenItGoesWithoutARun) {
    window->open("chain.zedra");
    recording::forgetCalls();
    window.reset();
    EXPECT_THAT(recording::calls(), ElementsAre());
}
