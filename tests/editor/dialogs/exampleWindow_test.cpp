#include "DialogTest.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ExamplesDialog : public DialogTest {
protected:
    ExampleWindow& dialog() { return window->exampleWindow; }
    ListView list() { return ListView(dialog()); }
    Gtk::Button& button() { return buttonIn(dialog(), "Add"); }
};

TEST_F(ExamplesDialog, isBuiltAsItShouldLook) {
    int width = 0;
    int height = 0;
    dialog().get_default_size(width, height);
    EXPECT_EQ(dialog().get_title(), "Examples");
    EXPECT_EQ(dialog().get_border_width(), 5U);
    EXPECT_EQ(width, 400);
    EXPECT_EQ(height, 200);
    EXPECT_FALSE(dialog().get_modal());
    EXPECT_EQ(list().widget().get_columns().size(), 1U);
    EXPECT_EQ(list().widget().get_column(0)->get_title(), "Example");
    EXPECT_EQ(list().widget().get_tooltip_column(), -1);
    EXPECT_FALSE(list().widget().get_reorderable());
}

TEST_F(ExamplesDialog, isHiddenUntilTheMenuEntryShowsIt) {
    EXPECT_FALSE(dialog().is_visible());
    act("Examples");
    EXPECT_TRUE(dialog().is_visible());
    EXPECT_TRUE(button().is_visible());
}

TEST_F(ExamplesDialog, listsTheDocumentsWithTheirFoldersUnderTheirGroups) {
    restart("kind A One /x/\nexample a.zedra First /data\nexample b.zedra First /more\nexample c.zedra Second /data\n");
    EXPECT_THAT(list().rows(),
                ElementsAre("First|", "  a.zedra|/data", "  b.zedra|/more", "Second|", "  c.zedra|/data"));
}

TEST_F(ExamplesDialog, aGroupThatComesBackGetsASecondRow) {
    restart("example a.zedra One /x\nexample b.zedra Two /x\nexample c.zedra One /x\n");
    EXPECT_THAT(list().rows(), ElementsAre("One|", "  a.zedra|/x", "Two|", "  b.zedra|/x", "One|", "  c.zedra|/x"));
}

TEST_F(ExamplesDialog, anExampleWithoutAGroupAtTheStartStandsOnTheTopLevel) {
    restart("example loose.zedra \"\" /x\nexample a.zedra One /x\n");
    EXPECT_THAT(list().rows(), ElementsAre("loose.zedra|/x", "One|", "  a.zedra|/x"));
}

TEST_F(ExamplesDialog, activatingAnExampleOpensItsPath) {
    testing::internal::CaptureStdout();
    list().activate("0:0");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Trying to open /examples/basics/sum.zedra\n");
    EXPECT_THAT(recording::callsOf("ReadDocument"), ElementsAre("ReadDocument(/examples/basics/sum.zedra)"));
}

TEST_F(ExamplesDialog, theButtonOpensTheSelectedExampleAndTheDialogStays) {
    restart(script() + "example chain.zedra Basics /examples/basics\n");
    act("Examples");
    list().select("0:1");
    button().clicked();
    EXPECT_THAT(boxesOnCanvas(), ElementsAre("First", "Sum", "Parts"));
    EXPECT_TRUE(dialog().is_visible());
    EXPECT_FALSE(window->modified);
}

TEST_F(ExamplesDialog, aFolderWithASlashAtItsEndGivesTwo) {
    restart("example a.zedra One /x/\n");
    list().activate("0:0");
    EXPECT_THAT(recording::callsOf("ReadDocument"), ElementsAre("ReadDocument(/x//a.zedra)"));
}

TEST_F(ExamplesDialog, activatingAGroupOpensNothing) {
    list().activate("0");
    EXPECT_THAT(recording::edits(), IsEmpty());
}

TEST_F(ExamplesDialog, theButtonOpensNothingWithAGroupOrNothingSelected) {
    button().clicked();
    list().select("0");
    button().clicked();
    EXPECT_THAT(recording::edits(), IsEmpty());
}

TEST_F(ExamplesDialog, theListIsReadOnce) {
    const auto before = list().rows();
    closeByManager(dialog());
    act("Examples");
    act("Examples");
    EXPECT_EQ(list().rows(), before);
    EXPECT_THAT(recording::callsOf("GetExamples"), IsEmpty());
}

TEST_F(ExamplesDialog, closedByTheManagerItIsHiddenAndCanBeShownAgain) {
    act("Examples");
    closeByManager(dialog());
    EXPECT_FALSE(dialog().is_visible());
    act("Examples");
    EXPECT_TRUE(dialog().is_visible());
}

}  // namespace
