#pragma once

#include <goocanvasmm/canvas.h>
#include <gtkmm/scrolledwindow.h>

/// What a user sees of the canvas, and how it is brought into view.
namespace canvasView {

/// Has the canvas show the "tooltip" of the item below the pointer, as plain text.
void showTooltips(Goocanvas::Canvas& canvas, Gtk::ScrolledWindow& scroller);

/// Has the arrow and the Page keys scroll the canvas while it has the keyboard, instead of leaving it for a button.
void scrollByKeys(Goocanvas::Canvas& canvas, Gtk::ScrolledWindow& scroller);

/// Scrolls as far as it takes to see the item; of one larger than the view, its upper left corner.
void bringIntoView(Goocanvas::Canvas& canvas, Gtk::ScrolledWindow& scroller, const Glib::RefPtr<Goocanvas::Item>& item);

}  // namespace canvasView
