#pragma once

#include "CanvasPoint.h"

#include <glibmm/refptr.h>
#include <goocanvasmm/canvas.h>
#include <goocanvasmm/path.h>

/// The curve from an output to the pointer while the user draws a wire, above all other items.
class RubberBand {
public:
    /// Starts a new curve and removes a previous one. The canvas must outlive the band.
    void begin(Goocanvas::Canvas& target, CanvasPoint startPoint, CanvasPoint pointer);
    void follow(CanvasPoint pointer);
    void remove();
    bool isShown() const { return static_cast<bool>(path); }

private:
    void draw(CanvasPoint pointer);

    Goocanvas::Canvas* canvas = nullptr;
    CanvasPoint start{0, 0};
    Glib::RefPtr<Goocanvas::Path> path;
};
