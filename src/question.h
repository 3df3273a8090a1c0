#pragma once

#include <glibmm/ustring.h>

/// Asks with the buttons Yes and No and waits for the answer. Closing the box counts as no.
bool confirms(const Glib::ustring& question);
