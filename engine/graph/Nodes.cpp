#include "graph/Nodes.h"

#include "graph/PortChange.h"
#include "graph/Values.h"
#include "run/messages/Visible.h"

namespace velmorak {
namespace {

std::unique_ptr<GraphNode> bareNode(QzManager& manager, const QzKind& record, const std::string& name) {
    auto part = std::make_unique<QzBase::Part>();
    part->manager = &manager;
    part->record = &record;
    auto node = std::make_unique<GraphNode>(part.release());
    node->name = name;
    node->description = record.summary;
    return node;
}

const QzKind& unknownKind(QzManager::Part& owner, const std::string& kindName) {
    std::unique_ptr<QzKind>& record = owner.unknownKinds[kindName];
    if (!record) {
        record = std::make_unique<QzKind>();
        record->id = '/' + kindName;
        record->name = kindName;
        record->summary = "No collection of this installation offers the kind " + kindName + ".";
    }
    return *record;
}

}  // namespace

std::unique_ptr<GraphNode> makeNode(QzManager& manager, std::size_t kind, const std::string& name) {
    const Catalogue& catalogue = QzManager::Part::of(manager).catalogue;
    auto node = bareNode(manager, catalogue.kinds()[kind], name);
    QzBase::Part::of(*node).kind = &catalogue.kind(kind);
    changePorts(*node, portsOf(catalogue.kind(kind), {}), {});
    return node;
}

std::unique_ptr<GraphNode> makeUnknownNode(QzManager& manager, const std::string& kindName, const std::string& name) {
    return bareNode(manager, unknownKind(QzManager::Part::of(manager), kindName), name);
}

void addNode(QzManager& manager, std::unique_ptr<GraphNode> node) {
    GraphNode* const key = node.get();
    QzManager::Part::of(manager).owned.emplace(key, std::move(node));
    manager.plugins.push_back(key);
}

std::string nameForMessages(const QzBase& node) {
    return shortened(node.name) + " (" + shortened(QzBase::Part::of(node).record->name) + ')';
}

}  // namespace velmorak
