#pragma once

#include "EditorTest.h"

#include <gdk/gdk.h>

/// A visible editor with simulated mouse input on the canvas: it moves the real pointer and sends events to the
/// canvas's window, which pass through the toolkit like those of the server. Lengths: canvas units.
class HandsTest : public EditorTest {
protected:
    HandsTest();

    void showWindow();

    /// Adds a node with its upper left corner at a visible point.
    plugin& addAt(const std::string& kind, double x, double y);

    CanvasPoint headOf(const std::string& name);  ///< On the box, beside its ports.
    CanvasPoint outputOf(const std::string& name, const std::string& port);
    CanvasPoint inputOf(const std::string& name, const std::string& port);
    CanvasPoint nowhere();  ///< A point where nothing is drawn.

    void scrollTo(CanvasPoint place);  ///< Makes it the upper left corner of the view.
    void moveTo(CanvasPoint place);    ///< With a motion event.
    void moveOutside();                ///< Right of the window.
    void moveBy(int dx, int dy);       ///< In pixels of the screen.
    void turnWheel(GdkScrollDirection direction);
    /// Releases the button where the window receives no event.
    void releaseElsewhere() { held = 0; }
    void press(CanvasPoint place, unsigned button = 1, GdkEventType type = GDK_BUTTON_PRESS);
    void release(unsigned button = 1);
    void drag(CanvasPoint from, CanvasPoint to);
    void clickOn(CanvasPoint place, unsigned button = 1);
    void doubleClick(CanvasPoint place);

    /// Expects one box for each plug-in, one path for each connection, no rubber band, no active gesture, and the same
    /// connections in the library as in the maps.
    void expectNothingLeftBehind();

    Glib::RefPtr<Goocanvas::Item> topItem();
    std::string topPath();  ///< Path data of topItem().
    std::uint32_t colourOf(const std::string& name);
    CanvasPoint cornerOf(const std::string& name);
    bool isBound(const std::string& name, const std::string& input, const std::string& sender,
                 const std::string& output);

private:
    void warp(CanvasPoint place);
    void warpTo(int screenX, int screenY);
    void send(GdkEventType type, unsigned button);

    unsigned held = 0;  ///< Mask of the pressed buttons.
};
