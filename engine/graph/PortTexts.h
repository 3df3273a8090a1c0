#pragma once

#include <velmorak/Ports.h>

#include <string>

namespace velmorak {

/// What a user is told of a port, as plain text: the kind's own sentence, and in a line of its own what the port takes
/// or gives: "Type: whole number from 1 to 100", "Type: choice of x, y", "Type: file to read".
/// @param ports those that the input stands among. Where all of them can be written down, so that the plug-in reads
///              nothing but files, a text called "file" names one of these.
std::string toldOf(const InputSpec& input, const Ports& ports);
std::string toldOf(const OutputSpec& output);

}  // namespace velmorak
