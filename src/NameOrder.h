#pragma once

#include <glibmm/ustring.h>

#include <map>

/// Orders names by the collation rules of the user's language. If these rules treat two different names as equal ("x2"
/// and "x²", a composed and a decomposed "é"), the bytes decide: two keys are equivalent only if the library, too,
/// considers the names equal.
struct NameOrder {
    bool operator()(const Glib::ustring& one, const Glib::ustring& other) const;
};

template <typename Value>
using NameMap = std::map<Glib::ustring, Value, NameOrder>;

/// Compares byte for byte, as the library does; operator== of Glib::ustring compares by the user's language.
inline bool isSameName(const Glib::ustring& one, const Glib::ustring& other) {
    return one.raw() == other.raw();
}
