#include "PointerTest.h"

#include "Widgets.h"

#include <gtkmm/label.h>

#include <cmath>
#include <cstdlib>

namespace {

void act(const std::string& words) {
    ASSERT_EQ(std::system(("xdotool " + words).c_str()), 0);
}

}  // namespace

void PointerTest::show(const std::string& more) {
    restart(script() + more);
    window->resize(1000, 800);
    window->show();
    pumpUntil([this] { return window->canvas.get_mapped() && window->scroller.get_height() > 600; });
    pump();
}

void PointerTest::moveTo(Gtk::Widget& target, double x, double y) {
    pumpUntil([&target] { return target.get_mapped() && target.get_allocated_width() > 1; });
    int left = 0;
    int top = 0;
    target.get_toplevel()->get_window()->get_origin(left, top);
    int inWindowX = 0;
    int inWindowY = 0;
    target.translate_coordinates(*target.get_toplevel(), static_cast<int>(std::lround(x)),
                                 static_cast<int>(std::lround(y)), inWindowX, inWindowY);
    act("mousemove " + std::to_string(left + inWindowX) + ' ' + std::to_string(top + inWindowY));
    pump();
}

void PointerTest::moveTo(Gtk::Widget& target) {
    pumpUntil([&target] { return target.get_mapped() && target.get_allocated_width() > 1; });
    moveTo(target, target.get_allocated_width() / 2.0, target.get_allocated_height() / 2.0);
}

void PointerTest::nudge(int dx) {
    act("mousemove_relative -- " + std::to_string(dx) + " 0");
}

void PointerTest::click(Gtk::Widget& target, int button) {
    moveTo(target);
    act("click " + std::to_string(button));
}

void PointerTest::moveTo(const Glib::RefPtr<Goocanvas::Item>& item) {
    const Goocanvas::Bounds bounds = item->get_bounds();
    double x = bounds.get_x1() + 6;
    double y = (bounds.get_y1() + bounds.get_y2()) / 2;
    window->canvas.convert_to_pixels(x, y);
    moveTo(window->canvas, x - window->scroller.get_hadjustment()->get_value(),
           y - window->scroller.get_vadjustment()->get_value());
}

void PointerTest::pressKey(guint key) {
    for (const GdkEventType type : {GDK_KEY_PRESS, GDK_KEY_RELEASE}) {
        GdkEvent* event = gdk_event_new(type);
        event->any.window = GDK_WINDOW(g_object_ref(window->get_window()->gobj()));
        event->key.keyval = key;
        gdk_event_set_device(event, gdk_seat_get_keyboard(gdk_display_get_default_seat(window->get_display()->gobj())));
        gtk_main_do_event(event);
        gdk_event_free(event);
    }
    pump();
}

void PointerTest::catchUp() {
    const std::size_t before = recording::callsOf("Reset").size();
    click(window->resetButton);
    ASSERT_TRUE(pumpUntil([before] { return recording::callsOf("Reset").size() > before; }));
}

std::string PointerTest::tooltip() {
    for (Gtk::Window* shown : Gtk::Window::list_toplevels()) {
        if (shown->get_mapped() && std::string(G_OBJECT_TYPE_NAME(shown->gobj())) == "GtkTooltipWindow") {
            for (const Gtk::Label* label : widgetsIn<Gtk::Label>(*shown)) {
                if (label->get_visible()) {
                    return label->get_text();
                }
            }
        }
    }
    return "";
}
