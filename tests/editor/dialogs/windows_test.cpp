#include "VariablesTest.h"

#include <malloc.h>

#include <cstdlib>
#include <random>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// A dialog whose plug-in has been deleted.
class StaleDialog : public VariablesTest {
protected:
    void pressEverything(varWindow& dialog) {
        recording::forgetCalls();
        entry(dialog, 0).set_text("Other");
        entry(dialog, 1).set_text("77");
        for (std::size_t row = 0; row < column(dialog, 2).size(); ++row) {
            refresh(dialog, row).clicked();
        }
        press(dialog, "Apply");
        press(dialog, "OK");
        EXPECT_THAT(openDialogs(), IsEmpty());
    }
};

TEST_F(StaleDialog, ofADeletedPluginChangesNothing) {
    varWindow& dialog = openNew("Adder");
    act("Del");
    pressEverything(dialog);
    EXPECT_THAT(recording::calls(), IsEmpty());
}

TEST_F(StaleDialog, ofADeletedPluginCanBeCancelled) {
    varWindow& dialog = openNew("Adder");
    act("Del");
    press(dialog, "Cancel");
    EXPECT_THAT(openDialogs(), IsEmpty());
}

TEST_F(StaleDialog, doesNotReachANewPluginOfTheSameName) {
    varWindow& dialog = openNew("Adder");
    act("Del");
    add("Adder");
    pressEverything(dialog);
    EXPECT_THAT(recording::calls(), IsEmpty());
}

TEST_F(StaleDialog, ofAReplacedDocumentChangesNothing) {
    window->open("/x/other.zedra");
    varWindow& dialog = openFor("Alone");
    Answers answers;
    answers.question("Remove existing plugins?\n(Continuing without removal experimental)", Gtk::RESPONSE_YES);
    window->checkOpen("/x/other.zedra");
    pressEverything(dialog);
    EXPECT_THAT(recording::calls(), IsEmpty());
}

TEST_F(StaleDialog, ofAClosedWindowChangesNothing) {
    varWindow& dialog = openNew("Adder");
    closeWindow();
    pressEverything(dialog);
    EXPECT_THAT(recording::calls(), IsEmpty());
}

TEST_F(StaleDialog, afterADocumentWasAddedStillReachesItsPlugin) {
    varWindow& dialog = openNew("Adder");
    Answers answers;
    answers.question("Remove existing plugins?\n(Continuing without removal experimental)", Gtk::RESPONSE_NO);
    window->checkOpen("/x/chain.zedra");
    recording::forgetCalls();
    entry(dialog, 1).set_text("77");
    press(dialog, "OK");
    EXPECT_THAT(recording::edits(), ElementsAre("SetInputValue(0, 0, 77)"));
    EXPECT_TRUE(node("Adder").changed);
}

// Clicks with the real pointer, which delete a dialog, or rows, while their button is being released.
class RealClicks : public VariablesTest {
protected:
    static void click(Gtk::Widget& target) {
        pumpUntil([&target] { return target.get_mapped() && target.get_allocated_width() > 1; });
        int x = 0;
        int y = 0;
        const Gtk::Allocation place = target.get_allocation();
        target.get_toplevel()->get_window()->get_origin(x, y);
        x += place.get_x() + place.get_width() / 2;
        y += place.get_y() + place.get_height() / 2;
        pump();
        const std::string command =
            "xdotool mousemove " + std::to_string(x) + ' ' + std::to_string(y) + " sleep 0.05 click 1";
        ASSERT_EQ(std::system(command.c_str()), 0);
    }
};

TEST_F(RealClicks, onRefreshAndApplyAndOk) {
    varWindow& dialog = openNew("Adder");
    entry(dialog, 1).set_text("5");
    click(refresh(dialog, 1));
    EXPECT_TRUE(pumpUntil([this] { return object("Adder").Inputs()[0].value == "5"; }));
    entry(dialog, 2).set_text("6");
    click(buttonIn(dialog, "Apply"));
    EXPECT_TRUE(pumpUntil([this] { return object("Adder").Inputs()[1].value == "6"; }));
    click(buttonIn(dialog, "OK"));
    EXPECT_TRUE(pumpUntil([] { return openDialogs().empty(); }));
}

// All windows, opened and closed in random order.
class ManyWindows : public VariablesTest {
protected:
    void openOrCloseAny() {
        constexpr std::size_t maxDialogs = 8;  // open at once
        switch (openDialogs().size() < maxDialogs ? dice(6) : 5) {
            case 0:
            case 1:
                window->selectedItem = node(dice(2) == 0 ? "Adder" : "Note").box;
                act("Var");
                break;
            case 2:
                act("plcoll");
                break;
            case 3:
                act("Examples");
                break;
            case 4:
                closeByManager(dice(2) == 0 ? static_cast<Gtk::Window&>(window->pluginWindow) : window->exampleWindow);
                break;
            default:
                useDialog();
        }
        pump();
    }

    void useDialog() {
        const auto dialogs = openDialogs();
        if (dialogs.empty()) {
            return;
        }
        varWindow& dialog = *dialogs[dice(dialogs.size())];
        entry(dialog, column(dialog, 1).size() - 1).set_text(dialog.get_title() == "Note Variables" ? "Note" : "3");
        press(dialog, std::vector<std::string>{"OK", "Apply", "Cancel"}[dice(3)]);
    }

    void closeAll() {
        for (varWindow* dialog : openDialogs()) {
            press(*dialog, "Cancel");
        }
        window->pluginWindow.hide();
        window->exampleWindow.hide();
        pump();
    }

    std::size_t dice(std::size_t sides) { return std::uniform_int_distribution<std::size_t>(0, sides - 1)(generator); }

    std::mt19937 generator{4711};
};

TEST_F(ManyWindows, openedAndClosedAThousandTimesDoNotGrow) {
    add("Adder");
    add("Note");
    const auto rounds = [this](int count) {
        for (int i = 0; i < count; ++i) {
            openOrCloseAny();
            recording::forgetCalls();
        }
        closeAll();
        return mallinfo2().uordblks;
    };
    const std::size_t windows = Gtk::Window::list_toplevels().size();
    const auto afterHundred = rounds(100);
    const auto afterThousand = rounds(900);
    EXPECT_EQ(Gtk::Window::list_toplevels().size(), windows);
    RecordProperty("growth", std::to_string(afterThousand) + " from " + std::to_string(afterHundred));
    EXPECT_LT(afterThousand, afterHundred + 200'000);
}

}  // namespace
