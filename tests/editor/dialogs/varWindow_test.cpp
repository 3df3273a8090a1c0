#include "VariablesTest.h"

#include <cstdint>

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

class VariablesDialog : public VariablesTest {};

TEST_F(VariablesDialog, isBuiltAsItShouldLook) {
    varWindow& dialog = openNew("Adder");
    std::vector<std::string> buttons;
    auto& outerBox = dynamic_cast<Gtk::Box&>(*dialog.get_child());
    for (Gtk::Button* button : widgetsIn<Gtk::Button>(dynamic_cast<Gtk::Box&>(*outerBox.get_children().at(1)))) {
        buttons.push_back(button->get_label());
        EXPECT_FALSE(button->get_use_underline());
    }
    EXPECT_EQ(dialog.get_title(), "Adder Variables");
    EXPECT_FALSE(dialog.get_resizable());
    EXPECT_FALSE(dialog.get_modal());
    EXPECT_EQ(dialog.get_transient_for(), nullptr);
    EXPECT_TRUE(dialog.is_visible());
    EXPECT_THAT(buttons, ElementsAre("OK", "Apply", "Cancel"));
}

TEST_F(VariablesDialog, hasARowForTheNameAndOneForEachInput) {
    varWindow& dialog = openNew("Adder");
    EXPECT_THAT(rows(dialog), ElementsAre("Name: Adder", "a: 1", "b: 2"));
    EXPECT_EQ(column(dialog, 2).size(), 3U);
    EXPECT_TRUE(entry(dialog, 1).get_editable());
}

TEST_F(VariablesDialog, aPluginWithoutInputsHasOnlyTheRowOfTheName) {
    varWindow& dialog = openNew("Note");
    EXPECT_THAT(rows(dialog), ElementsAre("Name: Note"));
    EXPECT_EQ(column(dialog, 2).size(), 1U);
}

TEST_F(VariablesDialog, aWiredInputShowsItsSourceInGreyAndCannotBeEdited) {
    window->open("/x/chain.zedra");
    varWindow& dialog = openFor("Parts");
    EXPECT_THAT(rows(dialog), ElementsAre("Name: Parts", "x: Sum sum"));
    EXPECT_FALSE(entry(dialog, 1).get_editable());
    const Gdk::RGBA colour = entry(dialog, 1).get_style_context()->get_color(entry(dialog, 1).get_state_flags());
    EXPECT_EQ(colour.to_string(), Gdk::RGBA("grey").to_string());
    const Gdk::RGBA plain = entry(dialog, 0).get_style_context()->get_color(entry(dialog, 0).get_state_flags());
    EXPECT_NE(plain.to_string(), colour.to_string());
}

TEST_F(VariablesDialog, withNothingSelectedNoDialogComes) {
    act("Var");
    EXPECT_THAT(openDialogs(), IsEmpty());
    EXPECT_EQ(window->lastDialog, nullptr);
}

TEST_F(VariablesDialog, eachRequestMakesADialogAlsoForTheSamePlugin) {
    varWindow& first = openNew("Adder");
    varWindow& second = openFor("Adder");
    EXPECT_NE(&first, &second);
    EXPECT_EQ(openDialogs().size(), 2U);
    EXPECT_EQ(window->lastDialog, &second);
}

TEST_F(VariablesDialog, applyHandsTheChangedValuesOver) {
    varWindow& dialog = openNew("Adder");
    entry(dialog, 2).set_text("7.5");
    recording::forgetCalls();
    press(dialog, "Apply");
    EXPECT_THAT(recording::edits(), ElementsAre("SetInputValue(0, 1, 7.5)"));
    EXPECT_TRUE(node("Adder").changed);
    EXPECT_TRUE(window->modified);
    EXPECT_THAT(rows(dialog), ElementsAre("Name: Adder", "a: 1", "b: 7.5"));
}

TEST_F(VariablesDialog, applyWithNothingChangedMakesAllRowsAnewAndLeavesTheNode) {
    varWindow& dialog = openNew("Adder");
    const auto box = node("Adder").box;
    const Death label(*column(dialog, 0).at(0));
    const Death value(entry(dialog, 2));
    const Death button(*column(dialog, 2).at(2));
    press(dialog, "Apply");
    EXPECT_TRUE(label);
    EXPECT_TRUE(value);
    EXPECT_TRUE(button);
    EXPECT_THAT(rows(dialog), ElementsAre("Name: Adder", "a: 1", "b: 2"));
    EXPECT_TRUE(entry(dialog, 2).is_visible());
    EXPECT_EQ(node("Adder").box, box);
    EXPECT_FALSE(node("Adder").changed);
}

