#include "kindSelector.h"

#include <gdk/gdkkeysyms.h>
#include <gtkmm/cssprovider.h>

namespace {

bool ignoreWheel(GdkEventScroll* /*event*/) {
    return true;
}

bool openByKey(GdkEventKey* event, Gtk::ComboBoxText* selector) {
    switch (event->keyval) {
        case GDK_KEY_Up:
        case GDK_KEY_KP_Up:
        case GDK_KEY_Down:
        case GDK_KEY_KP_Down:
        case GDK_KEY_Page_Up:
        case GDK_KEY_KP_Page_Up:
        case GDK_KEY_Page_Down:
        case GDK_KEY_KP_Page_Down:
        case GDK_KEY_Home:
        case GDK_KEY_KP_Home:
        case GDK_KEY_End:
        case GDK_KEY_KP_End:
            selector->popup();
            return true;
        default:
            return false;
    }
}

}  // namespace

void chooseFromListOnly(Gtk::ComboBoxText& selector) {
    const auto asList = Gtk::CssProvider::create();
    asList->load_from_data("* { -GtkComboBox-appears-as-list: true; }");
    selector.get_style_context()->add_provider(asList, GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
    selector.signal_scroll_event().connect(sigc::ptr_fun(&ignoreWheel), false);
    selector.signal_key_press_event().connect(sigc::bind(sigc::ptr_fun(&openByKey), &selector), false);
}
