#pragma once

#include <glibmm/ustring.h>

#include <vector>

/// Names one port: [unique name of the plug-in, name of the port], always two elements. Ordered lexicographically.
using PortRef = std::vector<Glib::ustring>;
