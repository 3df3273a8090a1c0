#pragma once

#include <velmorak/Ports.h>

#include <string>

namespace velmorak {

/// Description of a port for users, as plain text: the kind's sentence, and on a new line the type: "Type: whole number
/// from 1 to 100", "Type: choice of x, y", "Type: file to read".
/// @param ports all ports of the plug-in. If no input needs a wire, the plug-in reads nothing but files, and a text
///              input called "file" is the name of one.
std::string descriptionOf(const InputSpec& input, const Ports& ports);
std::string descriptionOf(const OutputSpec& output);

}  // namespace velmorak
