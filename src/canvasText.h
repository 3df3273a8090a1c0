#pragma once

#include "CanvasPoint.h"

#include <glibmm/refptr.h>
#include <goocanvasmm/canvas.h>
#include <goocanvasmm/text.h>

#include <string>

/// A text item with the look and behaviour of Goocanvas::Text::create() with that "font", but the layout is cached and
/// shared by all equal texts of the canvas (TextLayouts). The item is not on the canvas yet.
/// Limits: style properties are shared by all texts in that font; "height" has no effect.
Glib::RefPtr<Goocanvas::Text> makeText(Goocanvas::Canvas& canvas, const std::string& text, CanvasPoint place,
                                       Goocanvas::AnchorType anchor, const std::string& font);
