#pragma once

#include "graph/ManagerImpl.h"

namespace velmorak {

/// A plug-in of the catalogue's kind with the kind's own ports and values, not yet among the manager's plug-ins.
/// @throws std::exception when the kind cannot tell its ports.
std::unique_ptr<GraphNode> makeNode(QzManager& manager, std::size_t kind, const std::string& name);

/// A plug-in without ports whose kind no collection offers.
std::unique_ptr<GraphNode> makeUnknownNode(QzManager& manager, const std::string& kindName, const std::string& name);

/// Appends the plug-in to the manager's list. The caller holds the lock.
void takeIn(QzManager& manager, std::unique_ptr<GraphNode> node);

/// "Adder1 (Adder)".
std::string nameForMessages(const QzBase& node);

}  // namespace velmorak
