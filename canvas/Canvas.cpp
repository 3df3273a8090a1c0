#include <glibmm/class.h>
#include <goocanvasmm/canvas.h>
#include <gtkmm/private/container_p.h>

namespace Goocanvas {
namespace {

/// The type of the widget: the C library's, with the handlers of gtkmm, which know that a C++ object owns it.
class CanvasClass : public Glib::Class {
public:
    const Glib::Class& init();
};

const Glib::Class& CanvasClass::init() {
    if (gtype_ == 0) {
        class_init_func_ = &Gtk::Container_Class::class_init_function;
        register_derived_type(goo_canvas_get_type());
    }
    return *this;
}

CanvasClass canvasClass;  // Static data by the convention of glibmm, which registers a type once per program.

}  // namespace

Canvas::Canvas() : Glib::ObjectBase(nullptr), Gtk::Container(Glib::ConstructParams(canvasClass.init())) {}

Canvas::~Canvas() noexcept {
    destroy_();
}

GooCanvas* Canvas::object() const {
    return GOO_CANVAS(gobject_);
}

GooCanvas* Canvas::gobj() {
    return object();
}

const GooCanvas* Canvas::gobj() const {
    return object();
}

Glib::RefPtr<Item> Canvas::get_root_item() {
    return Item::of(goo_canvas_get_root_item(object()));
}

std::vector<Glib::RefPtr<Item>> Canvas::get_items_at(double x, double y, bool isPointerEvent) {
    GList* found = goo_canvas_get_items_at(object(), x, y, isPointerEvent ? TRUE : FALSE);
    std::vector<Glib::RefPtr<Item>> items;
    for (const GList* each = found; each; each = each->next) {
        items.push_back(Item::of(static_cast<GooCanvasItem*>(each->data)));
    }
    g_list_free(found);
    return items;
}

void Canvas::set_bounds(double left, double top, double right, double bottom) {
    goo_canvas_set_bounds(object(), left, top, right, bottom);
}

void Canvas::get_bounds(double& left, double& top, double& right, double& bottom) const {
    goo_canvas_get_bounds(object(), &left, &top, &right, &bottom);
}

void Canvas::set_scale(double scale) {
    goo_canvas_set_scale(object(), scale);
}

double Canvas::get_scale() const {
    return goo_canvas_get_scale(object());
}

void Canvas::scroll_to(double left, double top) {
    goo_canvas_scroll_to(object(), left, top);
}

void Canvas::convert_to_pixels(double& x, double& y) const {
    goo_canvas_convert_to_pixels(object(), &x, &y);
}

void Canvas::convert_from_pixels(double& x, double& y) const {
    goo_canvas_convert_from_pixels(object(), &x, &y);
}

void Canvas::grab_focus(const Glib::RefPtr<Item>& item) {
    goo_canvas_grab_focus(object(), item->gobj());
}

void Canvas::update() {
    goo_canvas_update(object());
}

void Canvas::render(const Cairo::RefPtr<Cairo::Context>& context, const Bounds& bounds, double scale) {
    goo_canvas_render(object(), context->cobj(), bounds.gobj(), scale);
}

}  // namespace Goocanvas
