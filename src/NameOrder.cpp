#include "NameOrder.h"

bool NameOrder::operator()(const Glib::ustring& one, const Glib::ustring& other) const {
    if (one.raw() == other.raw()) {
        return false;
    }
    const int order = one.compare(other);
    return order != 0 ? order < 0 : one.raw() < other.raw();
}
