#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace {

namespace fs = std::filesystem;

/// Gives each test, and the programs that it starts, an empty cache folder, an empty state folder and an empty data
/// folder, so that no test modifies those of the user or finds results of another test.
class OwnCache : public testing::EmptyTestEventListener {
public:
    OwnCache() { use("none"); }

private:
    void OnTestStart(const testing::TestInfo& test) override {
        use(std::string(test.test_suite_name()) + "." + test.name());
    }
    void OnTestEnd(const testing::TestInfo&) override { clear(); }
    void OnTestProgramEnd(const testing::UnitTest&) override { clear(); }

    void use(std::string name) {
        for (char& letter : name) {
            letter = letter == '/' ? '-' : letter;
        }
        folder = fs::temp_directory_path() / ("velmorak-cache-" + std::to_string(getpid())) / name;
        setenv("XDG_CACHE_HOME", folder.c_str(), 1);
        unsetenv("XDG_RUNTIME_DIR");
        setenv("XDG_STATE_HOME", (folder.string() + ".state").c_str(), 1);
        setenv("XDG_DATA_HOME", (folder.string() + ".data").c_str(), 1);
    }
    void clear() const {
        std::error_code ignored;
        fs::remove_all(folder.parent_path(), ignored);
    }

    fs::path folder;
};

const bool isListening = [] {
    testing::UnitTest::GetInstance()->listeners().Append(new OwnCache);
    return true;
}();

}  // namespace
