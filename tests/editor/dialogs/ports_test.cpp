#include "ShownPipeline.h"
#include "VariablesTest.h"
#include "colours.h"

#include <QzManager.h>

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

/// Rows whose entries cannot show the stored text.
class ShortenedRows : public VariablesTest {
protected:
    /// The dialog of an adder whose first input has that value.
    varWindow& openWith(const std::string& value) {
        QzBase& adder = *add("Adder").GetPlugin();
        adder.Inputs().front().value = value;
        node(adder.name).changed = false;
        recording::forgetCalls();
        return openFor(adder.name);
    }

    std::string storedValue() const { return manager->plugins.back()->Inputs().front().value; }

    const std::vector<std::string> values{std::string("ab\0cd", 5), std::string(100000, 'x'), std::string("\0", 1)};
};

TEST_F(ShortenedRows, areNotWrittenByOkNorByApply) {
    for (const char* button : {"Apply", "OK"}) {
        for (const std::string& value : values) {
            press(openWith(value), button);
            EXPECT_EQ(storedValue(), value);
            EXPECT_THAT(recording::edits(), IsEmpty());
            EXPECT_FALSE(node(manager->plugins.back()->name).changed);
        }
    }
}

TEST_F(ShortenedRows, areNotWrittenByARefreshButton) {
    for (const std::string& value : values) {
        refresh(openWith(value), 1).clicked();
        EXPECT_EQ(storedValue(), value);
    }
    EXPECT_THAT(recording::edits(), Not(Contains(testing::HasSubstr("SetInputValue"))));
}

TEST_F(ShortenedRows, areNotWrittenWhenAnotherRowIs) {
    varWindow& dialog = openWith(values[0]);
    entry(dialog, 2).set_text("7");
    press(dialog, "Apply");
    EXPECT_THAT(recording::callsOf("SetInputValue"), ElementsAre("SetInputValue(0, 1, 7)"));
    press(dialog, "Apply");
    EXPECT_EQ(storedValue(), values[0]);
}

TEST_F(ShortenedRows, areWrittenOnceTheyAreEdited) {
    varWindow& dialog = openWith(values[0]);
    entry(dialog, 1).set_text("abc");
    press(dialog, "Apply");
    EXPECT_EQ(storedValue(), "abc");
}

TEST_F(ShortenedRows, doNotShortenTheName) {
    QzBase& adder = *add("Adder").GetPlugin();
    const std::string name(70000, 'n');
    adder.SetName(name);
    window->renamePlugin("Adder", name);
    recording::forgetCalls();
    press(openFor(name), "Apply");
    press(*window->lastDialog, "OK");
    EXPECT_TRUE(recording::callsOf("SetName").empty());
    EXPECT_TRUE(adder.name == name);
}

TEST_F(ShortenedRows, includeTheSourceOfAWireThatIsGoneSince) {
    window->open("/x/chain.zedra");
    varWindow& dialog = openFor("Parts");
    object("Sum").Disconnect("sum", &object("Parts"), "x");
    recording::forgetCalls();
    press(dialog, "Apply");
    EXPECT_THAT(recording::callsOf("SetInputValue"), IsEmpty());
    EXPECT_EQ(object("Parts").Inputs().front().value, "0");
}

/// A number that feeds the second input of an adder, which feeds a splitter; the adder's ports depend on its first
/// value.
class ChangedPorts : public VariablesTest {
protected:
    ChangedPorts() {
        for (const char* kind : {"Number", "Adder", "Splitter"}) {
            add(kind);
        }
        node("Number").translate(10, 10);
        node("Splitter").translate(300, 50);
        window->connect({"Number", "value"}, {"Adder", "b"});
        window->connect({"Adder", "sum"}, {"Splitter", "x"});
        recording::whenValueIsSet([](QzBase& object, int) { follow(object); });
    }

    ~ChangedPorts() override { recording::whenValueIsSet(nullptr); }

