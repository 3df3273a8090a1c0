#pragma once

#include <QzBase.h>
#include <velmorak/Kind.h>

#include <vector>

namespace velmorak {

/// Values of a plug-in, including those of inputs that its kind does not have now.
ValueTexts valuesOf(const QzBase& node);

/// Replaces the ports of a plug-in. Ports that keep their name keep their value and wires; wires of removed ports are
/// removed at both ends. A new input gets the value that a document had for it, or else its default.
/// @param others every plug-in that may be connected to this one; may include it.
void changePorts(QzBase& node, const Ports& ports, const std::vector<QzBase*>& others);

}  // namespace velmorak
