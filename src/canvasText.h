#pragma once

#include "CanvasPoint.h"

#include <glibmm/refptr.h>
#include <goocanvasmm/canvas.h>
#include <goocanvasmm/text.h>

#include <string>

/// A text item that looks and behaves like one of Goocanvas::Text::create() with that "font", except that all equal
/// texts of the canvas share one cached layout (TextLayouts). The caller adds it to the canvas. Limits: style
/// properties are shared by all texts in that font; "height" has no effect.
Glib::RefPtr<Goocanvas::Text> makeText(Goocanvas::Canvas& canvas, const std::string& text, CanvasPoint place,
                                       Goocanvas::AnchorType anchor, const std::string& font);