TEST_F(VariablesDialog, applyWithNothingChangedRedrawsANodeThatWasNotSaved) {
    varWindow& dialog = openNew("Adder");
    node("Adder").changed = true;
    const auto box = node("Adder").box;
    press(dialog, "Apply");
    EXPECT_NE(node("Adder").box, box);
    EXPECT_TRUE(node("Adder").changed);
}

TEST_F(VariablesDialog, aRedrawnNodeShowsTheColourOfTheSelection) {
    add("Number");
    for (const auto& [name, colour] :
         std::vector<std::pair<std::string, std::uint32_t>>{{"Number", 0xb2ff99e6}, {"Adder", 0xffff99e6}}) {
        varWindow& dialog = name == "Adder" ? openNew(name) : openFor(name);
        node(name).changed = true;
        press(dialog, "Apply");
        EXPECT_EQ(propertyOf<std::uint32_t>(node(name).box, "fill_color_rgba"), colour) << name;
    }
}

TEST_F(VariablesDialog, afterApplyThePathsFollowTheRedrawnPorts) {
    window->open("/x/chain.zedra");
    varWindow& dialog = openFor("Sum");
    const auto path = window->pathMap.at({"Parts", "x"});
    node("Sum").changed = true;
    press(dialog, "Apply");
    EXPECT_NE(window->pathMap.at({"Parts", "x"}), path);
    EXPECT_EQ(pathsOnCanvas(), 3);
}

TEST_F(VariablesDialog, okAppliesAndTheDialogIsGone) {
    varWindow& dialog = openNew("Adder");
    entry(dialog, 1).set_text("5");
    press(dialog, "OK");
    EXPECT_EQ(object("Adder").Inputs()[0].value, "5");
    EXPECT_THAT(openDialogs(), IsEmpty());
}

TEST_F(VariablesDialog, cancelAppliesNothingAndTheDialogIsGone) {
    varWindow& dialog = openNew("Adder");
    entry(dialog, 0).set_text("Other");
    entry(dialog, 1).set_text("5");
    press(dialog, "Cancel");
    EXPECT_THAT(recording::edits(), IsEmpty());
    EXPECT_FALSE(node("Adder").changed);
    EXPECT_THAT(openDialogs(), IsEmpty());
}

TEST_F(VariablesDialog, closedByTheManagerItIsHiddenAndStays) {
    varWindow& dialog = openNew("Adder");
    const Death death(dialog);
    closeByManager(dialog);
    EXPECT_FALSE(death);
    EXPECT_FALSE(dialog.is_visible());
}

TEST_F(VariablesDialog, aWiredInputIsNeverWrittenBack) {
    window->open("/x/chain.zedra");
    varWindow& dialog = openFor("Sum");
    entry(dialog, 1).set_text("12");
    recording::forgetCalls();
    press(dialog, "Apply");
    EXPECT_THAT(recording::callsOf("SetInputValue"), IsEmpty());
    EXPECT_THAT(rows(dialog), ElementsAre("Name: Sum", "a: First value", "b: First value"));
}

TEST_F(VariablesDialog, theRefreshButtonOfAWiredInputAppliesEverything) {
    window->open("/x/collapsed.zedra");
    varWindow& dialog = openFor("Sum");
    entry(dialog, 1).set_text("8");
    recording::forgetCalls();
    refresh(dialog, 2).clicked();
    EXPECT_THAT(recording::edits(), ElementsAre("SetInputValue(1, 0, 8)"));
    EXPECT_THAT(rows(dialog), ElementsAre("Name: Sum", "a: 8", "b: First value"));
}

TEST_F(VariablesDialog, theRefreshButtonSendsAnUnchangedValueAgain) {
    varWindow& dialog = openNew("Adder");
    const Death value(entry(dialog, 2));
    window->modified = false;
    entry(dialog, 1).set_text("9");
    refresh(dialog, 2).clicked();
    EXPECT_THAT(recording::edits(), ElementsAre("SetInputValue(0, 1, 2)"));
    EXPECT_FALSE(node("Adder").changed);
    EXPECT_FALSE(window->modified);
    EXPECT_FALSE(value);
}

