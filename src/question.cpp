#include "question.h"

#include "varWindow.h"

#include <gtkmm/messagedialog.h>

namespace {

std::vector<varWindow*> variablesDialogs() {
    std::vector<varWindow*> dialogs;
    for (Gtk::Window* window : Gtk::Window::list_toplevels()) {
        if (auto* dialog = dynamic_cast<varWindow*>(window)) {
            dialogs.push_back(dialog);
        }
    }
    return dialogs;
}

}  // namespace

KeepAboveSuspension::KeepAboveSuspension() {
    for (varWindow* dialog : variablesDialogs()) {
        dialog->suspendKeepAbove();
    }
}

KeepAboveSuspension::~KeepAboveSuspension() {
    for (varWindow* dialog : variablesDialogs()) {
        dialog->resumeKeepAbove();
    }
}

bool confirms(const Glib::ustring& question, Gtk::ResponseType preferred) {
    const KeepAboveSuspension suspension;
    Gtk::MessageDialog dialog(question, false, Gtk::MESSAGE_QUESTION, Gtk::BUTTONS_YES_NO, false);
    dialog.set_keep_above(true);
    if (preferred != Gtk::RESPONSE_NONE) {
        dialog.set_default_response(preferred);
    }
    return dialog.run() == Gtk::RESPONSE_YES;
}
