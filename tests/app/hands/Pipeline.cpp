#include "Pipeline.h"

#include <QzManager.h>

#include <stdexcept>

namespace {

constexpr const char* factory = "QzAnalysisFactory";
constexpr double canvasHeight = 1200;

SavedNode snapshot(QzBase& object) {
    SavedNode node;
    node.name = object.name;
    float x = 0;
    float y = 0;
    float width = 0;
    float height = 0;
    object.GetPosition(x, y);
    object.GetOuterExtent(width, height);
    node.x = x;
    node.y = canvasHeight - y - height;
    object.GetDrawnExtent(width, height);
    node.width = width;
    node.isExpanded = object.IsExpanded();
    for (const QzBase::Input* input : node.isExpanded ? object.FullInputs() : object.ReducedInputs()) {
        node.shownInputs.push_back(input->name);
    }
    for (const QzBase::Output* output : node.isExpanded ? object.FullOutputs() : object.ReducedOutputs()) {
        node.shownOutputs.push_back(output->name);
    }
    for (const QzBase::Input& input : object.Inputs()) {
        if (input.source) {
            node.sources[input.name] = input.source->name + "." + input.source->Outputs().at(input.sourceOutput).name;
        }
    }
    return node;
}

}  // namespace

SavedPipeline SavedPipeline::read(const std::filesystem::path& file) {
    QzManager manager(factory);
    manager.SetFontSize(9, 11);
    manager.ReadDocument(file.string());
    SavedPipeline pipeline;
    for (QzBase* object : manager.plugins) {
        pipeline.nodes.push_back(snapshot(*object));
    }
    pipeline.textAgain = manager.DocumentText();
    return pipeline;
}

const SavedNode& SavedPipeline::node(const std::string& name) const {
    for (const SavedNode& node : nodes) {
        if (node.name == name) {
            return node;
        }
    }
    throw std::out_of_range("no plug-in " + name + " in the saved document");
}

std::vector<std::string> SavedPipeline::names() const {
    std::vector<std::string> all;
    for (const SavedNode& node : nodes) {
        all.push_back(node.name);
    }
    return all;
}

WiredKind WiredKind::first() {
    QzManager manager(factory);
    for (std::size_t number = 0; number < QzManager::GetPlugins().size(); ++number) {
        const std::string& name = QzManager::GetPlugins()[number].name;
        QzBase* object = manager.CreatePlugin(static_cast<std::uint16_t>(number), name);
        if (object->Inputs().size() >= 2 && !object->Outputs().empty()) {
            return {static_cast<int>(number),
                    name,
                    {object->Inputs()[0].name, object->Inputs()[1].name},
                    object->Outputs()[0].name};
        }
    }
    throw std::out_of_range("no kind with two inputs and an output");
}
