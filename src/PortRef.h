#pragma once

#include "NameOrder.h"

#include <algorithm>
#include <map>
#include <vector>

/// Names one port: [unique name of the plug-in, name of the port], always two elements.
using PortRef = std::vector<Glib::ustring>;

/// Lexicographic, each name by NameOrder.
struct PortOrder {
    bool operator()(const PortRef& one, const PortRef& other) const {
        return std::lexicographical_compare(one.begin(), one.end(), other.begin(), other.end(), NameOrder());
    }
};

template <typename Value>
using PortMap = std::map<PortRef, Value, PortOrder>;

inline bool isSamePort(const PortRef& one, const PortRef& other) {
    return std::equal(one.begin(), one.end(), other.begin(), other.end(), isSameName);
}
