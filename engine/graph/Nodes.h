#pragma once

#include "graph/ManagerImpl.h"

namespace velmorak {

/// Creates a plug-in with the default ports and values of a kind. It does not yet belong to the manager.
/// @throws std::exception when the kind cannot list its ports.
std::unique_ptr<GraphNode> makeNode(QzManager& manager, std::size_t kind, const std::string& name);

/// Creates a plug-in without ports for a kind that no collection offers.
std::unique_ptr<GraphNode> makeUnknownNode(QzManager& manager, const std::string& kindName, const std::string& name);

/// Appends the plug-in to the manager's list. The caller holds the lock.
void addNode(QzManager& manager, std::unique_ptr<GraphNode> node);

/// "Adder1 (Adder)".
std::string nameForMessages(const QzBase& node);

}  // namespace velmorak
