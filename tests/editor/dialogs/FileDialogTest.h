#pragma once

#include "DialogTest.h"

#include <cstdlib>

/// A chooser that is closed while it completes a name triggers warnings inside the toolkit, which must not fail the
/// test: it asks for the rows and the selection of a list that is gone.
inline gboolean isOurs(const char* /*domain*/, GLogLevelFlags /*level*/, const char* message, void* /*unused*/) {
    const std::string said = message;
    return said.find("assertion 'GTK_IS_TREE_VIEW (") == std::string::npos &&
           said.find("assertion 'GTK_IS_TREE_SELECTION (") == std::string::npos;
}

/// An editor that saves and opens documents.
class FileDialogTest : public DialogTest {
protected:
    FileDialogTest() { g_test_log_set_fatal_handler(isOurs, nullptr); }
    ~FileDialogTest() override { g_test_log_set_fatal_handler(nullptr, nullptr); }

    /// One plug-in with unsaved values, in a document with unsaved changes.
    void edit() {
        add("Number").changed = true;
        window->modified = true;
    }

    void expectFlags(bool areSet) {
        EXPECT_EQ(window->modified, areSet);
        EXPECT_EQ(node("Number").changed, areSet);
    }

    std::string path(const std::string& name) const { return (folder / name).string(); }

    /// @return the standard output of the action.
    std::string outputOf(const std::string& action) {
        testing::internal::CaptureStdout();
        act(action);
        return testing::internal::GetCapturedStdout();
    }

    static std::string removedFolder() { return std::string(std::getenv("XDG_STATE_HOME")) + "/velmorak/removed"; }

    /// The backups of removed pipelines.
    static std::vector<std::string> keptTexts(const std::string& extension = ".zedra") {
        std::vector<std::string> texts;
        std::error_code missing;
        for (const auto& entry : std::filesystem::directory_iterator(removedFolder(), missing)) {
            if (entry.path().extension() == extension) {
                std::ostringstream text;
                text << std::ifstream(entry.path(), std::ios::binary).rdbuf();
                texts.push_back(text.str());
            }
        }
        return texts;
    }

    std::string errorsOf(const std::string& action) {
        testing::internal::CaptureStderr();
        act(action);
        return testing::internal::GetCapturedStderr();
    }
};
