#pragma once

#include <goocanvasmm/item.h>

namespace Goocanvas {

/// A rectangle, whose corners may be round.
class Rect : public Item {
public:
    static Glib::RefPtr<Rect> create(double x, double y, double width, double height);

    GooCanvasRect* gobj();

protected:
    explicit Rect(GooCanvasRect* item);
};

}  // namespace Goocanvas
