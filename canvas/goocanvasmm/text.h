#pragma once

#include <glibmm/ustring.h>
#include <goocanvasmm/enums.h>
#include <goocanvasmm/item.h>

namespace Goocanvas {

/// A text.
class Text : public Item {
public:
    /// @param width lines that are longer are broken; -1 for lines of any length.
    static Glib::RefPtr<Text> create(const Glib::ustring& text, double x, double y, double width, AnchorType anchor);

    GooCanvasText* gobj();

protected:
    explicit Text(GooCanvasText* item);
};

}  // namespace Goocanvas
