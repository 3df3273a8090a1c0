#pragma once

#include <goocanvasmm/canvas.h>
#include <gtkmm/scrolledwindow.h>

/// Tooltips and scrolling of the canvas.
namespace canvasView {

/// Makes the canvas show the "tooltip" of the item below the pointer, as plain text.
void showTooltips(Goocanvas::Canvas& canvas, Gtk::ScrolledWindow& scroller);

/// Makes the arrow and Page keys scroll the canvas while it has the keyboard focus, instead of moving the focus to a
/// button.
void scrollByKeys(Goocanvas::Canvas& canvas, Gtk::ScrolledWindow& scroller);

/// Scrolls just far enough to show the item, or the upper left corner of one that is larger than the view.
void bringIntoView(Goocanvas::Canvas& canvas, Gtk::ScrolledWindow& scroller, const Glib::RefPtr<Goocanvas::Item>& item);

}  // namespace canvasView
