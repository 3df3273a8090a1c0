#include "Steps.h"
#include "safeFile.h"
#include "stateFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <sstream>
#include <vector>

namespace {

namespace fs = std::filesystem;
using testing::IsEmpty;

constexpr int enough = 500;
constexpr const char* attribute = "user.velmorak.note";
const std::string note = "measured in May";

enum class End { saved, refused, killed };

std::string contentOf(const fs::path& file) {
    std::ostringstream text;
    text << std::ifstream(file, std::ios::binary).rdbuf();
    return text.str();
}

std::string textOfSize(std::size_t size, char letter) {
    return std::string(size, letter);
}

/// A document being saved in a process that can be killed.
class KilledSaves : public testing::Test {
protected:
    KilledSaves() {
        std::string name = (fs::temp_directory_path() / "kills-XXXXXX").string();
        base = mkdtemp(name.data());
        folder = base / "documents";
        fs::create_directory(folder);
        fs::create_directory(base / "elsewhere");
        file = folder / "pipe.zedra";
        setenv("XDG_STATE_HOME", (base / "state").c_str(), 1);
    }
    ~KilledSaves() override { fs::remove_all(base); }

    void put(const std::string& text) const { std::ofstream(file, std::ios::binary) << text; }
    virtual void prepare(const std::string& former) {
        fs::remove(file);
        put(former);
    }
    /// Properties that a save must not change.
    virtual void expectKept() {}

    End save(const std::string& text, int killAt = 0) const {
        const pid_t child = fork();
        if (child == 0) {
            steps::Plan followed = plan;
            followed.killAt = killAt;
            steps::follow(followed);
            _exit(saveFile(file, text) ? 0 : 1);
        }
        int status = 0;
        waitpid(child, &status, 0);
        if (WIFSIGNALED(status)) {
            EXPECT_EQ(WTERMSIG(status), SIGKILL);
            return End::killed;
        }
        return WEXITSTATUS(status) == 0 ? End::saved : End::refused;
    }

    std::vector<std::string> leftovers() const {
        std::vector<std::string> found;
        for (const auto& entry : fs::recursive_directory_iterator(base)) {
            const bool isMeant = entry.path() == file || entry.path().parent_path() == base / "elsewhere";
            if (entry.is_regular_file() && !isMeant) {
                found.push_back(entry.path().string());
            }
        }
        return found;
    }

    void expectSaved(const std::string& text) {
        EXPECT_EQ(contentOf(file), text);
        EXPECT_THAT(leftovers(), IsEmpty());
        expectKept();
    }

    /// Kills one save after another, each one step later, until one completes. @return the number of killed saves.
    int killAtEveryStep(const std::string& former, const std::string& next) {
        for (int step = 1;; ++step) {
            prepare(former);
            const End end = save(next, step);
            if (end != End::killed) {
                EXPECT_EQ(end, End::saved);
                expectSaved(next);
                return step - 1;
            }
            const std::string content = contentOf(file);
            const auto copy = copyOf(file);
            if (content != former && content != next && !(copy && contentOf(*copy) == next)) {
                ADD_FAILURE() << "killed at step " << step << ": neither the former nor the new text can be had";
                return step;
            }
            EXPECT_EQ(save(next), End::saved);
            expectSaved(next);
        }
    }

    void killOften() {
        int kills = 0;
        for (std::size_t size = 0; kills < enough && !HasFailure(); ++size) {
            kills += killAtEveryStep(textOfSize(size * 7919, 'f'), textOfSize(1 + (size * 104729) % 65537, 'n'));
        }
    }

