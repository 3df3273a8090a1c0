#pragma once

#include <velmorak/Ports.h>

#include <string>

namespace velmorak {

/// @return empty, or why a kind or a port cannot have the name; said after the name.
std::string nameObjection(const std::string& name);

/// @return the name in quotes as a message can hold it: in UTF-8, shortened, with control characters written out.
std::string shownName(const std::string& name);

/// @return empty, or why a group of kinds cannot have the name, which may be several words.
std::string groupObjection(const std::string& name);

/// @return empty, or why a plug-in cannot have these ports: a name that is none, or that a document could not keep.
std::string portNameObjection(const Ports& ports);

/// @return empty, or why no plug-in of a kind with these ports can be offered; limits, defaults and choices included.
std::string portsObjection(const Ports& ports);

}  // namespace velmorak
