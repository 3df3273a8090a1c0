#pragma once

#include <cairomm/context.h>
#include <goocanvas.h>
#include <goocanvasmm/bounds.h>
#include <goocanvasmm/item.h>
#include <gtkmm/container.h>
#include <gtkmm/scrollable.h>

#include <vector>

namespace Goocanvas {

/// A widget that shows items and that a scrolled window can scroll.
/// Lengths: canvas units, y downwards; a pixel at scale 1. Pixels count from the upper left corner of the whole canvas.
class Canvas : public Gtk::Container, public Gtk::Scrollable {
public:
    Canvas();
    ~Canvas() noexcept override;
    Canvas(const Canvas&) = delete;
    Canvas& operator=(const Canvas&) = delete;

    GooCanvas* gobj();
    const GooCanvas* gobj() const;

    /// The group that all items are in.
    Glib::RefPtr<Item> get_root_item();

    /// The items at a point, the topmost first; only those that receive events if `isPointerEvent`.
    std::vector<Glib::RefPtr<Item>> get_items_at(double x, double y, bool isPointerEvent);

    void set_bounds(double left, double top, double right, double bottom);
    void get_bounds(double& left, double& top, double& right, double& bottom) const;
    void set_scale(double scale);
    double get_scale() const;

    /// That point is at the upper left corner of the view, as far as there is canvas.
    void scroll_to(double left, double top);
    void convert_to_pixels(double& x, double& y) const;
    void convert_from_pixels(double& x, double& y) const;

    /// Gives an item the keyboard focus.
    void grab_focus(const Glib::RefPtr<Item>& item);

    /// Computes the bounds of what has changed at once, not when the program is idle.
    void update();

    /// Draws what is within the bounds. @param scale of the context, for items that are visible from some scale on.
    void render(const Cairo::RefPtr<Cairo::Context>& context, const Bounds& bounds, double scale);

private:
    GooCanvas* object() const;
};

}  // namespace Goocanvas
