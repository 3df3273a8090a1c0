#pragma once

#include <QzBase.h>
#include <velmorak/Kind.h>

#include <vector>

namespace velmorak {

/// Value texts of a plug-in, also of inputs that its kind does not have now.
ValueTexts valuesOf(const QzBase& node);

/// Gives a plug-in the ports. Those that it had under the same name keep value and bindings; bindings of ports that go
/// are undone on both sides. A new input takes the value that a document had for it, else its own first value.
/// @param others every plug-in that may be bound to this one, which may be among them.
void changePorts(QzBase& node, const Ports& ports, const std::vector<QzBase*>& others);

}  // namespace velmorak
