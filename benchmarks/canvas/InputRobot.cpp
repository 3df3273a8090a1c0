#include "InputRobot.h"

#include "plugin.h"

#include <gdkmm/display.h>
#include <gtkmm/main.h>

#include <goocanvas.h>

#include <cmath>

namespace {

GdkDevice* pointerOf(const Glib::RefPtr<Gdk::Display>& display) {
    return gdk_seat_get_pointer(gdk_display_get_default_seat(display->gobj()));
}

}  // namespace

void InputRobot::showFirstPicture() {
    bool isPainted = false;
    sigc::connection firstDraw = signal_draw().connect(
        [&isPainted](const Cairo::RefPtr<Cairo::Context>&) {
            isPainted = true;
            return false;
        },
        true);
    show();
    while (!isPainted) {
        Gtk::Main::iteration(true);
    }
    firstDraw.disconnect();
    while (Gtk::Main::events_pending()) {
        Gtk::Main::iteration(false);
    }
    repaint();
}

void InputRobot::press(const Glib::ustring& name) {
    draggedItem = pluginMap.at(name)->box;
    double x = 0;
    double y = 0;
    draggedItem->get_property("x", x);
    draggedItem->get_property("y", y);
    x += 20;
    y += 15;
    canvas.convert_to_pixels(x, y);
    int left = 0;
    int top = 0;
    canvas.get_window()->get_origin(left, top);
    pointerX = left + static_cast<int>(std::lround(x - scroller.get_hadjustment()->get_value()));
    pointerY = top + static_cast<int>(std::lround(y - scroller.get_vadjustment()->get_value()));
    movePointer(0, 0);
    send(GDK_BUTTON_PRESS);
}

void InputRobot::movePointer(double dx, double dy) {
    pointerX += static_cast<int>(dx);
    pointerY += static_cast<int>(dy);
    const auto display = get_display();
    GdkDevice* pointer = pointerOf(display);
    gdk_device_warp(pointer, gdk_display_get_default_screen(display->gobj()), pointerX, pointerY);
    int x = -1;
    int y = -1;
    while (x != pointerX || y != pointerY) {
        display->sync();
        gdk_device_get_position(pointer, nullptr, &x, &y);
    }
    // The server's own motions are not to come on top of the one that is measured.
    while (GdkEvent* event = gdk_event_get()) {
        gdk_event_free(event);
    }
}

void InputRobot::send(GdkEventType type) {
    GdkEvent* event = gdk_event_new(type);
    GdkWindow* target = canvas.gobj()->canvas_window;
    const auto place = pointerOnCanvas();
    double x = place.x;
    double y = place.y;
    canvas.convert_to_pixels(x, y);
    event->any.window = GDK_WINDOW(g_object_ref(target));
    gdk_event_set_device(event, pointerOf(get_display()));
    if (type == GDK_MOTION_NOTIFY) {
        event->motion.x = x;
        event->motion.y = y;
        event->motion.state = GDK_BUTTON1_MASK;
    } else {
        event->button.x = x;
        event->button.y = y;
        event->button.button = 1;
    }
    gtk_main_do_event(event);
    gdk_event_free(event);
}

Spent InputRobot::step() {
    const Clock clock;
    send(GDK_MOTION_NOTIFY);
    return clock.spent();
}

Spent InputRobot::loweredStep() {
    const Clock clock;
    send(GDK_MOTION_NOTIFY);
    for (const auto& [input, path] : pathMap) {
        path->remove();
        canvas.get_root_item()->add_child(path);
        path->lower();
    }
    return clock.spent();
}

Spent InputRobot::repaint() {
    const Clock clock;
    canvas.update();
    // By the frame clock, the wait for the next frame would be measured too.
    G_GNUC_BEGIN_IGNORE_DEPRECATIONS
    gdk_window_process_updates(get_window()->gobj(), true);
    G_GNUC_END_IGNORE_DEPRECATIONS
    gdk_display_sync(gdk_window_get_display(get_window()->gobj()));
    return clock.spent();
}
