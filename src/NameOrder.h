#pragma once

#include <glibmm/ustring.h>

#include <map>

/// Orders names as the user's language sorts them. Where its rules take two different names for equal ("x2" and "x²", a
/// composed and a decomposed "é"), their bytes decide, so that the map keys are exactly the names the library tells
/// apart.
struct NameOrder {
    bool operator()(const Glib::ustring& one, const Glib::ustring& other) const;
};

template <typename Value>
using NameMap = std::map<Glib::ustring, Value, NameOrder>;

/// Byte for byte, as the library compares names. The operator == of Glib::ustring compares by the user's language.
inline bool isSameName(const Glib::ustring& one, const Glib::ustring& other) {
    return one.raw() == other.raw();
}
