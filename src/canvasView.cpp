#include "canvasView.h"

#include "plainText.h"

#include <gdk/gdkkeysyms.h>
#include <goocanvas.h>
#include <gtkmm/accelgroup.h>
#include <gtkmm/tooltip.h>

#include <cmath>
#include <string>

namespace canvasView {
namespace {

/// The bounds of the item, in pixels from the upper left corner of the whole canvas.
Gdk::Rectangle pixelsOf(const Goocanvas::Canvas& canvas, GooCanvasItem* item) {
    GooCanvasBounds bounds{};
    goo_canvas_item_get_bounds(item, &bounds);
    canvas.convert_to_pixels(bounds.x1, bounds.y1);
    canvas.convert_to_pixels(bounds.x2, bounds.y2);
    return {static_cast<int>(std::floor(bounds.x1)), static_cast<int>(std::floor(bounds.y1)),
            static_cast<int>(std::ceil(bounds.x2 - bounds.x1)), static_cast<int>(std::ceil(bounds.y2 - bounds.y1))};
}

std::string tooltipOf(GooCanvasItem* item) {
    char* text = nullptr;
    g_object_get(item, "tooltip", &text, nullptr);
    std::string copy = text ? text : "";
    g_free(text);
    return copy;
}

/// Replaces the canvas library's handler, which would read the tooltip as markup.
bool showTooltip(int x, int y, bool isByKey, const Glib::RefPtr<Gtk::Tooltip>& tooltip, Goocanvas::Canvas* canvas,
                 Gtk::ScrolledWindow* scroller) {
    g_signal_stop_emission_by_name(canvas->gobj(), "query-tooltip");
    const int scrolledX = static_cast<int>(scroller->get_hadjustment()->get_value());
    const int scrolledY = static_cast<int>(scroller->get_vadjustment()->get_value());
    double canvasX = x + scrolledX;
    double canvasY = y + scrolledY;
    canvas->convert_from_pixels(canvasX, canvasY);
    GooCanvasItem* item = isByKey ? nullptr : goo_canvas_get_item_at(canvas->gobj(), canvasX, canvasY, TRUE);
    const std::string text = item ? tooltipOf(item) : std::string();
    if (text.empty()) {
        return false;
    }
    Gdk::Rectangle area = pixelsOf(*canvas, item);
    area.set_x(area.get_x() - scrolledX);
    area.set_y(area.get_y() - scrolledY);
    tooltip->set_text(plainText(text));
    tooltip->set_tip_area(area);
    return true;
}

void scrollBy(const Glib::RefPtr<Gtk::Adjustment>& adjustment, double distance) {
    adjustment->set_value(adjustment->get_value() + distance);
}

bool scrollByKey(GdkEventKey* event, Gtk::ScrolledWindow* scroller) {
    if ((event->state & Gtk::AccelGroup::get_default_mod_mask()) != 0) {
        return false;
    }
    const auto across = scroller->get_hadjustment();
    const auto down = scroller->get_vadjustment();
    switch (event->keyval) {
        case GDK_KEY_Left:
        case GDK_KEY_KP_Left:
            scrollBy(across, -across->get_step_increment());
            return true;
        case GDK_KEY_Right:
        case GDK_KEY_KP_Right:
            scrollBy(across, across->get_step_increment());
            return true;
        case GDK_KEY_Up:
        case GDK_KEY_KP_Up:
            scrollBy(down, -down->get_step_increment());
            return true;
        case GDK_KEY_Down:
        case GDK_KEY_KP_Down:
            scrollBy(down, down->get_step_increment());
            return true;
        case GDK_KEY_Page_Up:
        case GDK_KEY_KP_Page_Up:
            scrollBy(down, -down->get_page_increment());
            return true;
        case GDK_KEY_Page_Down:
        case GDK_KEY_KP_Page_Down:
            scrollBy(down, down->get_page_increment());
            return true;
        default:
            return false;
    }
}

}  // namespace

void showTooltips(Goocanvas::Canvas& canvas, Gtk::ScrolledWindow& scroller) {
    canvas.set_has_tooltip(true);
    canvas.signal_query_tooltip().connect(sigc::bind(sigc::ptr_fun(&showTooltip), &canvas, &scroller), false);
}

void scrollByKeys(Goocanvas::Canvas& canvas, Gtk::ScrolledWindow& scroller) {
    canvas.signal_key_press_event().connect(sigc::bind(sigc::ptr_fun(&scrollByKey), &scroller), false);
}

void bringIntoView(Goocanvas::Canvas& canvas, Gtk::ScrolledWindow& scroller,
                   const Glib::RefPtr<Goocanvas::Item>& item) {
    const Gdk::Rectangle area = pixelsOf(canvas, item->gobj());
    scroller.get_hadjustment()->clamp_page(area.get_x(), area.get_x() + area.get_width());
    scroller.get_vadjustment()->clamp_page(area.get_y(), area.get_y() + area.get_height());
}

}  // namespace canvasView
