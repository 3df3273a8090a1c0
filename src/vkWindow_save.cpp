#include "plugin.h"
#include "question.h"
#include "safeFile.h"
#include "vkWindow.h"

#include <QzManager.h>
#include <gtkmm/filechooserdialog.h>

#include <fstream>
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
    Gtk::FileChooserDialog chooser("Save as", Gtk::FILE_CHOOSER_ACTION_SAVE);
    prepare(chooser, "Save");
    while (choose(chooser)) {
        chooser.hide();
        const std::string chosen = chooser.get_filename();
        std::cout << chosen << std::endl;
        std::string name = withExtension(chosen);
        if (!std::ifstream(name).is_open() || confirms("File exists. Overwrite?")) {
            return name;
        }
        chooser.set_current_name("");
    }
    return {};
}

// @return the document to open, empty when the user gave up.
std::string askForDocument() {
    Gtk::FileChooserDialog chooser("Open", Gtk::FILE_CHOOSER_ACTION_OPEN);
    prepare(chooser, "Open");
    return chooser.run() == Gtk::RESPONSE_OK ? chooser.get_filename() : std::string();
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
    if (!saveFile(file, manager->DocumentText())) {
        std::cerr << "Couldn't write " << file << std::endl;
        return;
    }
    modified = false;
    for (plugin* node : liveNodes()) {
        node->changed = false;
    }
}

bool vkWindow::askForRemoval() {
    const bool isRemoved = confirms(removalQuestion);
    if (isRemoved) {
        deleteAll();
    }
    selectedItem.reset();
    return isRemoved;
}

void vkWindow::open_call() {
    const bool areKept = !manager->plugins.empty() && !askForRemoval();
    const std::string file = askForDocument();
    if (!file.empty()) {
        open(file);
        modified = areKept;
    }
}

void vkWindow::checkOpen(const Glib::ustring& file) {
    std::cout << "Trying to open " << file.raw() << std::endl;
    if (!manager->plugins.empty()) {
        askForRemoval();
    }
    // Clears the modified flag, also where plug-ins were kept; deliberately unlike open_call.
    open(file);
}
