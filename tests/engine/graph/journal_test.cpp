#include "GraphFixture.h"

#include "graph/document/Journal.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <future>
#include <random>
#include <vector>

namespace velmorak::test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::SizeIs;

constexpr std::chrono::milliseconds atOnce{0};

std::vector<fs::path> documentsIn(const fs::path& folder) {
    std::vector<fs::path> found;
    if (fs::exists(folder)) {
        for (const auto& entry : fs::directory_iterator(folder)) {
            if (entry.path().extension() == ".zedra" && !entry.path().filename().string().starts_with('.')) {
                found.push_back(entry.path());
            }
        }
    }
    std::sort(found.begin(), found.end());
    return found;
}

std::string originOf(fs::path document) {
    return contentOf(document.replace_extension(".origin"));
}

TEST(Journal, keepsWhatIsNotSaved) {
    const Folder folder;
    UnsavedDocument now{"text", "/there/pipe.zedra", false};
    Journal journal(folder.path / "journal", [&] { return now; });
    journal.update();
    ASSERT_THAT(documentsIn(folder.path / "journal"), SizeIs(1));
    const fs::path file = documentsIn(folder.path / "journal").front();
    EXPECT_EQ(contentOf(file), "text");
    EXPECT_EQ(originOf(file), "/there/pipe.zedra");
    now = {"longer text", "/t.zedra", false};
    journal.update();
    EXPECT_EQ(documentsIn(folder.path / "journal").front(), file);
    EXPECT_EQ(contentOf(file), "longer text");
    EXPECT_EQ(originOf(file), "/t.zedra");
}

TEST(Journal, isGoneWhenTheDocumentIsSavedEmptyOrClosed) {
    const Folder folder;
    UnsavedDocument now{"text", (folder.path / "pipe.zedra").string(), false};
    {
        Journal journal(folder.path / "journal", [&] { return now; });
        journal.update();
        EXPECT_THAT(documentsIn(folder.path / "journal"), SizeIs(1));
        folder.write("pipe.zedra", "text");
        journal.update();
        EXPECT_TRUE(fs::is_empty(folder.path / "journal"));
        now.text = "other";
        journal.update();
        EXPECT_THAT(documentsIn(folder.path / "journal"), SizeIs(1));
        now.isEmpty = true;
        journal.update();
        EXPECT_TRUE(fs::is_empty(folder.path / "journal"));
        now.isEmpty = false;
        journal.update();
        EXPECT_THAT(documentsIn(folder.path / "journal"), SizeIs(1));
    }
    EXPECT_TRUE(fs::is_empty(folder.path / "journal"));
}

TEST(Journal, isWrittenAfterAChangeOnAThreadOfItsOwn) {
    const Folder folder;
    std::promise<void> asked;
    Journal journal(
        folder.path / "journal",
        [&] {
            asked.set_value();
            return UnsavedDocument{"text", "", false};
        },
        atOnce);
    journal.noteChange();
    asked.get_future().wait();
}

TEST(Journal, isGivenUpInSilenceWhereItCannotBeWritten) {
    const Folder folder;
    folder.write("journal", "a file");
    Journal journal(folder.path / "journal", [] { return UnsavedDocument{"text", "", false}; });
    journal.update();
    EXPECT_EQ(contentOf(folder.path / "journal"), "a file");
    Journal none("", [] { return UnsavedDocument{"text", "", false}; });
    none.update();
    none.noteChange();
}

TEST(Journal, ofARunningProgramIsNotLeft) {
    const Folder folder;
    Journal journal(folder.path, [] { return UnsavedDocument{"text", "", false}; });
    journal.update();
    EXPECT_EQ(leftJournals(folder.path), 0U);
    folder.write("20260101T000000Z-1-1.zedra", "left");
    folder.write("20260101T000000Z-1-1.origin", "");
    EXPECT_EQ(leftJournals(folder.path), 1U);
    EXPECT_EQ(leftJournals(folder.path / "missing"), 0U);
}

/// A text whose damage would be seen: its first line is the length of the rest.
std::string checkedText(std::size_t length) {
    return std::to_string(length) + "\n" + std::string(length, 'x');
}
bool isComplete(const std::string& text) {
    const std::size_t end = text.find('\n');
    return end != std::string::npos && checkedText(std::stoul(text.substr(0, end))) == text;
}

/// Writes a byte to the pipe after each update, until the program is killed.
[[noreturn]] void editForEver(const fs::path& folder, int pipe) {
    std::atomic<std::size_t> length = 1;
    Journal journal(
        folder,
        [&] {
            return UnsavedDocument{checkedText(length), "", false};
        },
        atOnce);
    while (true) {
        length = length * 7 % 100'003;
        journal.noteChange();
        journal.update();
        if (write(pipe, ".", 1) != 1) {
            _exit(1);
        }
    }
}

TEST(Journal, isCompleteWhereverTheProgramIsKilled) {
    const Folder folder;
    std::mt19937 random(11);
    constexpr int kills = 100;
    int left = 0;
    for (int kill = 0; kill < kills; ++kill) {
        const fs::path journals = folder.path / std::to_string(kill);
        std::array<int, 2> ends{};
        ASSERT_EQ(pipe(ends.data()), 0);
        const pid_t child = fork();
        if (child == 0) {
            editForEver(journals, ends[1]);
        }
        // It is killed in the middle of an update after some others.
        const std::size_t updates = random() % 10;
        char byte = 0;
        for (std::size_t update = 0; update < updates; ++update) {
            ASSERT_EQ(read(ends[0], &byte, 1), 1);
        }
        ::kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        close(ends[0]);
        close(ends[1]);
        for (const fs::path& document : documentsIn(journals)) {
            EXPECT_TRUE(isComplete(contentOf(document))) << document;
            ++left;
        }
        EXPECT_EQ(leftJournals(journals), documentsIn(journals).size());
    }
    EXPECT_GE(left, kills / 2);
}

class UnsavedPipeline : public Graph {
protected:
    static fs::path journals() { return fs::path(std::getenv("XDG_STATE_HOME")) / "velmorak" / "journal"; }
};

TEST_F(UnsavedPipeline, isKeptWhenARunBegins) {
    add("Pair", "A");
    setValue("A", "a", "4.5");
    manager.Run();
    ASSERT_THAT(documentsIn(journals()), SizeIs(1));
    EXPECT_THAT(contentOf(documentsIn(journals()).front()), HasSubstr("4.5"));
}

TEST_F(UnsavedPipeline, isForgottenWhenItIsSaved) {
    const Folder folder;
    add("Pair", "A");
    manager.Run();
    EXPECT_THAT(documentsIn(journals()), SizeIs(1));
    const std::string file = folder.write("pipe.zedra", manager.DocumentText());
    manager.SetFileName(file);
    manager.Run();
    EXPECT_THAT(documentsIn(journals()), SizeIs(0));
}

TEST_F(UnsavedPipeline, ofAnEarlierProgramIsAnnounced) {
    fs::create_directories(journals());
    std::ofstream(journals() / "20260101T000000Z-1-1.zedra") << "left";
    std::ofstream(journals() / "20260101T000000Z-1-1.origin") << "";
    const Errors errors;
    const QzManager next("QzAnalysisFactory");
    EXPECT_EQ(errors.text(),
              "A document was not saved when the program ended unexpectedly; velmorak-recover lists and restores "
              "unsaved documents.\n");
}

}  // namespace
}  // namespace velmorak::test
