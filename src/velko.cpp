#include "libraryVersion.h"
#include "toolkit.h"
#include "vkWindow.h"

#include <QzManager.h>
#include <glibmm/thread.h>
#include <gtkmm/main.h>

#include <cstring>
#include <iostream>

namespace {

/// Only the exact arguments "-a" and "-run" are options; every other one is a document, and the last document counts.
void readArguments(int count, char** arguments, std::string& aidaFile, Glib::ustring& document, bool& isRunWanted) {
    for (int i = 1; i < count; ++i) {
        if (std::strcmp(arguments[i], "-a") == 0) {
            if (i + 1 < count) {
                aidaFile = arguments[++i];
            }
        } else if (std::strcmp(arguments[i], "-run") == 0) {
            isRunWanted = true;
        } else {
            document = arguments[i];
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (const std::string error = libraryError(); !error.empty()) {
        std::cerr << error << '\n';
        return 1;
    }
    Glib::thread_init();

    std::string aidaFile;
    Glib::ustring document;
    bool isRunWanted = false;
    // Deliberate: read before the toolkit removes its own options from the vector, so that these, too, name a document.
    readArguments(argc, argv, aidaFile, document, isRunWanted);

    const auto kit = startToolkit(argc, argv);
    QzManager manager("QzAnalysisFactory");
    if (!aidaFile.empty()) {
        manager.loadAIDA(aidaFile);
    }
    manager.SetFontSize(9, 11);
    QzManager::GetListOfPlugins(std::vector<std::string>());

    vkWindow window;
    window.setManager(manager);
    if (!document.empty()) {
        window.open(document);
        if (isRunWanted) {
            window.setRun();
        }
    }
    Gtk::Main::run(window);
    return 0;
}
