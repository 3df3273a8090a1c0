#pragma once

#include "Measure.h"
#include "vkWindow.h"

#include <gdk/gdk.h>

/// The main window with hands on its canvas: the real pointer is moved, and events are given to the toolkit as they
/// would come from the server, one after another, so that each step is measured alone.
class InputRobot : public vkWindow {
public:
    /// Returns when the whole window has been painted and the server is done with it.
    void showFirstPicture();

    /// Presses button 1 on that plug-in's box.
    void press(const Glib::ustring& name);
    void movePointer(double dx, double dy);

    Spent step();         ///< One motion through the window's handler.
    Spent loweredStep();  ///< The same, but each path is put on top and lowered to the bottom by itself.
    Spent repaint();

private:
    void send(GdkEventType type);

    ItemRef draggedItem;
    int pointerX = 0;  ///< On the screen.
    int pointerY = 0;
};
