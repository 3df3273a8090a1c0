#pragma once

#include <glibmm/value.h>
#include <goocanvas.h>

namespace Goocanvas {

/// The point of a text that lies at its position.
enum AnchorType {
    ANCHOR_CENTER = GOO_CANVAS_ANCHOR_CENTER,
    ANCHOR_NORTH = GOO_CANVAS_ANCHOR_NORTH,
    ANCHOR_NORTH_WEST = GOO_CANVAS_ANCHOR_NORTH_WEST,
    ANCHOR_NORTH_EAST = GOO_CANVAS_ANCHOR_NORTH_EAST,
    ANCHOR_SOUTH = GOO_CANVAS_ANCHOR_SOUTH,
    ANCHOR_SOUTH_WEST = GOO_CANVAS_ANCHOR_SOUTH_WEST,
    ANCHOR_SOUTH_EAST = GOO_CANVAS_ANCHOR_SOUTH_EAST,
    ANCHOR_WEST = GOO_CANVAS_ANCHOR_WEST,
    ANCHOR_EAST = GOO_CANVAS_ANCHOR_EAST
};

/// Which parts of an item receive events of the pointer; a combination of the library's masks.
enum PointerEvents {
    EVENTS_NONE = GOO_CANVAS_EVENTS_NONE,
    EVENTS_VISIBLE_PAINTED = GOO_CANVAS_EVENTS_VISIBLE_PAINTED,
    EVENTS_ALL = GOO_CANVAS_EVENTS_ALL
};

}  // namespace Goocanvas

/// For get_property().
template <>
class Glib::Value<Goocanvas::AnchorType> : public Glib::Value_Enum<Goocanvas::AnchorType> {
public:
    static GType value_type() { return GOO_TYPE_CANVAS_ANCHOR_TYPE; }
};

template <>
class Glib::Value<Goocanvas::PointerEvents> : public Glib::Value_Flags<Goocanvas::PointerEvents> {
public:
    static GType value_type() { return GOO_TYPE_CANVAS_POINTER_EVENTS; }
};
