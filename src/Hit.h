#pragma once

#include "CanvasPoint.h"

#include <glibmm/refptr.h>
#include <glibmm/ustring.h>
#include <goocanvasmm/canvas.h>

#include <vector>

class plugin;

/// The role of an item on the canvas. Found by comparing it with the items of the nodes, never by its title: any
/// plug-in may be called "input".
struct Hit {
    enum class Kind { Nothing, Box, Input, Output };

    Kind kind = Kind::Nothing;
    plugin* node = nullptr;  ///< Owner of the box or port.
    Glib::ustring port;      ///< Name of the port, empty for a box.
};

Hit hitOf(const Glib::RefPtr<Goocanvas::Item>& item, const std::vector<plugin*>& nodes);

/// The topmost box or port, which is what the user sees. Wires are ignored.
Hit topmostHit(const std::vector<Glib::RefPtr<Goocanvas::Item>>& itemsFromTheTop, const std::vector<plugin*>& nodes);
