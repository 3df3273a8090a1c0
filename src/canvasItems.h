#pragma once

#include "CanvasPoint.h"

#include <goocanvasmm/item.h>

/// The "title" of an item: the plug-in's name for a box, "input" for the text of an input, empty for all others. Null,
/// which the toolkit reports over empty canvas, has no title either.
inline Glib::ustring titleOf(const Glib::RefPtr<Goocanvas::Item>& item) {
    Glib::ustring title;
    if (item) {
        item->get_property("title", title);
    }
    return title;
}

inline Glib::ustring textOf(const Glib::RefPtr<Goocanvas::Item>& item) {
    Glib::ustring text;
    item->get_property("text", text);
    return text;
}

inline CanvasPoint placeOf(const Glib::RefPtr<Goocanvas::Item>& item) {
    CanvasPoint place{0, 0};
    item->get_property("x", place.x);
    item->get_property("y", place.y);
    return place;
}
