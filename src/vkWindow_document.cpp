#include "vkWindow.h"

#include <QzBase.h>
#include <QzManager.h>

namespace {

/// The output that feeds an input; empty where none does.
PortRef sourceOf(const QzBase::Input& input) {
    if (!input.source) {
        return {};
    }
    const auto& outputs = input.source->Outputs();
    return input.sourceOutput < outputs.size() ? PortRef{input.source->name, outputs[input.sourceOutput].name}
                                               : PortRef{};
}

}  // namespace

void vkWindow::open(const Glib::ustring& file) {
    endGestures();
    manager->ReadDocument(file);
    for (QzBase* object : manager->plugins) {
        addPlugin(object, "");
    }
    for (QzBase* object : manager->plugins) {
        for (const QzBase::Input* input : object->FullInputs()) {
            const PortRef source = sourceOf(*input);
            if (!source.empty()) {
                connect(source, {object->name, input->name});
            }
        }
    }
    modified = false;
}
