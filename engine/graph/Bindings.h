#pragma once

#include <QzBase.h>

#include <cstddef>
#include <string>

/// The wires between plug-ins. A wire is recorded at both ends, in the input's source and in the output's list of
/// consumers. All changes are made by these functions, which keep the two ends consistent.
namespace velmorak {

/// Connects the output to the input and removes the wire that the input had before. Positions must exist.
void bind(QzBase& receiver, std::size_t input, QzBase& sender, std::size_t output);

/// Does nothing when the input has no wire.
void unbind(QzBase& receiver, std::size_t input);

/// Removes every wire of the plug-in, of its inputs and its outputs.
void unbindAll(QzBase& node);

/// @return position of the named output, or -1.
int outputIndex(const QzBase& node, const std::string& output);

}  // namespace velmorak
