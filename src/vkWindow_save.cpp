#include "plugin.h"
#include "question.h"
#include "safeFile.h"
#include "sentence.h"
#include "stateFolder.h"
#include "visible.h"
#include "vkWindow.h"

#include <QzManager.h>
#include <gtkmm/filechooserdialog.h>

#include <iostream>

namespace {

constexpr const char* removalQuestion = "Remove existing plugins?\n(Continuing without removal experimental)";

void prepare(Gtk::FileChooserDialog& chooser, const Glib::ustring& accept) {
    const auto filter = Gtk::FileFilter::create();
    filter->add_pattern("*" + std::string(documentExtension));
    chooser.set_filter(filter);
    chooser.add_button("Cancel", Gtk::RESPONSE_CANCEL);
    chooser.add_button(accept, Gtk::RESPONSE_OK);
}

// Shows the chooser until it is cancelled or a name is chosen. Deliberate: closing it shows it again.
// @return false if it was cancelled.
bool choose(Gtk::FileChooserDialog& chooser) {
    int response = chooser.run();
    while (response != Gtk::RESPONSE_CANCEL && response != Gtk::RESPONSE_OK) {
        std::cout << "Unexpected button clicked." << std::endl;
        response = chooser.run();
    }
    return response == Gtk::RESPONSE_OK;
}

// Deliberate: only the first occurrence counts. "pipe.zedra.zedra" and "pipe.zedra.bak" get another extension.
std::string withExtension(const std::string& name) {
    const std::string extension = documentExtension;
    const auto found = name.find(extension);
    const bool isAtEnd = found != std::string::npos && found + extension.size() == name.size();
    return isAtEnd ? name : name + extension;
}

// @return the name to save under, empty if the user has cancelled.
std::string askForName() {
    const KeepAboveSuspension suspension;
    Gtk::FileChooserDialog chooser("Save as", Gtk::FILE_CHOOSER_ACTION_SAVE);
    prepare(chooser, "Save");
    while (choose(chooser)) {
        chooser.hide();
        const std::string chosen = chooser.get_filename();
        std::cout << visible(chosen) << std::endl;
        std::string name = withExtension(chosen);
        if (!isThere(name) || confirms("File exists. Overwrite?")) {
            return name;
        }
        chooser.set_current_name("");
    }
    return {};
}

// @return the document to open, empty if the user has cancelled.
std::string askForDocument() {
    const KeepAboveSuspension suspension;
    Gtk::FileChooserDialog chooser("Open", Gtk::FILE_CHOOSER_ACTION_OPEN);
    prepare(chooser, "Open");
    return chooser.run() == Gtk::RESPONSE_OK ? chooser.get_filename() : std::string();
}

// Copies the current content to a backup in the same folder or, if that fails, to the state folder.
bool backUp(const SafeFile& target, std::string_view text, const std::string& file) {
    const auto former = target.formerContent();
    if (target.isNew() || (former && (former->empty() || *former == text))) {
        return true;
    }
    return former && (SafeFile(file + '~', target.formerMode()).save(*former) || !keepRemoved(*former, file).empty());
}

// @param emptied the name of the file if the document has no plug-ins: the file is backed up first.
bool save(const std::string& text, SafeFile& target, const std::string& emptied) {
    return (emptied.empty() || backUp(target, text, emptied)) && target.save(text);
}

// Removed plug-ins are kept until others have replaced them.
void forgetIfReplaced(const std::string& kept, const QzManager& manager) {
    if (!manager.plugins.empty()) {
        forgetRemoved(kept);
    } else if (!kept.empty()) {
        say("The plug-ins that were removed are kept in " + visible(kept));
    }
}

}  // namespace

void vkWindow::save_call() {
    if (manager->fileName.empty()) {
        saveas_call();
        return;
    }
    write(manager->fileName);
}

void vkWindow::saveas_call() {
    const std::string name = askForName();
    if (!name.empty()) {
        manager->SetFileName(name);
        write(name);
    }
}

void vkWindow::write(const std::string& file) {
    SafeFile target(file);
    if (!target.isOpen() || !save(manager->DocumentText(), target, manager->plugins.empty() ? file : "")) {
        say("Couldn't write " + visible(file));
        return;
    }
    modified = false;
    for (plugin* node : liveNodes()) {
        node->changed = false;
    }
}

bool vkWindow::askForRemoval(std::string& kept) {
    const bool isRemoved = confirms(removalQuestion);
    if (isRemoved) {
        kept = keepRemoved(manager->DocumentText(), manager->fileName);
        deleteAll();
    }
    deselect();
    return isRemoved;
}

void vkWindow::open_call() {
    std::string removed;
    const bool areKept = !manager->plugins.empty() && !askForRemoval(removed);
    const std::string file = askForDocument();
    if (!file.empty()) {
        open(file);
        modified = areKept;
    }
    forgetIfReplaced(removed, *manager);
}

void vkWindow::checkOpen(const Glib::ustring& file) {
    std::cout << "Trying to open " << visible(file) << std::endl;
    std::string removed;
    if (!manager->plugins.empty()) {
        askForRemoval(removed);
    }
    // Deliberate: unlike open_call, clears the modified flag even if plug-ins were kept.
    open(file);
    forgetIfReplaced(removed, *manager);
}
