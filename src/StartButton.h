#pragma once

#include <gtkmm/togglebutton.h>

#include <cstdint>

/// The button that starts and stops a run. While the window waits for a run to end it serves nobody, and what is
/// clicked then reaches it later all at once: those clicks are not meant to start the next run.
class StartButton : public Gtk::ToggleButton {
public:
    using Gtk::ToggleButton::ToggleButton;

    /// Clicks and keys that were made up to this moment, and have not been served, are passed over.
    void forgetWaitingClicks();

protected:
    bool on_event(GdkEvent* event) override;

private:
    std::uint32_t servedFrom = 0;  ///< Time of the display server, in ms; 0: everything is served.
};
