#pragma once

#include <QzManager.h>
#include <velmorak/Kind.h>

#include <cstddef>
#include <string>
#include <vector>

namespace velmorak {

/// Values of a plug-in for Kind::ports, including those of inputs that its kind does not have now. An input with a wire
/// has an entry, be it empty; one without has none if it has no value and no default.
ValueTexts valuesOf(const QzBase& node);

/// Ports of a plug-in's kind if one of its inputs, which need not exist, gets a value.
/// @return empty, or the reason why the kind cannot list them.
std::string tryPortsWith(const QzBase& node, const std::string& input, const std::string& value, Ports& ports);

/// Replaces the ports of a plug-in. Ports that keep their name keep their value and wires; wires of removed ports are
/// removed at both ends. A new input gets the value that a document had for it, or else its default.
/// @param others every plug-in that may be connected to this one; may include it.
void changePorts(QzBase& node, const Ports& ports, const std::vector<QzBase*>& others);

/// Adds an input that the plug-in's kind has only for a value or a wire, such as one for a bare name in an expression.
/// @return whether the plug-in has the input now.
bool offerInput(QzManager& manager, std::size_t position, const std::string& input);

}  // namespace velmorak
