#pragma once

#include <gtkmm/comboboxtext.h>

/// Makes the selector show its entries as a list at the button, the only way to choose one. The wheel and the arrow
/// keys do not step through the entries, because every step would place a plug-in; the keys open the list instead.
void chooseFromListOnly(Gtk::ComboBoxText& selector);
