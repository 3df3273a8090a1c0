#pragma once

#include <gtkmm/togglebutton.h>

#include <cstdint>

/// The button that starts and stops a run. While the window waits for a run to end, it handles no events; clicks made
/// in the meantime arrive afterwards, all at once, and must not start the next run.
class StartButton : public Gtk::ToggleButton {
public:
    using Gtk::ToggleButton::ToggleButton;

    /// Ignores clicks and keys made before this moment that have not been handled yet.
    void discardPendingClicks();

protected:
    bool on_event(GdkEvent* event) override;

private:
    std::uint32_t ignoredUntil = 0;  ///< Time of the display server, in ms; 0: nothing is ignored.
};
