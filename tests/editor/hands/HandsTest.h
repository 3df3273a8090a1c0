#pragma once

#include "EditorTest.h"

#include <gdk/gdk.h>

/// A shown editor whose canvas is acted upon as by hand: the real pointer is moved, and the events of the canvas's
/// window go the way through the toolkit that the server's own would go.
/// Lengths: canvas units.
class HandsTest : public EditorTest {
protected:
    HandsTest();

    void showWindow();

    /// A new node, moved apart from the others: its upper left corner at a place that can be seen.
    plugin& addAt(const std::string& kind, double x, double y);

    CanvasPoint headOf(const std::string& name);  ///< On the box, beside its ports.
    CanvasPoint outputOf(const std::string& name, const std::string& port);
    CanvasPoint inputOf(const std::string& name, const std::string& port);
    CanvasPoint nowhere();  ///< Where nothing is drawn.

    void scrollTo(CanvasPoint place);  ///< To the upper left corner of what is seen.
    void moveTo(CanvasPoint place);    ///< With a motion event.
    void moveOutside();                ///< Right of the window.
    void moveBy(int dx, int dy);       ///< In pixels of the screen.
    void turnWheel(GdkScrollDirection direction);
    /// The button is let go where the window does not hear of it.
    void releaseElsewhere() { held = 0; }
    void press(CanvasPoint place, unsigned button = 1, GdkEventType type = GDK_BUTTON_PRESS);
    void release(unsigned button = 1);
    void drag(CanvasPoint from, CanvasPoint to);
    void clickOn(CanvasPoint place, unsigned button = 1);
    void doubleClick(CanvasPoint place);

    /// One box for each plug-in, one path for each connection, no rubber band, no gesture going on, and the library
    /// holds what the maps hold.
    void expectNothingLeftBehind();

    Glib::RefPtr<Goocanvas::Item> topItem();
    std::string topPath();  ///< What topItem() draws.
    std::uint32_t colourOf(const std::string& name);
    CanvasPoint cornerOf(const std::string& name);
    bool isBound(const std::string& name, const std::string& input, const std::string& sender,
                 const std::string& output);

private:
    void warp(CanvasPoint place);
    void warpTo(int screenX, int screenY);
    void send(GdkEventType type, unsigned button);

    unsigned held = 0;  ///< Mask of the buttons that are pressed.
};
