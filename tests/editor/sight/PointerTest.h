#pragma once

#include "EditorTest.h"

/// A shown editor under the server's own pointer: what it does comes to the program as from a hand.
class PointerTest : public EditorTest {
protected:
    /// @param more statements for the script of the library.
    void show(const std::string& more = "");

    static void moveTo(Gtk::Widget& target, double x, double y);  ///< Of the widget, in pixels.
    static void moveTo(Gtk::Widget& target);                      ///< To its middle.
    static void nudge(int dx);                                    ///< From where the pointer is.
    static void click(Gtk::Widget& target, int button = 1);
    void moveTo(const Glib::RefPtr<Goocanvas::Item>& item);

    /// Presses a key in the main window, whichever widget there has the keyboard.
    void pressKey(guint key);

    /// Has served everything that the pointer did so far.
    void catchUp();

    /// What the toolkit's tooltip window says; empty while there is none.
    static std::string tooltip();
};