    static void follow(QzBase& adder) {
        QzManager& library = *adder.GetManager();
        const std::string value = adder.Inputs().front().value;
        if (value == "without input") {
            library.FindPlugin("Number")->Disconnect("value", &adder, "b");
            adder.Inputs().pop_back();
        } else if (value == "with input") {
            addInput(adder, "b", "");
        } else if (value == "bound") {
            adder.Connect("b", library.FindPlugin("Splitter"), "high");
        } else if (value == "without output") {
            adder.Disconnect("sum", library.FindPlugin("Splitter"), "x");
            adder.Outputs().clear();
        }
    }

    void apply(varWindow& dialog, const std::string& value) {
        entry(dialog, 1).set_text(value);
        recording::forgetCalls();
        press(dialog, "Apply");
        EXPECT_EQ(differencesBetween(*window, *manager), "") << value;
    }
};

TEST_F(ChangedPorts, anInputThatGoesTakesItsWireWithItForGood) {
    varWindow& dialog = openFor("Adder");
    apply(dialog, "without input");
    EXPECT_EQ(window->connectionMap.size(), 1U);
    EXPECT_EQ(window->pathMap.size(), 1U);
    EXPECT_EQ(pathsOnCanvas(), 1);
    apply(dialog, "with input");
    EXPECT_THAT(recording::callsOf("Connect"), IsEmpty());
    EXPECT_EQ(pathsOnCanvas(), 1);
}

TEST_F(ChangedPorts, anOutputThatGoesTakesItsWireWithIt) {
    apply(openFor("Adder"), "without output");
    EXPECT_EQ(pathsOnCanvas(), 1);
    EXPECT_EQ(window->connectionMap.count({"Splitter", "x"}), 0U);
}

TEST_F(ChangedPorts, aBindingThatTheLibraryChangesIsShown) {
    apply(openFor("Adder"), "bound");
    EXPECT_EQ(window->connectionMap.at({"Adder", "b"}), (PortRef{"Splitter", "high"}));
    EXPECT_EQ(recording::callsOf("Connect").size(), 1U);  // The call of the library itself.
}

TEST_F(ChangedPorts, aValueThatIsSentAgainIsFollowedToo) {
    varWindow& dialog = openFor("Adder");
    object("Adder").Inputs().front().value = "without input";
    entry(dialog, 1).set_text("without input");
    refresh(dialog, 1).clicked();
    EXPECT_EQ(node("Adder").inputTexts.size(), 1U);
    EXPECT_EQ(differencesBetween(*window, *manager), "");
    EXPECT_FALSE(node("Adder").changed);
}

TEST_F(ChangedPorts, theRefreshButtonSendsToTheInputOfItsRow) {
    varWindow& dialog = openFor("Adder");
    auto& inputs = object("Adder").Inputs();
    inputs.insert(inputs.begin(), {"new", "", "1", nullptr, 0});
    recording::forgetCalls();
    refresh(dialog, 1).clicked();
    EXPECT_THAT(recording::callsOf("SetInputValue"), ElementsAre("SetInputValue(1, 1, 1)"));
}

TEST_F(ChangedPorts, applyInTheDialogOfAnotherBoxLeavesTheSelectionAlone) {
    varWindow& dialog = openFor("Adder");
    select("Splitter");
    apply(dialog, "3");
    EXPECT_EQ(propertyOf<guint>(node("Adder").box, "fill_color_rgba"), colours::other);
    EXPECT_EQ(propertyOf<guint>(node("Splitter").box, "fill_color_rgba"), colours::otherSelected);
    select("Adder");
    apply(dialog, "4");
    EXPECT_EQ(propertyOf<guint>(node("Adder").box, "fill_color_rgba"), colours::otherSelected);
}

TEST_F(ChangedPorts, anOpenThatIsDeclinedLeavesNoBoxLookingSelected) {
    select("Adder");
    Answers answers;
    answers.question("Remove existing plugins?\n(Continuing without removal experimental)", Gtk::RESPONSE_NO);
    answers.press("Open", Gtk::RESPONSE_CANCEL);
    act("Open");
    EXPECT_FALSE(window->selectedItem);
    EXPECT_EQ(propertyOf<guint>(node("Adder").box, "fill_color_rgba"), colours::other);
    EXPECT_EQ(differencesBetween(*window, *manager), "");
}

}  // namespace
