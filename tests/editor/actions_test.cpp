#include "EditorTest.h"

#include <glibmm/utility.h>
#include <gtkmm/accelmap.h>
#include <gtkmm/menubar.h>
#include <gtkmm/menuitem.h>

#include <map>

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

namespace {

struct Row {
    std::string name, label, stock, key;
};

/// Every action, with its key as the toolkit spells it. Open, Save and Quit have the keys of their stock items.
const std::vector<Row>& table() {
    static const std::vector<Row> rows = {
        {"FileMenu", "File", "", ""},
        {"Open", "_Open", "gtk-open", "<Primary>o"},
        {"Save", "_Save", "gtk-save", "<Primary>s"},
        {"SaveAs", "Save as", "gtk-save-as", "<Primary><Shift>s"},
        {"Quit", "_Quit", "gtk-quit", "<Primary>q"},
        {"OptionMenu", "Options", "", ""},
        {"Var", "_Variables", "", "<Alt>v"},
        {"Col", "(Un)_Collapse", "", "<Alt>c"},
        {"SStart", "Set _Start", "", "<Alt>s"},
        {"Del", "_Delete", "", "Delete"},
        {"ImgExp", "Export Image", "", "<Alt>i"},
        {"PluginMenu", "Plugins", "", ""},
        {"plcoll", "From _Collection", "", ""},
        {"ViewMenu", "View", "", ""},
        {"zIn", "Zoom in", "", "plus"},
        {"zOut", "Zoom out", "", "minus"},
        {"z0", "Reset zoom", "", "0"},
        {"HelpMenu", "Help", "", ""},
        {"About", "About", "gtk-about", ""},
        {"Examples", "Examples", "", ""},
    };
    return rows;
}

std::string keyOf(const Glib::RefPtr<Gtk::Action>& action) {
    Gtk::AccelKey key;
    const bool isKnown = Gtk::AccelMap::lookup_entry(action->get_accel_path(), key);
    if (!isKnown || key.get_key() == 0) {
        return "";
    }
    const Glib::ScopedPtr<char> name(gtk_accelerator_name(key.get_key(), static_cast<GdkModifierType>(key.get_mod())));
    return name.get();
}

std::vector<std::string> itemsOf(const Gtk::MenuShell& menu) {
    std::vector<std::string> names;
    for (const Gtk::Widget* child : menu.get_children()) {
        const auto* item = dynamic_cast<const Gtk::MenuItem*>(child);
        if (item && item->get_related_action()) {
            names.push_back(item->get_related_action()->get_name());
        }
    }
    return names;
}

class Actions : public EditorTest {
protected:
    std::vector<std::string> menu(const std::string& name) {
        auto* item = dynamic_cast<Gtk::MenuItem*>(window->uiManager->get_widget("/MenuBar/" + name));
        return itemsOf(*item->get_submenu());
    }

    bool press(guint key, Gdk::ModifierType modifiers) {
        return gtk_accel_groups_activate(G_OBJECT(window->gobj()), key, static_cast<GdkModifierType>(modifiers));
    }
};

}  // namespace

TEST_F(Actions, areThoseOfTheTableAndNoOthers) {
    std::vector<std::string> expected;
    for (const Row& row : table()) {
        expected.push_back(row.name);
    }
    std::vector<std::string> found;
    for (const auto& action : window->actionGroup->get_actions()) {
        found.push_back(action->get_name());
    }
    EXPECT_THAT(found, ::testing::UnorderedElementsAreArray(expected));
}

TEST_F(Actions, haveTheirLabels) {
    for (const Row& row : table()) {
        EXPECT_EQ(window->actionGroup->get_action(row.name)->get_label(), row.label) << row.name;
    }
}

TEST_F(Actions, haveTheirStockItems) {
    for (const Row& row : table()) {
        const auto stock = window->actionGroup->get_action(row.name)->property_stock_id().get_value();
        EXPECT_EQ(stock.get_string(), row.stock) << row.name;
    }
}

TEST_F(Actions, haveTheirKeys) {
    for (const Row& row : table()) {
        EXPECT_EQ(keyOf(window->actionGroup->get_action(row.name)), row.key) << row.name;
    }
}

