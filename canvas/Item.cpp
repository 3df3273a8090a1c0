#include <glibmm/exceptionhandler.h>
#include <goocanvasmm/canvas.h>
#include <goocanvasmm/item.h>

namespace Goocanvas {
namespace {

/// Calls the slot of a connection. An exception must not pass through the C library.
template <typename Event>
gboolean forward(GooCanvasItem* item, GooCanvasItem* target, Event* event, void* data) {
    if (!Glib::ObjectBase::_get_current_wrapper(G_OBJECT(item))) {
        return FALSE;
    }
    try {
        if (auto* slot = Glib::SignalProxyNormal::data_to_slot(data)) {
            using Slot = typename Item::EventSignal<Event>::SlotType;
            return (*static_cast<Slot*>(slot))(Item::of(target), event) ? TRUE : FALSE;
        }
    } catch (...) {
        Glib::exception_handlers_invoke();
    }
    return FALSE;
}

template <typename Event>
Glib::SignalProxyInfo infoOf(const char* name) {
    const auto callback = reinterpret_cast<GCallback>(&forward<Event>);
    return {name, callback, callback};
}

const Glib::SignalProxyInfo buttonPress = infoOf<GdkEventButton>("button_press_event");
const Glib::SignalProxyInfo buttonRelease = infoOf<GdkEventButton>("button_release_event");
const Glib::SignalProxyInfo motionNotify = infoOf<GdkEventMotion>("motion_notify_event");

GooCanvasItem* pointerOf(const Glib::RefPtr<Item>& item) {
    return item ? item->gobj() : nullptr;
}

}  // namespace

Item::Item(GooCanvasItem* item) : Glib::Object(G_OBJECT(item)) {}

Glib::RefPtr<Item> Item::of(GooCanvasItem* item) {
    if (!item) {
        return {};
    }
    auto* wrapper = dynamic_cast<Item*>(Glib::ObjectBase::_get_current_wrapper(G_OBJECT(item)));
    if (!wrapper) {
        wrapper = new Item(item);
    }
    wrapper->reference();
    return Glib::RefPtr<Item>(wrapper);
}

GooCanvasItem* Item::object() const {
    return GOO_CANVAS_ITEM(gobject_);
}

GooCanvasItem* Item::gobj() {
    return object();
}

const GooCanvasItem* Item::gobj() const {
    return object();
}

void Item::add_child(const Glib::RefPtr<Item>& child, int position) {
    goo_canvas_item_add_child(object(), pointerOf(child), position);
}

void Item::remove_child(int position) {
    goo_canvas_item_remove_child(object(), position);
}

void Item::move_child(int from, int to) {
    goo_canvas_item_move_child(object(), from, to);
}

int Item::get_n_children() const {
    return goo_canvas_item_get_n_children(object());
}

Glib::RefPtr<Item> Item::get_child(int position) {
    return of(goo_canvas_item_get_child(object(), position));
}

int Item::find_child(const Glib::RefPtr<Item>& child) const {
    return goo_canvas_item_find_child(object(), pointerOf(child));
}

Canvas* Item::get_canvas() const {
    GooCanvas* canvas = goo_canvas_item_get_canvas(object());
    return canvas ? dynamic_cast<Canvas*>(Glib::ObjectBase::_get_current_wrapper(G_OBJECT(canvas))) : nullptr;
}

Glib::RefPtr<Item> Item::get_parent() {
    return of(goo_canvas_item_get_parent(object()));
}

void Item::remove() {
    goo_canvas_item_remove(object());
}

void Item::raise(const Glib::RefPtr<Item>& above) {
    goo_canvas_item_raise(object(), pointerOf(above));
}

void Item::lower(const Glib::RefPtr<Item>& below) {
    goo_canvas_item_lower(object(), pointerOf(below));
}

Bounds Item::get_bounds() const {
    GooCanvasBounds bounds{};
    goo_canvas_item_get_bounds(object(), &bounds);
    return Bounds(bounds);
}

Item::EventSignal<GdkEventButton> Item::signal_button_press_event() {
    return {this, &buttonPress};
}

Item::EventSignal<GdkEventButton> Item::signal_button_release_event() {
    return {this, &buttonRelease};
}

Item::EventSignal<GdkEventMotion> Item::signal_motion_notify_event() {
    return {this, &motionNotify};
}

}  // namespace Goocanvas