TEST_F(VariablesDialog, theRefreshButtonOfAChangedValueAppliesAllRows) {
    varWindow& dialog = openNew("Adder");
    entry(dialog, 1).set_text("8");
    entry(dialog, 2).set_text("9");
    refresh(dialog, 2).clicked();
    EXPECT_THAT(recording::edits(), ElementsAre("SetInputValue(0, 0, 8)", "SetInputValue(0, 1, 9)"));
    EXPECT_THAT(rows(dialog), ElementsAre("Name: Adder", "a: 8", "b: 9"));
}

TEST_F(VariablesDialog, theRefreshButtonOfTheNameAppliesAChangedNameAndNothingElse) {
    varWindow& dialog = openNew("Adder");
    entry(dialog, 1).set_text("8");
    refresh(dialog, 0).clicked();
    EXPECT_THAT(recording::edits(), IsEmpty());
    entry(dialog, 0).set_text("Sum");
    refresh(dialog, 0).clicked();
    EXPECT_THAT(recording::edits(), ElementsAre("Adder.SetName(Sum)", "SetInputValue(0, 0, 8)"));
}

TEST_F(VariablesDialog, aNewNameGoesToTheLibraryTheMapsAndTheNode) {
    window->open("/x/chain.zedra");
    varWindow& dialog = openFor("Sum");
    entry(dialog, 0).set_text("Total");
    press(dialog, "Apply");
    EXPECT_EQ(node("Total").GetPlugin()->GetName(), "Total");
    EXPECT_EQ(&node("Sum"), &node("Total"));
    EXPECT_EQ(node("Total").uniqueName, "Total");
    EXPECT_EQ(propertyOf<Glib::ustring>(node("Total").box, "title"), "Total");
    EXPECT_EQ(window->connectionMap.at({"Parts", "x"}), (PortRef{"Total", "sum"}));
    EXPECT_EQ(window->connectionMap.count({"Total", "a"}), 1U);
    EXPECT_EQ(pathsOnCanvas(), 3);
    EXPECT_TRUE(node("Total").changed);
}

TEST_F(VariablesDialog, theTitleKeepsTheNameOfTheBeginning) {
    varWindow& dialog = openNew("Adder");
    entry(dialog, 0).set_text("Sum");
    press(dialog, "Apply");
    EXPECT_EQ(dialog.get_title(), "Adder Variables");
    EXPECT_EQ(openFor("Sum").get_title(), "Sum Variables");
}

TEST_F(VariablesDialog, aNameThatDiffersInCaseOnlyIsAnotherName) {
    varWindow& dialog = openNew("Adder");
    entry(dialog, 0).set_text("adder");
    press(dialog, "Apply");
    EXPECT_THAT(recording::edits(), ElementsAre("Adder.SetName(adder)"));
    EXPECT_EQ(window->pluginMap.count("adder"), 1U);
}

TEST_F(VariablesDialog, aNameAndAValueAreAppliedTogether) {
    add("Number");
    varWindow& dialog = openNew("Adder");
    entry(dialog, 0).set_text("Sum");
    entry(dialog, 2).set_text("9");
    press(dialog, "OK");
    EXPECT_THAT(recording::edits(), ElementsAre("Adder.SetName(Sum)", "SetInputValue(1, 1, 9)"));
}

TEST_F(VariablesDialog, afterARenameTheRefreshButtonStillReachesThePlugin) {
    add("Number");
    varWindow& dialog = openNew("Adder");
    entry(dialog, 0).set_text("Sum");
    press(dialog, "Apply");
    recording::forgetCalls();
    refresh(dialog, 1).clicked();
    EXPECT_THAT(recording::edits(), ElementsAre("SetInputValue(1, 0, 1)"));
}

TEST_F(VariablesDialog, aNameThatTheLibraryRefusesComesBackAndTheMapsStay) {
    add("Number");
    varWindow& dialog = openNew("Adder");
    for (const std::string name : {"", "Number"}) {
        recording::forgetCalls();
        entry(dialog, 0).set_text(name);
        press(dialog, "Apply");
        EXPECT_THAT(recording::edits(), ElementsAre("Adder.SetName(" + name + ")"));
        EXPECT_THAT(rows(dialog), ElementsAre("Name: Adder", "a: 1", "b: 2"));
        EXPECT_EQ(window->pluginMap.count(""), 0U);
        EXPECT_NE(&node("Number"), &node("Adder"));
    }
}

