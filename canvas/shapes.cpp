#include <goocanvasmm/path.h>
#include <goocanvasmm/rect.h>
#include <goocanvasmm/text.h>

namespace Goocanvas {

Path::Path(GooCanvasPath* item) : Item(GOO_CANVAS_ITEM(item)) {}

Glib::RefPtr<Path> Path::create(const Glib::ustring& data) {
    return Glib::RefPtr<Path>(new Path(GOO_CANVAS_PATH(goo_canvas_path_new(nullptr, data.c_str(), nullptr))));
}

GooCanvasPath* Path::gobj() {
    return GOO_CANVAS_PATH(gobject_);
}

Rect::Rect(GooCanvasRect* item) : Item(GOO_CANVAS_ITEM(item)) {}

Glib::RefPtr<Rect> Rect::create(double x, double y, double width, double height) {
    return Glib::RefPtr<Rect>(new Rect(GOO_CANVAS_RECT(goo_canvas_rect_new(nullptr, x, y, width, height, nullptr))));
}

GooCanvasRect* Rect::gobj() {
    return GOO_CANVAS_RECT(gobject_);
}

Text::Text(GooCanvasText* item) : Item(GOO_CANVAS_ITEM(item)) {}

Glib::RefPtr<Text> Text::create(const Glib::ustring& text, double x, double y, double width, AnchorType anchor) {
    const auto place = static_cast<GooCanvasAnchorType>(anchor);
    return Glib::RefPtr<Text>(
        new Text(GOO_CANVAS_TEXT(goo_canvas_text_new(nullptr, text.c_str(), x, y, width, place, nullptr))));
}

GooCanvasText* Text::gobj() {
    return GOO_CANVAS_TEXT(gobject_);
}

}  // namespace Goocanvas
