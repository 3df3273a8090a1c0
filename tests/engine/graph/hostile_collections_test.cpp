#include "GraphFixture.h"

#include "graph/collections/Catalogue.h"
#include "graph/collections/LoadingNote.h"

#include <atomic>
#include <fstream>
#include <thread>
#include <vector>

namespace velmorak::test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::IsEmpty;

/// A folder with a collection that a test may damage.
class HostileCollection : public testing::Test {
protected:
    fs::path put(const std::string& built) {
        const fs::path from(built);
        const fs::path object = folder.path / from.stem() / from.filename();
        fs::create_directories(object.parent_path());
        fs::copy_file(from, object, fs::copy_options::overwrite_existing);
        return object;
    }
    Catalogue load() const { return {{{folder.path}, {}, notes}, "QzAnalysisFactory"}; }

    Folder folder;
    Folder state;
    fs::path notes = state.path / "loading";
};

/// As many programs of a batch job do.
TEST_F(HostileCollection, isNoneWhenSeveralProgramsLoadItAtTheSameTime) {
    const fs::path object = put(TEST_HOSTILE "/Exits/Exits/Exits.so");
    std::atomic<int> leftBehind = 0;
    std::vector<std::thread> programs;
    for (int program = 0; program < 4; ++program) {
        programs.emplace_back([&] {
            for (int i = 0; i < 5000; ++i) {
                leftBehind += LoadingNote(notes, object).isOfAnEndedProgram() ? 1 : 0;
            }
        });
    }
    for (std::thread& program : programs) {
        program.join();
    }
    EXPECT_EQ(leftBehind, 0);
    EXPECT_TRUE(fs::is_empty(notes));
}

TEST_F(HostileCollection, thatEndsTheProgramIsSkippedAtTheNextStart) {
    const fs::path object = put(TEST_HOSTILE "/Exits/Exits/Exits.so");
    EXPECT_EXIT(load(), testing::ExitedWithCode(0), "");
    const Errors errors;
    EXPECT_THAT(load().kinds(), IsEmpty());
    const fs::path note = LoadingNote(notes, object).file();
    EXPECT_EQ(errors.text(), "The collection " + object.string() +
                                 " is skipped: a program ended while it was loading it. Replace the file, or remove " +
                                 note.string() + " to have it loaded again.\n");
    load();
    EXPECT_EQ(errors.lines(), 2) << "as long as the file is the same";
}

TEST_F(HostileCollection, isLoadedAgainWhenItsFileIsReplaced) {
    const fs::path object = put(TEST_HOSTILE "/Exits/Exits/Exits.so");
    EXPECT_EXIT(load(), testing::ExitedWithCode(0), "");
    fs::copy_file(TEST_COLLECTIONS "/TestCollection/TestCollection.so", object, fs::copy_options::overwrite_existing);
    const Errors errors;
    EXPECT_EQ(load().kinds().size(), 4U);
    EXPECT_EQ(errors.text(), "");
}

TEST_F(HostileCollection, leavesNoNoteWhenItCouldBeLoaded) {
    const fs::path object = put(TEST_COLLECTIONS "/TestCollection/TestCollection.so");
    const Errors errors;
    EXPECT_EQ(load().kinds().size(), 4U);
    EXPECT_TRUE(fs::is_empty(notes));
}

TEST_F(HostileCollection, isLoadedWithoutANoteWhereNoneCanBeWritten) {
    put(TEST_COLLECTIONS "/TestCollection/TestCollection.so");
    notes = folder.write("file", "");
    const Errors errors;
    EXPECT_EQ(load().kinds().size(), 4U);
    EXPECT_EQ(errors.text(), "");
}

TEST_F(HostileCollection, thatIsTruncatedAnywhereIsSkipped) {
    const fs::path object = put(TEST_COLLECTIONS "/TestCollection/TestCollection.so");
    // What the loader maps ends before the tables for debuggers and linkers do.
    for (const std::uintmax_t size : {0U, 1U, 63U, 64U, 100U, 4096U, 8192U}) {
        fs::resize_file(object, size);
        const Errors errors;
        EXPECT_THAT(load().kinds(), IsEmpty()) << size;
        EXPECT_THAT(errors.text(), HasSubstr("TestCollection.so is skipped: it is ")) << size;
        EXPECT_EQ(errors.lines(), 1);
        put(TEST_COLLECTIONS "/TestCollection/TestCollection.so");
    }
}

TEST_F(HostileCollection, thatIsOverwrittenWhileItIsLoadedDoesNoHarm) {
    const fs::path object = put(TEST_COLLECTIONS "/TestCollection/TestCollection.so");
    const Errors errors;
    const Catalogue catalogue = load();
    fs::resize_file(object, 0);
    std::ofstream(object, std::ios::binary) << std::string(1000000, '\0');
    const Kind& letters = catalogue.kind(catalogue.find("Letters"));
    EXPECT_EQ(letters.ports({{"letters", "abc"}}).outputs.size(), 3U);
    EXPECT_THROW(letters.ports({{"letters", "!"}}), std::runtime_error);
}

}  // namespace
}  // namespace velmorak::test
