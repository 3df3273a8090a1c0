#include "FileDialogTest.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* removalQuestion = "Remove existing plugins?\n(Continuing without removal experimental)";

class Opening : public FileDialogTest {};

TEST_F(Opening, openIntoAnEmptyWindowAsksNothingButTheName) {
    put("chain.zedra", "");
    Answers answers;
    answers.open(path("chain.zedra"));
    act("Open");
    EXPECT_THAT(boxesOnCanvas(), ElementsAre("First", "Sum", "Parts"));
    EXPECT_EQ(pathsOnCanvas(), 3);
    EXPECT_FALSE(window->modified);
}

TEST_F(Opening, openWithRemovalLeavesOnlyTheDocument) {
    edit();
    put("chain.zedra", "");
    Answers answers;
    answers.question(removalQuestion, Gtk::RESPONSE_YES);
    answers.open(path("chain.zedra"));
    act("Open");
    EXPECT_THAT(boxesOnCanvas(), ElementsAre("First", "Sum", "Parts"));
    EXPECT_EQ(manager->plugins.size(), 3U);
    EXPECT_FALSE(window->modified);
}

TEST_F(Opening, openWithoutRemovalAddsTheDocumentAndCountsAsChanged) {
    edit();
    window->modified = false;
    put("chain.zedra", "");
    Answers answers;
    answers.question(removalQuestion, Gtk::RESPONSE_NO);
    answers.open(path("chain.zedra"));
    act("Open");
    EXPECT_THAT(boxesOnCanvas(), testing::UnorderedElementsAre("Number", "First", "Sum", "Parts"));
    EXPECT_TRUE(window->modified);
}

TEST_F(Opening, aCancelledOpenLeavesThePluginsRemovedAndTheFlagAlone) {
    edit();
    for (const bool isModified : {true, false}) {
        add("Adder");
        window->modified = isModified;
        Answers answers;
        answers.question(removalQuestion, Gtk::RESPONSE_YES);
        answers.press("Open", Gtk::RESPONSE_CANCEL);
        act("Open");
        EXPECT_THAT(manager->plugins, IsEmpty());
        EXPECT_EQ(window->modified, isModified);
        EXPECT_THAT(recording::callsOf("ReadDocument"), IsEmpty());
    }
}

TEST_F(Opening, whatWasRemovedForAnOpenThatIsCancelledIsKept) {
    edit();
    manager->fileName = path("pipe.zedra");
    const std::string text = manager->DocumentText();
    Answers answers;
    answers.question(removalQuestion, Gtk::RESPONSE_YES);
    answers.press("Open", Gtk::RESPONSE_CANCEL);
    EXPECT_THAT(errorsOf("Open"), testing::StartsWith("The plug-ins that were removed are kept in " + removedFolder()));
    EXPECT_THAT(keptTexts(), ElementsAre(text));
    EXPECT_THAT(keptTexts(".origin"), ElementsAre(path("pipe.zedra")));
}

TEST_F(Opening, whatWasRemovedForAnExampleThatIsMissingIsKept) {
    add("Adder");
    const std::string text = manager->DocumentText();
    Answers answers;
    answers.question(removalQuestion, Gtk::RESPONSE_YES);
    window->checkOpen("/x/none.zedra");
    EXPECT_THAT(keptTexts(), ElementsAre(text));
    EXPECT_THAT(keptTexts(".origin"), ElementsAre(""));
}

TEST_F(Opening, whatAnotherDocumentReplacesIsNotKept) {
    add("Adder");
    Answers answers;
    answers.question(removalQuestion, Gtk::RESPONSE_YES);
    window->checkOpen("/x/other.zedra");
    EXPECT_THAT(keptTexts(), IsEmpty());
    EXPECT_THAT(keptTexts(".origin"), IsEmpty());
}

TEST_F(Opening, aSaveThatWasInterruptedIsToldWhenTheDocumentIsOpened) {
    put("chain.zedra", "half");
    put(".chain.zedra.velmorak-new", "half and half");
    testing::internal::CaptureStderr();
    window->open(path("chain.zedra"));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "The last save of " + path("chain.zedra") +
                                                          " was interrupted; its text is in " +
                                                          path(".chain.zedra.velmorak-new") + '\n');
    put(".chain.zedra.velmorak-new", "half");
    testing::internal::CaptureStderr();
    window->open(path("chain.zedra"));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(Opening, aClosedOpenChooserReadsNothingAndDoesNotComeAgain) {
    Answers answers;
    answers.close("Open");
    EXPECT_EQ(outputOf("Open"), "");
    EXPECT_THAT(recording::callsOf("ReadDocument"), IsEmpty());
}

TEST_F(Opening, theRemovalQuestionReleasesTheSelectionInBothCases) {
    for (const int answer : {Gtk::RESPONSE_NO, Gtk::RESPONSE_YES}) {
        window->selectedItem = add("Adder").box;
        Answers answers;
        answers.question(removalQuestion, answer);
        answers.press("Open", Gtk::RESPONSE_CANCEL);
        act("Open");
        EXPECT_FALSE(window->selectedItem);
    }
}

TEST_F(Opening, checkOpenAnnouncesTheFileAndClearsTheFlagInBothCases) {
    for (const int answer : {Gtk::RESPONSE_NO, Gtk::RESPONSE_YES}) {
        add("Adder").changed = false;
        Answers answers;
        answers.question(removalQuestion, answer);
        testing::internal::CaptureStdout();
        window->checkOpen("/x/other.zedra");
        EXPECT_EQ(testing::internal::GetCapturedStdout(), "Trying to open /x/other.zedra\n");
        EXPECT_FALSE(window->modified);
    }
    EXPECT_THAT(boxesOnCanvas(), ElementsAre("Alone"));
}

TEST_F(Opening, checkOpenOfADocumentThatCannotBeReadShowsWhatTheManagerHolds) {
    window->checkOpen("/x/none.zedra");
    EXPECT_THAT(boxesOnCanvas(), IsEmpty());
    EXPECT_FALSE(window->modified);
}

TEST_F(Opening, removalDeletesInTheOrderOfTheNames) {
    add("Splitter");
    add("Adder");
    add("Number");
    recording::forgetCalls();
    Answers answers;
    answers.question(removalQuestion, Gtk::RESPONSE_YES);
    window->checkOpen("/x/other.zedra");
    EXPECT_THAT(recording::callsOf("DeletePlugin"),
                ElementsAre("DeletePlugin(1)", "DeletePlugin(1)", "DeletePlugin(0)"));
}

TEST_F(Opening, anInputThatIsNotBoundHasNoPath) {
    window->checkOpen("/x/collapsed.zedra");
    EXPECT_EQ(pathsOnCanvas(), 1);
    EXPECT_EQ(window->pathMap.count({"Sum", "a"}), 0U);
    EXPECT_EQ(window->pathMap.count({"Sum", "b"}), 1U);
}

}  // namespace
