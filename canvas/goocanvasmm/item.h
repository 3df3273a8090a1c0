#pragma once

#include <gdk/gdk.h>
#include <glibmm/object.h>
#include <glibmm/refptr.h>
#include <glibmm/signalproxy.h>
#include <goocanvas.h>
#include <goocanvasmm/bounds.h>

namespace Goocanvas {

class Canvas;

/// An item on a canvas, or a group of items.
/// Lifetime: the wrapper of an item lives as long as the item, so that two references to one item are equal.
/// Threads:  the main thread only.
class Item : public Glib::Object {
public:
    /// The item below the pointer, or null over empty canvas, and the event. True: nobody else handles it.
    template <typename Event>
    using EventSignal = Glib::SignalProxy<bool, const Glib::RefPtr<Item>&, Event*>;

    GooCanvasItem* gobj();
    const GooCanvasItem* gobj() const;

    /// Position -1: above all others.
    void add_child(const Glib::RefPtr<Item>& child, int position = -1);
    void remove_child(int position);
    void move_child(int from, int to);
    int get_n_children() const;

    /// Null if there is no such child.
    Glib::RefPtr<Item> get_child(int position);

    /// -1 if the item is not a child.
    int find_child(const Glib::RefPtr<Item>& child) const;

    /// Null for an item that is not on a canvas.
    Canvas* get_canvas() const;
    Glib::RefPtr<Item> get_parent();

    /// Takes the item off the canvas.
    void remove();

    /// Just above another item, if it is not above it already; without one, above all.
    void raise(const Glib::RefPtr<Item>& above = {});

    /// Just below another item, if it is not below it already; without one, below all.
    void lower(const Glib::RefPtr<Item>& below = {});

    Bounds get_bounds() const;

    EventSignal<GdkEventButton> signal_button_press_event();
    EventSignal<GdkEventButton> signal_button_release_event();
    EventSignal<GdkEventMotion> signal_motion_notify_event();

    /// The wrapper of an item, made if it has none yet; null for null.
    static Glib::RefPtr<Item> of(GooCanvasItem* item);

protected:
    /// Takes over the caller's reference.
    explicit Item(GooCanvasItem* item);

private:
    GooCanvasItem* object() const;
};

}  // namespace Goocanvas
