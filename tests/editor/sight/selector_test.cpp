#include "PointerTest.h"
#include "Widgets.h"

#include <gdk/gdkkeysyms.h>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class KindSelector : public PointerTest {
protected:
    KindSelector() { show(); }

    void open() {
        click(window->kindSelector);
        ASSERT_TRUE(pumpUntil([this] { return window->kindSelector.property_popup_shown().get_value(); }));
    }

    /// Clicks on an entry of the open list; 0 is the heading.
    void choose(int entry) {
        Gtk::TreeView* list = nullptr;
        ASSERT_TRUE(pumpUntil([&list] {
            list = shownList();
            return list != nullptr;
        }));
        const Gtk::TreePath path(std::to_string(entry));
        Gdk::Rectangle cell;
        list->get_cell_area(path, *list->get_column(0), cell);
        moveTo(*list, cell.get_x() + 10, cell.get_y() + cell.get_height() / 2.0);
        ASSERT_EQ(std::system("xdotool click 1"), 0);
        pumpUntil([this] { return !window->kindSelector.property_popup_shown().get_value(); });
        pump();
    }

    static Gtk::TreeView* shownList() {
        for (Gtk::Window* shown : Gtk::Window::list_toplevels()) {
            if (shown->get_mapped() && shown->property_type().get_value() == Gtk::WINDOW_POPUP) {
                const auto lists = widgetsIn<Gtk::TreeView>(*shown);
                if (!lists.empty()) {
                    return lists.front();
                }
            }
        }
        return nullptr;
    }

    double scrolled() { return window->scroller.get_vadjustment()->get_value(); }
};

TEST_F(KindSelector, placesWhatIsChosenFromItsListAndGivesTheKeyboardToTheCanvas) {
    open();
    choose(2);
    EXPECT_THAT(recording::callsOf("CreatePlugin"), ElementsAre("CreatePlugin(1, Adder)"));
    EXPECT_EQ(window->kindSelector.get_active_row_number(), 0);
    EXPECT_EQ(window->get_focus(), &window->canvas);
}

TEST_F(KindSelector, isDeafToTheWheel) {
    for (const int wheel : {5, 5, 4}) {
        click(window->kindSelector, wheel);
    }
    catchUp();
    EXPECT_THAT(recording::callsOf("CreatePlugin"), IsEmpty());
}

TEST_F(KindSelector, placesNothingByTheArrowKeysButOpensItsList) {
    window->kindSelector.child_focus(Gtk::DIR_TAB_FORWARD);
    pressKey(GDK_KEY_Down);
    EXPECT_TRUE(window->kindSelector.property_popup_shown().get_value());
    EXPECT_THAT(recording::callsOf("CreatePlugin"), IsEmpty());
    window->kindSelector.popdown();
}

TEST_F(KindSelector, bringsANewBoxIntoView) {
    for (const double scale : {0.5, 1.0, 1.7}) {
        window->canvas.set_scale(scale);
        window->scroller.get_vadjustment()->set_value(0);
        window->scroller.get_hadjustment()->set_value(700);
        window->kindSelector.set_active(1);
        pump();
        const Goocanvas::Bounds bounds = node(manager->plugins.back()->name).box->get_bounds();
        double x1 = bounds.get_x1();
        double y1 = bounds.get_y1();
        double x2 = bounds.get_x2();
        double y2 = bounds.get_y2();
        window->canvas.convert_to_pixels(x1, y1);
        window->canvas.convert_to_pixels(x2, y2);
        EXPECT_GE(y1, scrolled()) << scale;
        EXPECT_LE(y2, scrolled() + window->scroller.get_vadjustment()->get_page_size()) << scale;
        EXPECT_GE(x1, window->scroller.get_hadjustment()->get_value()) << scale;
        EXPECT_LE(x2, window->scroller.get_hadjustment()->get_value() + 1000) << scale;
    }
}

class CanvasKeys : public KindSelector {
protected:
    CanvasKeys() {
        window->kindSelector.set_active(1);
        pump();
        recording::forgetCalls();
    }
};

TEST_F(CanvasKeys, scrollTheCanvasAndNeverLeaveIt) {
    window->scroller.get_vadjustment()->set_value(0);
    pressKey(GDK_KEY_Down);
    EXPECT_EQ(scrolled(), window->scroller.get_vadjustment()->get_step_increment());
    pressKey(GDK_KEY_Page_Down);
    const double far = scrolled();
    EXPECT_GT(far, 200);
    pressKey(GDK_KEY_Up);
    EXPECT_LT(scrolled(), far);
    pressKey(GDK_KEY_Page_Up);
    EXPECT_EQ(scrolled(), 0);
    pressKey(GDK_KEY_Right);
    EXPECT_GT(window->scroller.get_hadjustment()->get_value(), 0);
    pressKey(GDK_KEY_Left);
    EXPECT_EQ(window->scroller.get_hadjustment()->get_value(), 0);
    EXPECT_EQ(window->get_focus(), &window->canvas);
}

TEST_F(CanvasKeys, afterAnArrowReachNoButton) {
    for (const int arrow : {GDK_KEY_Down, GDK_KEY_Up, GDK_KEY_Left, GDK_KEY_Right, GDK_KEY_Page_Down}) {
        pressKey(static_cast<guint>(arrow));
        pressKey(GDK_KEY_Return);
        pressKey(GDK_KEY_space);
    }
    EXPECT_THAT(recording::edits(), IsEmpty());
}

}  // namespace
