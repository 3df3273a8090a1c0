#pragma once

#include <glibmm/ustring.h>
#include <gtkmm/dialog.h>

/// Asks a question with the buttons Yes and No and waits for the answer. Closing the box counts as No.
/// @param preferred the answer given by Return; by default, Return presses the button that has the keyboard focus.
bool confirms(const Glib::ustring& question, Gtk::ResponseType preferred = Gtk::RESPONSE_NONE);

/// During its lifetime, variables dialogs are not kept above other windows, so that none of them hides the buttons of a
/// question or of a file chooser.
class KeepAboveSuspension {
public:
    KeepAboveSuspension();
    ~KeepAboveSuspension();
    KeepAboveSuspension(const KeepAboveSuspension&) = delete;
    KeepAboveSuspension& operator=(const KeepAboveSuspension&) = delete;
};
