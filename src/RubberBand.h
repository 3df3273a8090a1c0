#pragma once

#include "CanvasPoint.h"

#include <glibmm/refptr.h>
#include <goocanvasmm/canvas.h>
#include <goocanvasmm/path.h>

/// The curve from an output to the pointer while a wire is drawn, above all other items.
class RubberBand {
public:
    /// Begins a new one; one that is shown goes. The canvas outlives the band.
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
