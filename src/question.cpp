#include "question.h"

#include <gtkmm/messagedialog.h>

bool confirms(const Glib::ustring& question, Gtk::ResponseType preferred) {
    Gtk::MessageDialog dialog(question, false, Gtk::MESSAGE_QUESTION, Gtk::BUTTONS_YES_NO, false);
    if (preferred != Gtk::RESPONSE_NONE) {
        dialog.set_default_response(preferred);
    }
    return dialog.run() == Gtk::RESPONSE_YES;
}
