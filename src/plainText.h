#pragma once

#include <glibmm/ustring.h>

#include <string>

/// The text as the toolkit can show it: bytes that are not UTF-8 become replacement characters.
Glib::ustring plainText(const std::string& text);