TEST_F(VariablesDialog, aNameThatADeletedPluginHadCanBeTaken) {
    add("Number");
    window->pldelete("Number");
    window->open("/x/chain.zedra");
    varWindow& dialog = openFor("Sum");
    entry(dialog, 0).set_text("Number");
    press(dialog, "Apply");
    EXPECT_THAT(rows(dialog), ElementsAre("Name: Number", "a: First value", "b: First value"));
    EXPECT_EQ(pathsOnCanvas(), 3);
    press(dialog, "OK");
}

TEST_F(VariablesDialog, aDialogWithAnOldNameRenamesThePluginBackWithoutHarm) {
    window->open("/x/chain.zedra");
    varWindow& first = openFor("Sum");
    varWindow& second = openFor("Sum");
    entry(first, 0).set_text("Total");
    press(first, "OK");
    press(second, "Apply");
    EXPECT_EQ(manager->plugins[1]->name, "Sum");
    EXPECT_EQ(pathsOnCanvas(), 3);
    press(second, "OK");
}

TEST_F(VariablesDialog, newInputsAppearAsRowsAfterApply) {
    varWindow& dialog = openNew("Adder");
    addInput(object("Adder"), "c", "3");
    addInput(object("Adder"), "d", "4");
    press(dialog, "Apply");
    EXPECT_THAT(rows(dialog), ElementsAre("Name: Adder", "a: 1", "b: 2", "c: 3", "d: 4"));
}

TEST_F(VariablesDialog, oneMoreInputTurnsTheRowsIntoThoseOfTheInputs) {
    varWindow& dialog = openNew("Adder");
    addInput(object("Adder"), "c", "3");
    press(dialog, "Apply");
    EXPECT_THAT(rows(dialog), ElementsAre("a: 1", "b: 2", "c: 3"));
}

TEST_F(VariablesDialog, rowsTurnedIntoThoseOfTheInputsWriteTheInputsThatTheyShow) {
    varWindow& dialog = openNew("Adder");
    addInput(object("Adder"), "c", "3");
    press(dialog, "Apply");
    recording::forgetCalls();
    entry(dialog, 0).set_text("10");
    entry(dialog, 2).set_text("30");
    press(dialog, "Apply");
    EXPECT_THAT(recording::edits(), ElementsAre("SetInputValue(0, 0, 10)", "SetInputValue(0, 2, 30)"));
    recording::forgetCalls();
    refresh(dialog, 1).clicked();
    EXPECT_THAT(recording::edits(), ElementsAre("SetInputValue(0, 1, 2)"));
    EXPECT_EQ(object("Adder").GetName(), "Adder");
}

TEST_F(VariablesDialog, rowsTurnedIntoThoseOfTheInputsShowSourcesInGrey) {
    window->open("/x/collapsed.zedra");
    varWindow& dialog = openFor("Sum");
    addInput(object("Sum"), "c", "3");
    press(dialog, "Apply");
    EXPECT_THAT(rows(dialog), ElementsAre("a: 1", "b: First value", "c: 3"));
    EXPECT_TRUE(entry(dialog, 0).get_editable());
    EXPECT_FALSE(entry(dialog, 1).get_editable());
    EXPECT_TRUE(entry(dialog, 2).get_editable());
}

TEST_F(VariablesDialog, aValueGoesToTheInputThatTheRowWasMadeFor) {
    varWindow& dialog = openNew("Adder");
    object("Adder").Inputs().erase(object("Adder").Inputs().begin());
    entry(dialog, 2).set_text("9");
    press(dialog, "Apply");
    EXPECT_THAT(recording::edits(), ElementsAre("SetInputValue(0, 0, 9)"));
    EXPECT_THAT(rows(dialog), ElementsAre("Name: Adder", "b: 9"));
}

TEST_F(VariablesDialog, theRefreshButtonOfAnInputThatIsGoneMakesTheRowsAnew) {
    varWindow& dialog = openNew("Adder");
    object("Adder").Inputs().pop_back();
    refresh(dialog, 2).clicked();
    EXPECT_THAT(rows(dialog), ElementsAre("Name: Adder", "a: 1"));
}

}  // namespace
