#include "Desktop.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <fstream>
#include <memory>

using ::testing::HasSubstr;
using ::testing::Not;

namespace {

/// The program with a folder that never answers.
class DeadMount : public testing::Test {
protected:
    bool opens(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), VELMORAK_PROGRAM);
        Process::Setting setting = desktop.setting(folder.path());
        setting.environment["LD_PRELOAD"] = VELMORAK_DEAD_FOLDER;
        setting.environment["VELMORAK_TEST_DEAD_FOLDER"] = mount.path().string();
        // A sanitizer's library need not be the first one.
        const char* const options = std::getenv("ASAN_OPTIONS");
        setting.environment["ASAN_OPTIONS"] = std::string(options ? options : "") + ":verify_asan_link_order=0";
        editor = std::make_unique<Process>(arguments, setting);
        window = desktop.windowOf(*editor);
        return !window.empty() && desktop.activate(window);
    }

    std::optional<int> quit() {
        desktop.pressKeys({"ctrl+q"});
        return editor->wait();
    }

    TemporaryFolder folder;
    TemporaryFolder mount;
    Desktop desktop;
    std::unique_ptr<Process> editor;
    std::string window;
};

TEST_F(DeadMount, isNotWaitedForWithoutAWindowWhenItHasTheDocument) {
    const std::string file = mount.path() / "far.zedra";
    ASSERT_TRUE(opens({file})) << editor->errors();
    EXPECT_THAT(editor->errors(), HasSubstr("Waiting for " + file + ": its file system does not answer.\n"));
    EXPECT_THAT(editor->errors(), HasSubstr(file + ": cannot be read: its file system does not answer.\n"));
    EXPECT_EQ(quit(), 0) << editor->errors();
}

TEST_F(DeadMount, isNotWaitedForWithoutAWindowWhenItHasTheAidaFile) {
    const std::string file = mount.path() / "far.aida";
    ASSERT_TRUE(opens({"-a", file})) << editor->errors();
    EXPECT_THAT(editor->errors(), HasSubstr("Still waiting for the AIDA file " + file + ", in the background.\n"));
    EXPECT_EQ(quit(), 0) << editor->errors();
}

TEST_F(DeadMount, isNotWaitedForWhenItHasTheDataOfADocument) {
    const std::string file = folder.path() / "near.zedra";
    std::ofstream(file) << R"({"zedra": 1, "plugins": [{"name": "Far", "kind": "CsvTable", "position": [40, 200],
        "inputs": [{"name": "file", "value": ")"
                        << (mount.path() / "far.csv").string() << R"("}]}]})";
    ASSERT_TRUE(opens({file})) << editor->errors();
    EXPECT_THAT(editor->errors(), Not(HasSubstr("CsvTable"))) << "the kind is there";
    EXPECT_EQ(quit(), 0) << editor->errors();
}

}  // namespace
