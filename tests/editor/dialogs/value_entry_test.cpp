#include "VariablesTest.h"

#include <atkmm/object.h>
#include <gdk/gdkkeysyms.h>
#include <gdkmm/display.h>
#include <gdkmm/monitor.h>
#include <gtkmm/entrycompletion.h>
#include <gtkmm/filechooserdialog.h>
#include <gtkmm/messagedialog.h>
#include <gtkmm/scrolledwindow.h>

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* scaleText = "How it is drawn; a < b.\nType: choice of linear, log, square root";

// The help that rows offer for their values.
class ValueEntries : public VariablesTest {
protected:
    varWindow& openWith(const std::string& value, const std::string& description) {
        const std::string name = add("Note").uniqueName;
        object(name).Inputs().push_back({"scale", description, value, nullptr, 0});
        recording::forgetCalls();
        varWindow& dialog = openFor(name);
        pumpUntil([&dialog] { return dialog.get_mapped() && entry(dialog, 1).get_mapped(); });
        return dialog;
    }

    static void pressKey(Gtk::Widget& target, guint key) {
        GdkEvent* event = gdk_event_new(GDK_KEY_PRESS);
        event->any.window = GDK_WINDOW(g_object_ref(target.get_toplevel()->get_window()->gobj()));
        event->key.keyval = key;
        gdk_event_set_device(event, gdk_seat_get_keyboard(gdk_display_get_default_seat(target.get_display()->gobj())));
        gtk_main_do_event(event);
        gdk_event_free(event);
    }

    static int textWidth(Gtk::Entry& shown) {
        int width = 0;
        int height = 0;
        shown.create_pango_layout(shown.get_text())->get_pixel_size(width, height);
        return width;
    }

    /// The texts in the open list below an entry.
    static std::vector<std::string> offered() {
        std::vector<std::string> texts;
        for (Gtk::Window* shown : Gtk::Window::list_toplevels()) {
            if (shown->get_mapped() && shown->property_type().get_value() == Gtk::WINDOW_POPUP) {
                for (const Gtk::TreeView* list : widgetsIn<Gtk::TreeView>(*shown)) {
                    for (const auto& row : list->get_model()->children()) {
                        Glib::ustring text;
                        row.get_value(0, text);
                        texts.push_back(text);
                    }
                }
            }
        }
        return texts;
    }

    static void focus(Gtk::Entry& shown) {
        shown.grab_focus();
        // Without a window manager, no window gets the keyboard focus.
        GdkEvent* event = gdk_event_new(GDK_FOCUS_CHANGE);
        event->any.window = GDK_WINDOW(g_object_ref(shown.get_toplevel()->get_window()->gobj()));
        event->focus_change.in = 1;
        gdk_event_set_device(event, gdk_seat_get_keyboard(gdk_display_get_default_seat(shown.get_display()->gobj())));
        gtk_main_do_event(event);
        gdk_event_free(event);
    }
};

TEST_F(ValueEntries, tellWhatTheInputIs) {
    EXPECT_EQ(entry(openWith("log", scaleText), 1).get_tooltip_text(), scaleText);
}

TEST_F(ValueEntries, areAsWideAsTheirValuesUpToSixtyCharacters) {
    varWindow& dialog = openWith("abs(eta) < 2.4 && pt > 20 && charge * other_charge < 0", "");
    Gtk::Entry& shown = entry(dialog, 1);
    EXPECT_GE(shown.get_allocated_width(), textWidth(shown));
    varWindow& longer = openWith(std::string(60, 'W') + std::string(5000, 'i'), "");
    EXPECT_EQ(entry(longer, 1).get_width_chars(), 60);
    varWindow& brief = openWith("1", "");
    EXPECT_EQ(entry(brief, 1).get_width_chars(), -1);
}

TEST_F(ValueEntries, sayWhatTheirRefreshButtonsDo) {
    varWindow& dialog = openWith("log", scaleText);
    const std::vector<std::string> purposes = {"Apply the new name", "Send scale to the library once more"};
    for (std::size_t row = 0; row < 2; ++row) {
        EXPECT_EQ(refresh(dialog, row).get_tooltip_text(), purposes[row]);
        EXPECT_EQ(refresh(dialog, row).get_accessible()->get_name(), purposes[row]);
    }
}

