#include "plainText.h"

#include <glib.h>

Glib::ustring plainText(const std::string& text) {
    char* valid = g_utf8_make_valid(text.data(), static_cast<gssize>(text.size()));
    Glib::ustring plain(valid);
    g_free(valid);
    return plain;
}
