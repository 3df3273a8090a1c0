#include "FileDialogTest.h"

#include <sys/resource.h>
#include <sys/stat.h>

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* overwriteQuestion = "File exists. Overwrite?";

bool lists(const Gtk::FileChooserDialog& chooser, const std::string& name) {
    GtkFileFilterInfo info{};
    info.contains = GTK_FILE_FILTER_DISPLAY_NAME;
    info.display_name = name.c_str();
    return gtk_file_filter_filter(const_cast<GtkFileFilter*>(chooser.get_filter()->gobj()), &info) != FALSE;
}

class Saving : public FileDialogTest {};

TEST_F(Saving, saveOfANewDocumentAsksForANameAndTheSecondDoesNot) {
    edit();
    {
        Answers answers;
        answers.save(path("pipe"));
        act("Save");
    }
    EXPECT_EQ(contentOf("pipe.zedra"), manager->DocumentText());
    expectFlags(false);
    add("Adder");
    act("Save");
    EXPECT_EQ(contentOf("pipe.zedra"), manager->DocumentText());
    EXPECT_FALSE(window->modified);
    EXPECT_THAT(recording::callsOf("SetFileName"), ElementsAre("SetFileName(" + path("pipe.zedra") + ")"));
}

TEST_F(Saving, theFileIsTheTextAndNothingElse) {
    restart(script());
    manager->fileName = path("empty.zedra");
    act("Save");
    EXPECT_TRUE(exists("empty.zedra"));
    EXPECT_EQ(contentOf("empty.zedra"), "");
}

TEST_F(Saving, theExtensionIsAddedUnlessItsFirstOccurrenceEndsTheName) {
    const std::vector<std::pair<std::string, std::string>> names = {
        {"pipe", "pipe.zedra"},
        {"pipe.zedra", "pipe.zedra"},
        {"pipe.zedra.bak", "pipe.zedra.bak.zedra"},
        {"a.zedra.zedra", "a.zedra.zedra.zedra"},
    };
    for (const auto& [typed, saved] : names) {
        std::filesystem::remove(folder / saved);
        Answers answers;
        answers.save(path(typed));
        EXPECT_EQ(outputOf("SaveAs"), path(typed) + '\n');
        EXPECT_TRUE(exists(saved)) << saved;
        EXPECT_EQ(manager->fileName, path(saved));
    }
}

TEST_F(Saving, theChooserListsDocumentsAndHasItsTitleAndButtons) {
    Answers answers;
    answers.press("Save as", Gtk::RESPONSE_CANCEL);
    std::vector<std::string> labels;
    std::vector<std::string> listed;
    Glib::signal_timeout().connect_once(
        [&] {
            for (Gtk::Window* shown : Gtk::Window::list_toplevels()) {
                if (auto* chooser = dynamic_cast<Gtk::FileChooserDialog*>(shown)) {
                    for (Gtk::Button* button : widgetsIn<Gtk::Button>(*chooser->get_action_area())) {
                        labels.push_back(button->get_label());
                    }
                    for (const std::string name : {"a.zedra", "a.txt", "azedra", ".zedra"}) {
                        if (lists(*chooser, name)) {
                            listed.push_back(name);
                        }
                    }
                }
            }
        },
        0);
    act("SaveAs");
    EXPECT_THAT(labels, ElementsAre("Cancel", "Save"));
    EXPECT_THAT(listed, ElementsAre("a.zedra", ".zedra"));
}

TEST_F(Saving, cancellingSavesNothing) {
    edit();
    Answers answers;
    answers.press("Save as", Gtk::RESPONSE_CANCEL);
    EXPECT_EQ(outputOf("SaveAs"), "");
    expectFlags(true);
    EXPECT_EQ(manager->fileName, "");
    EXPECT_THAT(recording::callsOf("DocumentText"), IsEmpty());
}

TEST_F(Saving, closingTheChooserDoesNotEndIt) {
    edit();
    Answers answers;
    answers.close("Save as");
    answers.close("Save as");
    answers.save(path("pipe"));
    EXPECT_EQ(outputOf("SaveAs"), "Unexpected button clicked.\nUnexpected button clicked.\n" + path("pipe") + '\n');
    EXPECT_TRUE(exists("pipe.zedra"));
}

TEST_F(Saving, overwritingIsAskedForAndYesOverwrites) {
    edit();
    put("pipe.zedra", "old");
    Answers answers;
    answers.save(path("pipe.zedra"));
    answers.question(overwriteQuestion, Gtk::RESPONSE_YES);
    act("SaveAs");
    EXPECT_EQ(contentOf("pipe.zedra"), manager->DocumentText());
    expectFlags(false);
}

TEST_F(Saving, afterARefusedOverwriteTheChooserComesAgainAndCancelSavesNothing) {
    edit();
    put("pipe.zedra", "old");
    Answers answers;
    answers.save(path("pipe.zedra"));
    answers.question(overwriteQuestion, Gtk::RESPONSE_NO);
    answers.press("Save as", Gtk::RESPONSE_CANCEL);
    act("SaveAs");
    EXPECT_EQ(contentOf("pipe.zedra"), "old");
    EXPECT_EQ(manager->fileName, "");
    expectFlags(true);
}

