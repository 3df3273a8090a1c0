#pragma once

#include "Answers.h"
#include "EditorTest.h"
#include "Widgets.h"

#include <glibmm/main.h>

#include <filesystem>
#include <fstream>
#include <sstream>

/// An editor whose current folder is a temporary one.
class DialogTest : public EditorTest {
protected:
    DialogTest() : formerFolder(std::filesystem::current_path()) {
        std::string name = (std::filesystem::temp_directory_path() / "velmorak-test-XXXXXX").string();
        folder = std::filesystem::canonical(mkdtemp(name.data()));
        std::filesystem::current_path(folder);
    }

    ~DialogTest() override {
        std::filesystem::current_path(formerFolder);
        std::filesystem::remove_all(folder);
    }

    void put(const std::string& name, const std::string& text) const {
        std::ofstream(folder / name, std::ios::binary) << text;
    }

    std::string contentOf(const std::string& name) const {
        std::ostringstream text;
        text << std::ifstream(folder / name, std::ios::binary).rdbuf();
        return text.str();
    }

    bool exists(const std::string& name) const { return std::filesystem::exists(folder / name); }

    /// Activates an action, like its menu item.
    void act(const std::string& action) { window->actionGroup->get_action(action)->activate(); }

    /// Closes the window like the window manager.
    static void closeByManager(Gtk::Window& shown) {
        shown.close();
        pumpUntil([&shown] { return !shown.is_visible(); });
    }

    std::filesystem::path folder;

private:
    std::filesystem::path formerFolder;
};
