#include "graph/ManagerImpl.h"
#include "graph/Values.h"
#include "graph/document/DocumentLoad.h"

namespace velmorak {
namespace {

ForeignFields fieldsOf(const std::map<std::string, ForeignFields>& all, const std::string& port) {
    const auto found = all.find(port);
    return found == all.end() ? ForeignFields() : found->second;
}

DocumentInput inputOf(const QzBase::Part& part, std::size_t position) {
    const QzBase::Input& input = part.inputs[position];
    DocumentInput made;
    made.name = input.name;
    if (takesText(part.inputSpecs[position]) || !input.value.empty()) {
        made.value = input.value;
    }
    if (input.source) {
        made.from = {input.source->name, QzBase::Part::of(*input.source).outputs[input.sourceOutput].name};
    } else if (const auto loose = part.unknownFields.danglingSources.find(input.name);
               loose != part.unknownFields.danglingSources.end()) {
        made.from = loose->second;
    }
    made.foreign = fieldsOf(part.unknownFields.inputFields, input.name);
    return made;
}

DocumentPlugin pluginOf(const QzBase& node) {
    const QzBase::Part& part = QzBase::Part::of(node);
    DocumentPlugin made;
    made.name = node.name;
    made.kind = part.record->name;
    made.x = part.x;
    made.y = part.y;
    made.isCollapsed = !part.isExpanded;
    for (std::size_t i = 0; i < part.inputs.size(); ++i) {
        made.inputs.push_back(inputOf(part, i));
    }
    for (const UnknownInput& stray : part.unknownFields.unknownInputs) {
        made.inputs.push_back(stray);
    }
    for (const QzBase::Output& output : part.outputs) {
        made.outputs.push_back({output.name, output.type, fieldsOf(part.unknownFields.outputFields, output.name)});
    }
    made.foreign = part.unknownFields.fields;
    return made;
}

}  // namespace

Document documentOf(const QzManager& manager) {
    const QzManager::Part& owner = QzManager::Part::of(manager);
    Document made;
    made.summary = owner.summary;
    for (const QzBase* node : manager.plugins) {
        made.plugins.push_back(pluginOf(*node));
    }
    made.foreign = owner.documentFields;
    return made;
}

}  // namespace velmorak
