#include "DialogTest.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class PluginCollection : public DialogTest {
protected:
    PluginWindow& dialog() { return window->pluginWindow; }
    ListView list() { return ListView(dialog()); }
    Gtk::Button& addButton() { return buttonIn(dialog(), "Add"); }

    // Adder and Divider in a collection with a summary in the test's folder, and Reader in another one without a
    // summary.
    void restartWithSummary(const std::string& summary) {
        put("plugin_summary.txt", summary);
        const std::string directory = folder.string() + '/';
        restart("kind Adder Arithmetic " + directory + "\nkind Divider Arithmetic " + directory +
                "\nkind Reader Data /nowhere/\n");
    }
};

TEST_F(PluginCollection, isBuiltAsItShouldLook) {
    int width = 0;
    int height = 0;
    dialog().get_default_size(width, height);
    EXPECT_EQ(dialog().get_title(), "Plugin collection");
    EXPECT_EQ(dialog().get_border_width(), 5U);
    EXPECT_EQ(width, 400);
    EXPECT_EQ(height, 200);
    EXPECT_FALSE(dialog().get_modal());
    EXPECT_EQ(list().widget().get_columns().size(), 1U);
    EXPECT_EQ(list().widget().get_column(0)->get_title(), "Plugin");
    EXPECT_EQ(list().widget().get_tooltip_column(), 1);
    EXPECT_FALSE(list().widget().get_reorderable());
}

TEST_F(PluginCollection, isHiddenUntilTheMenuEntryShowsIt) {
    EXPECT_FALSE(dialog().is_visible());
    act("plcoll");
    EXPECT_TRUE(dialog().is_visible());
    EXPECT_TRUE(addButton().is_visible());
}

TEST_F(PluginCollection, listsTheKindsUnderTheirCollections) {
    EXPECT_THAT(list().rows(), ElementsAre("Arithmetic|", "  Number|", "  Adder|", "Data|", "  Splitter|", "  Note|"));
}

TEST_F(PluginCollection, describesCollectionAndKindsFromTheSummary) {
    restartWithSummary("==== Arithmetic ====\nNumbers.\n\n---- Divider ----\nDivides.\nWith care.\nInputs:\n");
    EXPECT_THAT(list().rows(),
                ElementsAre("Arithmetic|Numbers.", "  Adder|", "  Divider|Divides.\n", "Data|", "  Reader|"));
}

TEST_F(PluginCollection, windowsLineEndsLeaveTheKindsWithoutDescription) {
    restartWithSummary("---- Adder ----\r\nAdds.\r\n\r\n---- Divider ----\r\nDivides.\r\n\r\n");
    EXPECT_THAT(list().rows(), ElementsAre("Arithmetic|", "  Adder|", "  Divider|", "Data|", "  Reader|"));
}

TEST_F(PluginCollection, aHeadingWithoutANameIsPassedOver) {
    restartWithSummary("----\n---- Divider ----\nDivides.\n\n");
    EXPECT_THAT(list().rows(), ElementsAre("Arithmetic|", "  Adder|", "  Divider|Divides.", "Data|", "  Reader|"));
}

TEST_F(PluginCollection, theFolderIsTakenAsItStandsWithoutASeparator) {
    put("plugin_summary.txt", "---- Adder ----\nAdds.\n");
    restart("kind Adder Arithmetic " + folder.string() + "\n");
    EXPECT_THAT(list().rows(), ElementsAre("Arithmetic|", "  Adder|"));
}

TEST_F(PluginCollection, aDescriptionDoesNotReachTheNextCollection) {
    put("plugin_summary.txt", "---- Adder ----\nAdds.\n");
    restart("kind Adder One " + folder.string() + "/\nkind Adder Two /nowhere/\n");
    EXPECT_THAT(list().rows(), ElementsAre("One|", "  Adder|Adds.", "Two|", "  Adder|"));
}

TEST_F(PluginCollection, aCollectionThatComesBackGetsASecondRow) {
    restart("kind A One /x/\nkind B Two /x/\nkind C One /x/\n");
    EXPECT_THAT(list().rows(), ElementsAre("One|", "  A|", "Two|", "  B|", "One|", "  C|"));
}

TEST_F(PluginCollection, kindsWithoutACollectionAtTheStartStandOnTheTopLevel) {
    put("plugin_summary.txt", "---- Loose ----\nText.\n");
    restart("kind Loose \"\" " + folder.string() + "/\nkind A One /x/\n");
    EXPECT_THAT(list().rows(), ElementsAre("Loose|", "One|", "  A|"));
}

TEST_F(PluginCollection, anEmptyCollectionAfterAnotherIsACollectionOfItsOwn) {
    restart("kind A One /x/\nkind B \"\" /x/\n");
    EXPECT_THAT(list().rows(), ElementsAre("One|", "  A|", "|", "  B|"));
}

TEST_F(PluginCollection, activatingAKindPlacesAPluginOfIt) {
    list().activate("1:0");
    EXPECT_THAT(recording::callsOf("CreatePlugin"), ElementsAre("CreatePlugin(2, Splitter)"));
    EXPECT_THAT(boxesOnCanvas(), ElementsAre("Splitter"));
    EXPECT_TRUE(window->modified);
}

TEST_F(PluginCollection, theButtonPlacesTheSelectedKindAndTheDialogStays) {
    act("plcoll");
    list().select("0:1");
    addButton().clicked();
    addButton().clicked();
    EXPECT_THAT(boxesOnCanvas(), ElementsAre("Adder", "Adder1"));
    EXPECT_TRUE(dialog().is_visible());
}

TEST_F(PluginCollection, activatingACollectionPlacesNothing) {
    list().activate("0");
    EXPECT_THAT(recording::edits(), IsEmpty());
    EXPECT_THAT(boxesOnCanvas(), IsEmpty());
}

TEST_F(PluginCollection, theButtonPlacesNothingWithACollectionOrNothingSelected) {
    addButton().clicked();
    list().select("1");
    addButton().clicked();
    EXPECT_THAT(recording::edits(), IsEmpty());
}

TEST_F(PluginCollection, closedByTheManagerItIsHiddenAndKeepsListAndSelection) {
    act("plcoll");
    list().select("1:1");
    closeByManager(dialog());
    EXPECT_FALSE(dialog().is_visible());
    act("plcoll");
    addButton().clicked();
    EXPECT_THAT(boxesOnCanvas(), ElementsAre("Note"));
}

TEST_F(PluginCollection, aPathWithoutARowIsLeftAlone) {
    dialog().on_treeview_row_activated(Gtk::TreePath("7:7"), nullptr);
    EXPECT_THAT(recording::edits(), IsEmpty());
}

}  // namespace
