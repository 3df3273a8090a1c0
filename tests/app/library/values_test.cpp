#include "LibraryTest.h"

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;

class Values : public LibraryTest {
protected:
    static constexpr std::size_t expression = 3;  ///< Its row in the dialog of a Formula.

    static constexpr std::size_t functionExpression = 1;  ///< And in that of a Function.

    varWindow& openNew(const std::string& kind) {
        window->addPlugin(nullptr, kind);
        return openFor(manager->plugins.back()->name);
    }

    varWindow& openFor(const std::string& name) {
        window->selectedItem = window->nodeOf(name)->box;
        act("Var");
        return *window->lastDialog;
    }

    int pathsOnCanvas() {
        const auto root = window->canvas.get_root_item();
        int count = 0;
        for (int i = 0; i < root->get_n_children(); ++i) {
            count += dynamic_cast<Goocanvas::Path*>(root->get_child(i).operator->()) != nullptr ? 1 : 0;
        }
        return count;
    }

    static std::vector<Gtk::Entry*> entries(varWindow& dialog) { return widgetsIn<Gtk::Entry>(dialog); }

    // The labels of the rows; those of the buttons are inside the buttons.
    static std::vector<std::string> labels(varWindow& dialog) {
        std::vector<std::string> texts;
        for (Gtk::Label* label : widgetsIn<Gtk::Label>(dialog)) {
            if (!label->get_ancestor(GTK_TYPE_BUTTON)) {
                texts.push_back(label->get_text());
            }
        }
        return texts;
    }
};

TEST_F(Values, aValueThatTheTypeRefusesComesBackAsItWas) {
    varWindow& dialog = openNew("Number");
    entries(dialog).at(1)->set_text("2.5");
    buttonIn(dialog, "Apply").clicked();
    entries(dialog).at(1)->set_text("many");
    testing::internal::CaptureStderr();
    buttonIn(dialog, "Apply").clicked();
    EXPECT_NE(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(entries(dialog).at(1)->get_text(), "2.5");
}

TEST_F(Values, newVariablesOfAFormulaAppearAsRows) {
    varWindow& dialog = openNew("Formula");
    const auto before = labels(dialog);
    entries(dialog).at(expression)->set_text("@mass * @width");
    buttonIn(dialog, "Apply").clicked();
    auto expected = before;
    expected.insert(expected.end(), {"mass", "width"});
    EXPECT_EQ(labels(dialog), expected);
    EXPECT_EQ(window->liveNodes().front()->inputTexts.size(), before.size() + 1);
}

TEST_F(Values, oneNewVariableOfAFormulaAppearsAsARowToo) {
    varWindow& dialog = openNew("Formula");
    entries(dialog).at(expression)->set_text("2 * @mass");
    buttonIn(dialog, "Apply").clicked();
    EXPECT_THAT(labels(dialog), Contains("mass"));
    entries(dialog).back()->set_text("91.2");
    buttonIn(dialog, "OK").clicked();
    EXPECT_EQ(manager->plugins[0]->Inputs().back().value, "91.2");
    EXPECT_EQ(manager->plugins[0]->name, "Formula");
}

TEST_F(Values, variablesOfAFormulaGoWithTheirValues) {
    varWindow& dialog = openNew("Formula");
    entries(dialog).at(expression)->set_text("@first + @second");
    buttonIn(dialog, "Apply").clicked();
    entries(dialog).at(6)->set_text("22");
    entries(dialog).at(expression)->set_text("2 * @second");
    buttonIn(dialog, "Apply").clicked();
    const auto& inputs = manager->plugins[0]->Inputs();
    EXPECT_EQ(inputs.back().name, "second");
    EXPECT_EQ(inputs.back().value, "22");
}

TEST_F(Values, aVariableThatGoesTakesItsWireWithItAndTheOtherKeepsIts) {
    window->addPlugin(nullptr, "Number");
    varWindow& dialog = openNew("Function");
    entries(dialog).at(functionExpression)->set_text("a + b");
    buttonIn(dialog, "OK").clicked();
    window->connect({"Number", "number"}, {"Function", "a"});
    window->connect({"Number", "number"}, {"Function", "b"});
    ASSERT_EQ(window->pathMap.size(), 2U);
    varWindow& again = openFor("Function");
    entries(again).at(functionExpression)->set_text("b");
    buttonIn(again, "Apply").clicked();
    EXPECT_EQ(window->pathMap.size(), 1U);
    EXPECT_EQ(pathsOnCanvas(), 1);
    ASSERT_EQ(window->connectionMap.size(), 1U);
    EXPECT_EQ(window->connectionMap.begin()->first, (PortRef{"Function", "b"}));
    const auto& inputs = manager->plugins[1]->Inputs();
    ASSERT_EQ(inputs.size(), 2U);
    EXPECT_EQ(inputs[1].name, "b");
    EXPECT_EQ(inputs[1].source, manager->plugins[0]);
    entries(again).at(functionExpression)->set_text("a + b");
    buttonIn(again, "Apply").clicked();
    EXPECT_EQ(pathsOnCanvas(), 1) << "the wire of a is gone for good";
}

TEST_F(Values, aWiredInputShowsItsSourceInGrey) {
    window->addPlugin(nullptr, "Number");
    window->addPlugin(nullptr, "Adder");
    window->connect({"Number", "number"}, {"Adder", "a"});
    varWindow& dialog = openFor("Adder");
    Gtk::Entry& entry = *entries(dialog).at(1);
    EXPECT_EQ(entry.get_text(), "Number number");
    EXPECT_FALSE(entry.get_editable());
    EXPECT_EQ(entry.get_style_context()->get_color(entry.get_state_flags()).to_string(), Gdk::RGBA("grey").to_string());
}

TEST_F(Values, everyCollectionAndEveryKindHasADescription) {
    for (const std::string& row : ListView(window->pluginWindow).rows()) {
        EXPECT_NE(row.back(), '|') << row;
    }
}

TEST_F(Values, everyDescriptionIsGoodMarkup) {
    auto& view = ListView(window->pluginWindow).widget();
    view.get_model()->foreach_iter([](const Gtk::TreeIter& row) {
        Glib::ustring text;
        row->get_value(1, text);
        EXPECT_TRUE(pango_parse_markup(text.c_str(), -1, 0, nullptr, nullptr, nullptr, nullptr)) << text.raw();
        return false;
    });
}

}  // namespace
