#include "safeFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <vector>

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

std::string contentOf(const fs::path& file) {
    std::ostringstream text;
    text << std::ifstream(file, std::ios::binary).rdbuf();
    return text.str();
}

mode_t modeOf(const fs::path& file) {
    struct stat status {};
    return stat(file.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
}

// Limits the size of this process's files, like a disk that becomes full in the middle of a write.
class FullDisk {
public:
    explicit FullDisk(rlim_t bytes) {
        getrlimit(RLIMIT_FSIZE, &former);
        const rlimit limit{bytes, former.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk() { setrlimit(RLIMIT_FSIZE, &former); }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    rlimit former{};
};

class SafeFile : public testing::Test {
protected:
    SafeFile() {
        std::string name = (fs::temp_directory_path() / "safeFile-XXXXXX").string();
        folder = mkdtemp(name.data());
        file = folder / "pipe.zedra";
    }

    ~SafeFile() override {
        fs::permissions(folder, fs::perms::owner_all);
        fs::remove_all(folder);
    }

    void put(const std::string& text) const { std::ofstream(file, std::ios::binary) << text; }

    std::vector<std::string> names() const {
        std::vector<std::string> found;
        for (const auto& entry : fs::directory_iterator(folder)) {
            found.push_back(entry.path().filename());
        }
        return found;
    }

    fs::path folder;
    fs::path file;
};

TEST_F(SafeFile, aNewFileHoldsTheTextAndNothingElseIsLeft) {
    EXPECT_TRUE(saveFile(file, "one\ntwo"));
    EXPECT_EQ(contentOf(file), "one\ntwo");
    EXPECT_THAT(names(), ElementsAre("pipe.zedra"));
}

TEST_F(SafeFile, aNewFileHasTheModeThatTheUserWants) {
    const mode_t former = umask(027);
    EXPECT_TRUE(saveFile(file, "text"));
    umask(former);
    EXPECT_EQ(modeOf(file), 0640U);
}

TEST_F(SafeFile, aShorterTextLeavesNothingOfTheLongerOne) {
    put(std::string(5000, 'x'));
    EXPECT_TRUE(saveFile(file, "short"));
    EXPECT_EQ(contentOf(file), "short");
}

TEST_F(SafeFile, anEmptyTextEmptiesTheFile) {
    put("text");
    EXPECT_TRUE(saveFile(file, ""));
    EXPECT_EQ(contentOf(file), "");
}

TEST_F(SafeFile, theModeIsKept) {
    put("old");
    fs::permissions(file, fs::perms(0604));
    EXPECT_TRUE(saveFile(file, "new"));
    EXPECT_EQ(modeOf(file), 0604U);
}

TEST_F(SafeFile, aReaderOfTheFormerFileGoesOnReadingIt) {
    put("former");
    std::ifstream reader(file);
    EXPECT_TRUE(saveFile(file, "new"));
    std::string text;
    reader >> text;
    EXPECT_EQ(text, "former");
}

TEST_F(SafeFile, aLinkStaysALinkAndItsTargetGetsTheText) {
    put("old");
    fs::create_directory(folder / "links");
    fs::create_symlink("../pipe.zedra", folder / "links" / "first");
    fs::create_symlink("first", folder / "links" / "second");
    EXPECT_TRUE(saveFile(folder / "links" / "second", "new"));
    EXPECT_TRUE(fs::is_symlink(folder / "links" / "second"));
    EXPECT_TRUE(fs::is_symlink(folder / "links" / "first"));
    EXPECT_EQ(contentOf(file), "new");
    EXPECT_FALSE(fs::is_symlink(file));
}

TEST_F(SafeFile, aLinkToNothingMakesItsTarget) {
    fs::create_symlink("pipe.zedra", folder / "link");
    EXPECT_TRUE(saveFile(folder / "link", "new"));
    EXPECT_EQ(contentOf(file), "new");
    EXPECT_TRUE(fs::is_symlink(folder / "link"));
}

TEST_F(SafeFile, aCircleOfLinksCannotBeWritten) {
    fs::create_symlink("b", folder / "a");
    fs::create_symlink("a", folder / "b");
    EXPECT_FALSE(saveFile(folder / "a", "new"));
}

TEST_F(SafeFile, aNameAsLongAsAFileSystemAllowsIsWritten) {
    const fs::path longest = folder / std::string(255, 'n');
    EXPECT_TRUE(saveFile(longest, "text"));
    EXPECT_EQ(contentOf(longest), "text");
}

TEST_F(SafeFile, aFolderThatIsNotThereOrAFolderInPlaceOfTheFileFails) {
    EXPECT_FALSE(saveFile(folder / "none" / "pipe.zedra", "text"));
    EXPECT_FALSE(saveFile(folder, "text"));
    EXPECT_FALSE(saveFile("", "text"));
    EXPECT_THAT(names(), ElementsAre());
}

TEST_F(SafeFile, aDiskThatIsFullInTheMiddleLeavesTheFormerContent) {
    put("former");
    {
        const FullDisk disk(4096);
        EXPECT_FALSE(saveFile(file, std::string(10000, 'x')));
    }
    EXPECT_EQ(contentOf(file), "former");
    EXPECT_THAT(names(), ElementsAre("pipe.zedra"));
}

TEST_F(SafeFile, aDiskThatIsFullLeavesNoNewFile) {
    {
        const FullDisk disk(4096);
        EXPECT_FALSE(saveFile(file, std::string(10000, 'x')));
    }
    EXPECT_THAT(names(), ElementsAre());
}

TEST_F(SafeFile, aDeviceIsRefused) {
    EXPECT_FALSE(saveFile("/dev/null", "text"));
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
}

TEST_F(SafeFile, aPipeIsThereWithoutBeingWaitedFor) {
    ASSERT_EQ(mkfifo(file.c_str(), 0600), 0);
    EXPECT_TRUE(isThere(file));
    EXPECT_FALSE(isThere(folder / "none"));
}

// Runs as a user without rights, because the superuser may write everywhere.
class SafeFileOfAUser : public SafeFile {
protected:
    SafeFileOfAUser() : isSuperuser(geteuid() == 0) {
        put("former");
        if (isSuperuser) {
            become(nobody);
        }
    }

    ~SafeFileOfAUser() override { becomeSelf(); }

    void become(uid_t user) const {
        if (chown(folder.c_str(), user, static_cast<gid_t>(-1)) != 0 ||
            chown(file.c_str(), user, static_cast<gid_t>(-1)) != 0 || seteuid(user) != 0) {
            ADD_FAILURE() << "cannot become user " << user;
        }
    }

    void becomeSelf() const {
        if (isSuperuser && seteuid(0) != 0) {
            ADD_FAILURE() << "cannot become the superuser again";
        }
    }

    static constexpr uid_t nobody = 65534;
    bool isSuperuser;
};

TEST_F(SafeFileOfAUser, aFileThatMayNotBeWrittenIsLeftAlone) {
    fs::permissions(file, fs::perms(0444));
    EXPECT_FALSE(saveFile(file, "new"));
    EXPECT_EQ(contentOf(file), "former");
}

TEST_F(SafeFileOfAUser, whereNoFileCanBeMadeBesideItTheFileIsWrittenInPlace) {
    fs::permissions(folder, fs::perms(0555));
    EXPECT_TRUE(saveFile(file, "new"));
    EXPECT_EQ(contentOf(file), "new");
}

TEST_F(SafeFileOfAUser, inPlaceAShorterTextLeavesNothingOfTheLongerOne) {
    put(std::string(9000, 'x'));
    fs::permissions(folder, fs::perms(0555));
    EXPECT_TRUE(saveFile(file, "short"));
    EXPECT_EQ(contentOf(file), "short");
}

TEST_F(SafeFileOfAUser, inPlaceAFullDiskLeavesTheFormerContent) {
    fs::permissions(folder, fs::perms(0555));
    {
        const FullDisk disk(4096);
        EXPECT_FALSE(saveFile(file, std::string(10000, 'x')));
    }
    EXPECT_EQ(contentOf(file), "former");
}

TEST_F(SafeFileOfAUser, aNewFileInAFolderThatMayNotBeWrittenFails) {
    fs::permissions(folder, fs::perms(0555));
    EXPECT_FALSE(saveFile(folder / "other.zedra", "new"));
    EXPECT_THAT(names(), ElementsAre("pipe.zedra"));
}

TEST_F(SafeFileOfAUser, aFileOfAnotherOwnerKeepsItsOwner) {
    becomeSelf();
    struct stat former {};
    ASSERT_EQ(chown(file.c_str(), isSuperuser ? 1 : geteuid(), static_cast<gid_t>(-1)), 0);
    fs::permissions(file, fs::perms(0666));
    ASSERT_EQ(stat(file.c_str(), &former), 0);
    if (isSuperuser) {
        ASSERT_EQ(seteuid(nobody), 0);
    }
    EXPECT_TRUE(saveFile(file, "new"));
    struct stat status {};
    ASSERT_EQ(stat(file.c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, former.st_uid);
    EXPECT_EQ(contentOf(file), "new");
}

}  // namespace
