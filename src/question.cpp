#include "question.h"

#include <gtkmm/messagedialog.h>

bool confirms(const Glib::ustring& question) {
    Gtk::MessageDialog dialog(question, false, Gtk::MESSAGE_QUESTION, Gtk::BUTTONS_YES_NO, false);
    return dialog.run() == Gtk::RESPONSE_YES;
}
