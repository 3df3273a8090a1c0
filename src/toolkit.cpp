#include "toolkit.h"

#include <gdk/gdk.h>
#include <glibmm/miscutils.h>

std::unique_ptr<Gtk::Main> startToolkit(int& argc, char**& argv) {
    constexpr const char* openGl = "GDK_GL";
    gdk_set_allowed_backends("x11,*");
    const bool isChosen = !Glib::getenv(openGl).empty();
    if (!isChosen) {
        Glib::setenv(openGl, "disable");
    }
    auto kit = std::make_unique<Gtk::Main>(argc, argv, true);
    if (!isChosen) {
        Glib::unsetenv(openGl);  // Child processes must not inherit it.
    }
    return kit;
}