    fs::path base;
    fs::path folder;
    fs::path file;
    steps::Plan plan;
};

TEST_F(KilledSaves, atAnyStepLeaveTheFormerOrTheNewDocument) {
    killOften();
}

TEST_F(KilledSaves, leaveNothingWhereTheDocumentIsNew) {
    for (int step = 1; save("new", step) == End::killed; ++step) {
        if (fs::exists(file)) {
            EXPECT_EQ(contentOf(file), "new");
        }
        fs::remove(file);
    }
    expectSaved("new");
}

class KilledSavesOfAHardLink : public KilledSaves {
protected:
    void prepare(const std::string& former) override {
        fs::remove(link);
        KilledSaves::prepare(former);
        fs::create_hard_link(file, link);
    }
    void expectKept() override {
        EXPECT_EQ(fs::hard_link_count(file), 2U);
        EXPECT_EQ(contentOf(link), contentOf(file));
    }
    fs::path link = base / "elsewhere" / "second name.zedra";
};

TEST_F(KilledSavesOfAHardLink, atAnyStepLeaveTheFormerOrTheNewDocument) {
    killOften();
}

class KilledSavesWithAttributes : public KilledSaves {
protected:
    void SetUp() override {
        put("");
        if (setxattr(file.c_str(), attribute, note.data(), note.size(), 0) != 0) {
            GTEST_SKIP() << "the file system has no attributes";
        }
    }
    void prepare(const std::string& former) override {
        KilledSaves::prepare(former);
        setxattr(file.c_str(), attribute, note.data(), note.size(), 0);
    }
    void expectKept() override {
        std::string value(100, '\0');
        const ssize_t size = getxattr(file.c_str(), attribute, value.data(), value.size());
        value.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
        EXPECT_EQ(value, note);
    }
};

TEST_F(KilledSavesWithAttributes, atAnyStepLeaveTheFormerOrTheNewDocument) {
    killOften();
}

TEST_F(KilledSavesWithAttributes, atAnyStepLeaveItAlsoWhereItMayNotBeSet) {
    plan.refusesAttributes = true;
    killOften();
}

TEST_F(KilledSaves, atAnyStepInAReadOnlyFolderLeaveTheFormerOrTheNewDocument) {
    plan.readOnlyFolder = folder;
    killOften();
}

TEST_F(KilledSaves, atAnyStepOnADiskWithoutRoomForTwoLeaveTheFormerOrTheNewDocument) {
    plan.fullFolder = folder;
    killOften();
}

TEST_F(KilledSaves, aCopyInTheStateFolderSaysWhoseItIs) {
    plan.readOnlyFolder = folder;
    put("former");
    int step = 1;
    while (save("new", step) == End::killed && contentOf(file) == "former") {
        ++step;
    }
    const auto copy = copyOf(file);
    ASSERT_TRUE(copy);
    EXPECT_EQ(contentOf(*copy), "new");
    EXPECT_EQ(copy->parent_path(), base / "state" / "velmorak" / "saving");
    EXPECT_EQ(contentOf(fs::path(*copy).replace_extension(".origin")), file);
}

TEST_F(KilledSaves, aDiskThatFailsInTheMiddleGetsTheFormerContentBack) {
    plan.readOnlyFolder = folder;
    setenv("XDG_STATE_HOME", "/dev/null", 1);
    put("former");
    plan.failingWrites = 1;
    EXPECT_EQ(save("a new text"), End::refused);
    expectSaved("former");
}

TEST_F(KilledSaves, whereTheFormerContentCannotBePutBackTheCopyStays) {
    plan.readOnlyFolder = folder;
    put("former");
    plan.failingWrites = 2;
    EXPECT_EQ(save("a new text"), End::refused);
    const auto copy = copyOf(file);
    ASSERT_TRUE(copy);
    EXPECT_EQ(contentOf(*copy), "a new text");
    EXPECT_EQ(interruptedSaveOf(file), copy->string());
}

TEST_F(KilledSaves, whatAnotherProgramIsWritingIsNotTakenForALeftover) {
    const TemporaryFile inUse(folder, 0600);
    put("former");
    EXPECT_EQ(save("new"), End::saved);
    EXPECT_EQ(leftovers().size(), 1U);
}

TEST_F(KilledSaves, aPipeOrADeviceIsRefusedUnopened) {
    ASSERT_EQ(mkfifo(file.c_str(), 0600), 0);
    EXPECT_EQ(save("new"), End::refused);
    EXPECT_TRUE(fs::is_fifo(file));
    file = "/dev/null";
    EXPECT_EQ(save("new"), End::refused);
}

}  // namespace
