#include "plugin.h"
#include "question.h"
#include "safeFile.h"
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
    filter->add_pattern("*.zedra");
    chooser.set_filter(filter);
    chooser.add_button("Cancel", Gtk::RESPONSE_CANCEL);
    chooser.add_button(accept, Gtk::RESPONSE_OK);
}

// Shows the chooser until it is cancelled or a name is taken; deliberately, closing it does not end it.
// @return false when it was cancelled.
bool choose(Gtk::FileChooserDialog& chooser) {
    int response = chooser.run();
    while (response != Gtk::RESPONSE_CANCEL && response != Gtk::RESPONSE_OK) {
        std::cout << "Unexpected button clicked." << std::endl;
        response = chooser.run();
    }
    return response == Gtk::RESPONSE_OK;
}

// The first extension decides: pipe.zedra.bak gets another one.
std::string withExtension(const std::string& name) {
    const std::string extension = ".zedra";
    const auto found = name.find(extension);
    const bool isAtEnd = found != std::string::npos && found + extension.size() == name.size();
    return isAtEnd ? name : name + extension;
}

// @return the name to save under, empty when the user gave up.
std::string askForName() {
    const DialogsStepBack inFront;
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

// @return the document to open, empty when the user gave up.
std::string askForDocument() {
    const DialogsStepBack inFront;
    Gtk::FileChooserDialog chooser("Open", Gtk::FILE_CHOOSER_ACTION_OPEN);
    prepare(chooser, "Open");
    return chooser.run() == Gtk::RESPONSE_OK ? chooser.get_filename() : std::string();
}

// What stands in the file goes to a file beside it, else to the state folder.
bool keepFormer(const SafeFile& target, std::string_view text, const std::string& file) {
    const auto former = target.formerContent();
    if (target.isNew() || (former && (former->empty() || *former == text))) {
        return true;
    }
    return former && (SafeFile(file + '~', target.formerMode()).save(*former) || !keepRemoved(*former, file).empty());
}

// @param emptied the name of the file where the document has no plug-ins (any more): what the file holds is kept.
bool save(const std::string& text, SafeFile& target, const std::string& emptied) {
    return (emptied.empty() || keepFormer(target, text, emptied)) && target.save(text);
}

// The plug-ins that were removed are not lost where no others came.
void forgetIfReplaced(const std::string& kept, const QzManager& manager) {
    if (!manager.plugins.empty()) {
        forgetRemoved(kept);
    } else if (!kept.empty()) {
        std::cerr << "The plug-ins that were removed are kept in " << visible(kept) << std::endl;
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
        std::cerr << "Couldn't write " << visible(file) << std::endl;
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
    // Clears the modified flag, also where plug-ins were kept; deliberately unlike open_call.
    open(file);
    forgetIfReplaced(removed, *manager);
}
