#pragma once

#include "CanvasPoint.h"

#include <goocanvasmm/item.h>

/// What an item carries in its "title": a box the name of its plug-in, the text of an input "input", others nothing.
/// Over empty canvas the toolkit tells of no item at all.
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