TEST_F(Actions, standInTheirMenus) {
    EXPECT_THAT(itemsOf(*dynamic_cast<Gtk::MenuBar*>(window->menuBar)),
                ElementsAre("FileMenu", "OptionMenu", "PluginMenu", "ViewMenu", "HelpMenu"));
    EXPECT_THAT(menu("FileMenu"), ElementsAre("Open", "Save", "SaveAs", "Quit"));
    EXPECT_THAT(menu("OptionMenu"), ElementsAre("Var", "Col", "SStart", "Del"));
    EXPECT_THAT(menu("PluginMenu"), ElementsAre("plcoll"));
    EXPECT_THAT(menu("ViewMenu"), ElementsAre("zIn", "zOut", "z0"));
    EXPECT_THAT(menu("HelpMenu"), ElementsAre("Examples", "About"));
}

TEST_F(Actions, exportOfTheImageIsInNoMenu) {
    for (const char* name : {"FileMenu", "OptionMenu", "PluginMenu", "ViewMenu", "HelpMenu"}) {
        EXPECT_THAT(menu(name), ::testing::Not(::testing::Contains("ImgExp")));
    }
}

TEST_F(Actions, theMenuOfANodeHasItsFourEntries) {
    std::vector<std::string> labels;
    for (Gtk::Widget* child : window->nodeMenu.get_children()) {
        labels.push_back(dynamic_cast<Gtk::MenuItem*>(child)->get_label());
    }
    EXPECT_THAT(labels, ElementsAre("Variables", "(Un)Collapse", "Set Start", "Delete"));
}

TEST_F(Actions, zoomByTheirKeys) {
    EXPECT_TRUE(press(GDK_KEY_plus, Gdk::ModifierType()));
    EXPECT_DOUBLE_EQ(window->canvas.get_scale(), 1.1);
    EXPECT_TRUE(press(GDK_KEY_minus, Gdk::ModifierType()));
    EXPECT_TRUE(press(GDK_KEY_minus, Gdk::ModifierType()));
    EXPECT_DOUBLE_EQ(window->canvas.get_scale(), 0.9);
    EXPECT_TRUE(press(GDK_KEY_0, Gdk::ModifierType()));
    EXPECT_EQ(window->canvas.get_scale(), 1.0);
}

TEST_F(Actions, deleteCollapseAndStartActOnTheSelectedNode) {
    add("Number");
    add("Adder");
    select("Adder");
    press(GDK_KEY_s, Gdk::MOD1_MASK);
    EXPECT_THAT(recording::callsOf("SetStart"), ElementsAre("SetStart(1)"));
    press(GDK_KEY_c, Gdk::MOD1_MASK);
    EXPECT_THAT(recording::callsOf("SetExpanded"), ElementsAre("Adder.SetExpanded(false)"));
    press(GDK_KEY_Delete, Gdk::ModifierType());
    EXPECT_THAT(recording::callsOf("DeletePlugin"), ElementsAre("DeletePlugin(0)"));
}

TEST_F(Actions, theMenuOfANodeActsOnTheSelectedNode) {
    add("Number");
    add("Adder");
    select("Adder");
    const auto entries = window->nodeMenu.get_children();
    dynamic_cast<Gtk::MenuItem*>(entries.at(1))->activate();
    EXPECT_THAT(recording::callsOf("SetExpanded"), ElementsAre("Adder.SetExpanded(false)"));
    dynamic_cast<Gtk::MenuItem*>(entries.at(2))->activate();
    EXPECT_THAT(recording::callsOf("SetStart"), ElementsAre("SetStart(1)"));
    dynamic_cast<Gtk::MenuItem*>(entries.at(3))->activate();
    EXPECT_THAT(recording::callsOf("DeletePlugin"), ElementsAre("DeletePlugin(0)"));
}

TEST_F(Actions, doNothingWhereNoNodeIsSelected) {
    add("Number");
    window->modified = false;
    recording::forgetCalls();
    for (const char* name : {"Var", "Col", "SStart", "Del"}) {
        activate(name);
    }
    EXPECT_THAT(recording::edits(), ElementsAre());
    EXPECT_FALSE(window->modified);
}

TEST_F(Actions, showTheTwoLists) {
    EXPECT_FALSE(window->pluginWindow.get_visible());
    EXPECT_FALSE(window->exampleWindow.get_visible());
    activate("plcoll");
    EXPECT_TRUE(window->pluginWindow.get_visible());
    activate("Examples");
    EXPECT_TRUE(window->exampleWindow.get_visible());
}

TEST_F(Actions, quitHidesTheWindow) {
    window->show();
    activate("Quit");
    EXPECT_FALSE(window->get_visible());
}
