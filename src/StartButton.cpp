#include "StartButton.h"

#include <gdk/gdkx.h>
#include <gdkmm/window.h>

void StartButton::discardPendingClicks() {
    const auto shown = get_realized() ? get_toplevel()->get_window() : Glib::RefPtr<Gdk::Window>();
    if (shown && GDK_IS_X11_WINDOW(shown->gobj())) {
        ignoredUntil = gdk_x11_get_server_time(shown->gobj());
    }
}

bool StartButton::on_event(GdkEvent* event) {
    const bool isClick = event->type == GDK_BUTTON_PRESS || event->type == GDK_KEY_PRESS;
    const std::uint32_t time = gdk_event_get_time(event);
    // The server's clock wraps around after seven weeks; the difference stays correct.
    const bool isOld =
        ignoredUntil != 0 && time != GDK_CURRENT_TIME && static_cast<std::int32_t>(time - ignoredUntil) <= 0;
    return (isClick && isOld) || Gtk::ToggleButton::on_event(event);
}
