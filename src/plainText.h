#pragma once

#include <glibmm/ustring.h>

#include <string>

/// The text as valid UTF-8, which the toolkit requires: each invalid byte becomes a replacement character.
Glib::ustring plainText(const std::string& text);
