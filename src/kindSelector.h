#pragma once

#include <gtkmm/comboboxtext.h>

/// Has the selector show its entries as a list at the button, and choose only from there: neither the wheel over it nor
/// the arrow keys go from entry to entry, each of which would place a plug-in. Those keys open the list.
void chooseFromListOnly(Gtk::ComboBoxText& selector);
