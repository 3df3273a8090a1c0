#pragma once

#include "EditorTest.h"

/// A visible editor with real pointer events from the X server.
class PointerTest : public EditorTest {
protected:
    /// @param more statements for the library's script.
    void show(const std::string& more = "");

    static void moveTo(Gtk::Widget& target, double x, double y);  ///< Relative to the widget, in pixels.
    static void moveTo(Gtk::Widget& target);                      ///< To its middle.
    static void nudge(int dx);                                    ///< Moves the pointer by that distance.
    static void click(Gtk::Widget& target, int button = 1);
    void moveTo(const Glib::RefPtr<Goocanvas::Item>& item);

    /// Presses a key in the main window, whichever widget has the keyboard focus.
    void pressKey(guint key);

    /// Waits until the window has handled all pointer events so far.
    void catchUp();

    /// The text of the visible tooltip; empty if there is none.
    static std::string tooltip();
};
