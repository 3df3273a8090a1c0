#pragma once

#include "Answers.h"
#include "Widgets.h"
#include "plugin.h"
#include "varWindow.h"
#include "vkWindow.h"

#include <QzManager.h>
#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <sstream>

/// A manager that a test makes anew; final, because the destructor of its class is not virtual.
struct OwnManager final : QzManager {
    using QzManager::QzManager;
};

/// The editor with the shipped library, in a temporary current folder.
class LibraryTest : public testing::Test {
protected:
    class Window : public vkWindow {
    public:
        using vkWindow::actionGroup;
        using vkWindow::canvas;
        using vkWindow::connectionMap;
        using vkWindow::deleteAll;
        using vkWindow::lastDialog;
        using vkWindow::liveNodes;
        using vkWindow::nodeOf;
        using vkWindow::pathMap;
        using vkWindow::pluginWindow;
        using vkWindow::selectedItem;
    };

    LibraryTest() : formerFolder(std::filesystem::current_path()) {
        std::string name = (std::filesystem::temp_directory_path() / "velmorak-test-XXXXXX").string();
        folder = std::filesystem::canonical(mkdtemp(name.data()));
        std::filesystem::current_path(folder);
        restart();
    }

    ~LibraryTest() override {
        for (Gtk::Window* shown : Gtk::Window::list_toplevels()) {
            delete dynamic_cast<varWindow*>(shown);
        }
        window.reset();
        manager.reset();
        std::filesystem::current_path(formerFolder);
        std::filesystem::remove_all(folder);
    }

    void restart() {
        window.reset();
        manager.reset();
        manager.emplace("QzAnalysisFactory");
        manager->SetFontSize(9, 11);
        window = std::make_unique<Window>();
        window->setManager(*manager);
    }

    void act(const std::string& action) { window->actionGroup->get_action(action)->activate(); }

    static std::string contentOf(const std::filesystem::path& file) {
        std::ostringstream text;
        text << std::ifstream(file, std::ios::binary).rdbuf();
        return text.str();
    }

    static void put(const std::filesystem::path& file, const std::string& text) {
        std::ofstream(file, std::ios::binary) << text;
    }

    /// @return the content of the file after opening the text in the emptied window and saving it again.
    std::string throughTheEditor(const std::string& text) {
        const std::filesystem::path file = folder / "document.zedra";
        put(file, text);
        window->deleteAll();
        window->open(file.string());
        put(file, "not saved");
        manager->SetFileName(file.string());
        act("Save");
        return contentOf(file);
    }

    std::optional<OwnManager> manager;
    std::unique_ptr<Window> window;
    std::filesystem::path folder;

private:
    std::filesystem::path formerFolder;
};
