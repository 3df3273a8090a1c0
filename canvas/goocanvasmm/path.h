#pragma once

#include <glibmm/ustring.h>
#include <goocanvasmm/item.h>

namespace Goocanvas {

/// A curve.
class Path : public Item {
public:
    /// @param data the curve, as the path data of an SVG.
    static Glib::RefPtr<Path> create(const Glib::ustring& data);

    GooCanvasPath* gobj();

protected:
    explicit Path(GooCanvasPath* item);
};

}  // namespace Goocanvas