TEST_F(Saving, afterARefusedOverwriteAnotherNameCanBeChosen) {
    put("pipe.zedra", "old");
    Answers answers;
    answers.save(path("pipe.zedra"));
    answers.question(overwriteQuestion, Gtk::RESPONSE_DELETE_EVENT);
    answers.save(path("other"));
    EXPECT_EQ(outputOf("SaveAs"), path("pipe.zedra") + '\n' + path("other") + '\n');
    EXPECT_EQ(contentOf("pipe.zedra"), "old");
    EXPECT_EQ(manager->fileName, path("other.zedra"));
}

TEST_F(Saving, aFileThatCannotBeWrittenIsReportedAndTheDocumentStaysChanged) {
    edit();
    manager->fileName = "/nowhere/pipe.zedra";
    EXPECT_EQ(errorsOf("Save"), "Couldn't write /nowhere/pipe.zedra\n");
    EXPECT_THAT(recording::callsOf("Sentence"), ElementsAre("Sentence(Couldn't write /nowhere/pipe.zedra)"));
    expectFlags(true);
}

TEST_F(Saving, theTextIsAskedForOnlyWhenTheFileCouldBeOpened) {
    edit();
    manager->fileName = "/nowhere/pipe.zedra";
    errorsOf("Save");
    EXPECT_THAT(recording::callsOf("DocumentText"), IsEmpty());
}

TEST_F(Saving, aPipeAsTheTargetIsRefused) {
    edit();
    manager->fileName = path("pipe.zedra");
    ASSERT_EQ(mkfifo(path("pipe.zedra").c_str(), 0600), 0);
    EXPECT_EQ(errorsOf("Save"), "Couldn't write " + path("pipe.zedra") + '\n');
    EXPECT_TRUE(std::filesystem::is_fifo(path("pipe.zedra")));
    expectFlags(true);
}

TEST_F(Saving, aNameThatIsNoLineOfItsOwnIsWrittenVisibly) {
    manager->fileName = "/nowhere/a\nDone.\x1b[2K\xff.zedra";
    EXPECT_EQ(errorsOf("Save"), "Couldn't write /nowhere/a\\nDone.\\u{1b}[2K\\xff.zedra\n");
}

TEST_F(Saving, anEmptyPipelineSavedOverADocumentKeepsThat) {
    put("pipe.zedra", "former");
    std::filesystem::permissions(path("pipe.zedra"), std::filesystem::perms(0600));
    manager->fileName = path("pipe.zedra");
    act("Save");
    EXPECT_EQ(contentOf("pipe.zedra"), "");
    EXPECT_EQ(contentOf("pipe.zedra~"), "former");
    EXPECT_EQ(std::filesystem::status(path("pipe.zedra~")).permissions(), std::filesystem::perms(0600));
    act("Save");
    EXPECT_EQ(contentOf("pipe.zedra~"), "former");
}

TEST_F(Saving, noCopyIsMadeOfADocumentThatAnotherOneReplaces) {
    put("pipe.zedra", "former");
    edit();
    manager->fileName = path("pipe.zedra");
    act("Save");
    EXPECT_FALSE(exists("pipe.zedra~"));
}

TEST_F(Saving, whereTheCopyCannotBeMadeBesideItItIsKeptElsewhere) {
    put("pipe.zedra", "former");
    std::filesystem::create_directory(folder / "pipe.zedra~");
    manager->fileName = path("pipe.zedra");
    act("Save");
    EXPECT_EQ(contentOf("pipe.zedra"), "");
    EXPECT_THAT(keptTexts(), ElementsAre("former"));
}

TEST_F(Saving, saveAsKeepsTheNewNameAlsoWhenItCannotBeWritten) {
    edit();
    std::filesystem::create_directory(folder / "sub");
    std::filesystem::create_symlink("/nowhere/at/all", folder / "sub" / "pipe.zedra");
    Answers answers;
    answers.save(folder / "sub" / "pipe.zedra");
    EXPECT_EQ(errorsOf("SaveAs"), "Couldn't write " + path("sub/pipe.zedra") + '\n');
    EXPECT_EQ(manager->fileName, path("sub/pipe.zedra"));
    expectFlags(true);
}

TEST_F(Saving, aDiskThatIsFullInTheMiddleCostsNothing) {
    for (int i = 0; i < 200; ++i) {
        add("Number").changed = true;
    }
    put("pipe.zedra", "former");
    manager->fileName = path("pipe.zedra");
    rlimit former{};
    getrlimit(RLIMIT_FSIZE, &former);
    const rlimit limit{4096, former.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
    testing::internal::CaptureStderr();
    act("Save");
    setrlimit(RLIMIT_FSIZE, &former);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "Couldn't write " + path("pipe.zedra") + '\n');
    EXPECT_EQ(contentOf("pipe.zedra"), "former");
    expectFlags(true);
}

TEST_F(Saving, savingAfterADeletionTouchesNoNodeThatIsGone) {
    edit();
    add("Adder").changed = true;
    window->pldelete("Adder");
    manager->fileName = path("pipe.zedra");
    act("Save");
    expectFlags(false);
}

TEST_F(Saving, quittingWithYesSaves) {
    edit();
    manager->fileName = path("pipe.zedra");
    Answers answers;
    answers.question("Save changes?", Gtk::RESPONSE_YES);
    act("Quit");
    EXPECT_EQ(contentOf("pipe.zedra"), manager->DocumentText());
    expectFlags(false);
}

}  // namespace