TEST_F(ValueEntries, ofAChoiceOfferAllChoicesByTheKeyDown) {
    varWindow& dialog = openWith("log", scaleText);
    focus(entry(dialog, 1));
    pressKey(dialog, GDK_KEY_Down);
    EXPECT_TRUE(pumpUntil([] { return !offered().empty(); }));
    EXPECT_THAT(offered(), ElementsAre("linear", "log", "square root"));
    EXPECT_EQ(entry(dialog, 1).get_text(), "log");
    pressKey(dialog, GDK_KEY_Down);
    pressKey(dialog, GDK_KEY_Return);
    EXPECT_EQ(entry(dialog, 1).get_text(), "linear");
    EXPECT_THAT(recording::edits(), IsEmpty());
}

TEST_F(ValueEntries, withoutChoicesOfferNothing) {
    EXPECT_FALSE(entry(openWith("1", "Number.\nType: number from 1 to 5"), 1).get_completion());
}

TEST_F(ValueEntries, ofAFileHaveAnIconThatChoosesOne) {
    put("data.csv", "x\n");
    Gtk::Entry& shown = entry(openWith("", "Table.\nType: file to read"), 1);
    ASSERT_EQ(shown.get_icon_name(Gtk::ENTRY_ICON_SECONDARY), "document-open");
    EXPECT_EQ(shown.get_icon_tooltip_text(Gtk::ENTRY_ICON_SECONDARY), "Choose a file");
    Answers answers;
    answers.choose("Choose a file", folder / "data.csv");
    GdkEvent* press = gdk_event_new(GDK_BUTTON_PRESS);
    g_signal_emit_by_name(shown.gobj(), "icon-press", GTK_ENTRY_ICON_SECONDARY, press);
    gdk_event_free(press);
    EXPECT_EQ(shown.get_text(), (folder / "data.csv").string());
    EXPECT_THAT(recording::edits(), IsEmpty());
}

TEST_F(ValueEntries, ofAnotherInputHaveNoIcon) {
    EXPECT_EQ(entry(openWith("", "Name.\nType: text"), 1).get_icon_name(Gtk::ENTRY_ICON_SECONDARY), "");
}

TEST_F(ValueEntries, scrollWhereTheyAreHigherThanTheScreen) {
    const std::string name = add("Note").uniqueName;
    for (int i = 0; i < 100; ++i) {
        addInput(object(name), "x" + std::to_string(i), "1");
    }
    varWindow& dialog = openFor(name);
    pumpUntil([&dialog] { return dialog.get_mapped(); });
    pump();
    Gdk::Rectangle screen;
    dialog.get_display()->get_monitor(0)->get_workarea(screen);
    EXPECT_LT(dialog.get_height(), screen.get_height());
    Gtk::Button& ok = buttonIn(dialog, "OK");
    int x = 0;
    int y = 0;
    ASSERT_TRUE(ok.translate_coordinates(dialog, 0, 0, x, y));
    EXPECT_LT(y, screen.get_height());
    ASSERT_EQ(widgetsIn<Gtk::ScrolledWindow>(dialog).size(), 1U);
    Gtk::ScrolledWindow& scroller = *widgetsIn<Gtk::ScrolledWindow>(dialog)[0];
    EXPECT_EQ(widgetsIn<Gtk::Entry>(scroller).size(), 101U);
    widgetsIn<Gtk::Entry>(scroller).back()->grab_focus();
    EXPECT_TRUE(pumpUntil([&scroller] { return scroller.get_vadjustment()->get_value() > 500; }));
    object(name).Inputs().resize(3);
    press(dialog, "Apply");
    EXPECT_THAT(widgetsIn<Gtk::ScrolledWindow>(dialog), IsEmpty());
    EXPECT_EQ(rows(dialog).size(), 4U);
}

}  // namespace
