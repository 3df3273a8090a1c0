#pragma once

#include <velmorak/Ports.h>

#include <string>

namespace velmorak {

/// @return empty, or why a kind or a port cannot have the name: the rest of a sentence that begins with the name.
std::string nameError(const std::string& name);

/// @return the name in quotes for a message: in UTF-8, shortened, with control characters escaped.
std::string quotedName(const std::string& name);

/// @return empty, or why a group of kinds cannot have the name, which may be several words.
std::string groupNameError(const std::string& name);

/// @return empty, or why a plug-in cannot have these ports: a name that is invalid or cannot be stored in a document.
std::string portNameError(const Ports& ports);

/// @return empty, or why a kind cannot have these ports: names, limits, defaults or choices.
std::string portsError(const Ports& ports);

}  // namespace velmorak
