#pragma once

#include <glibmm/ustring.h>
#include <gtkmm/dialog.h>

/// Asks with the buttons Yes and No and waits for the answer. Closing the box counts as no.
/// @param preferred the answer that Return gives; where there is none, Return presses the button that has the keyboard.
bool confirms(const Glib::ustring& question, Gtk::ResponseType preferred = Gtk::RESPONSE_NONE);

/// While it lives, the variables dialogs are not kept above other windows, so that none of them hides the buttons of a
/// question or of a file chooser.
class DialogsStepBack {
public:
    DialogsStepBack();
    ~DialogsStepBack();
    DialogsStepBack(const DialogsStepBack&) = delete;
    DialogsStepBack& operator=(const DialogsStepBack&) = delete;
};
