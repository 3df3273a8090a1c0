#include "bindings.h"
#include "safeFile.h"
#include "stateFolder.h"
#include "visible.h"
#include "vkWindow.h"

#include <QzBase.h>
#include <QzManager.h>

#include <iostream>

namespace {

// A program that was killed while it wrote the file in place has left all of the text in a copy.
void tellOfInterruptedSave(const std::string& file) {
    const auto copy = interruptedSaveOf(file);
    if (copy) {
        std::cerr << "The last save of " << visible(file) << " was interrupted; its text is in " << visible(*copy)
                  << std::endl;
    }
}

}  // namespace

void vkWindow::open(const Glib::ustring& file) {
    endGestures();
    manager->ReadDocument(file);
    tellOfInterruptedSave(file);
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
