#pragma once

#include "CanvasPoint.h"

#include <glibmm/refptr.h>
#include <glibmm/ustring.h>
#include <goocanvasmm/canvas.h>

#include <vector>

class plugin;

/// What an item on the canvas is, told by the items that the nodes hold and not by its title: any plug-in may be called
/// "input".
struct Hit {
    enum class Kind { Nothing, Box, Input, Output };

    Kind kind = Kind::Nothing;
    plugin* node = nullptr;  ///< Whose box or port it is.
    Glib::ustring port;      ///< Name of the port, empty for a box.
};

Hit hitOf(const Glib::RefPtr<Goocanvas::Item>& item, const std::vector<plugin*>& nodes);

/// What the user sees at the place: the topmost box or port. What it covers does not count, and wires do not either.
Hit topmostHit(const std::vector<Glib::RefPtr<Goocanvas::Item>>& itemsFromTheTop, const std::vector<plugin*>& nodes);
