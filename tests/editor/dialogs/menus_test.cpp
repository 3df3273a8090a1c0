#include "DialogTest.h"
#include "varWindow.h"

#include <glibmm/utility.h>
#include <gtkmm/accelmap.h>

namespace {

using ::testing::ElementsAre;

/// A way to activate an action: by menu or by key.
using Choice = std::function<void()>;

class Menus : public DialogTest {
protected:
    using Effect = void (Menus::*)(const Choice&);

    static const std::map<std::string, Effect>& effects() {
        static const std::map<std::string, Effect> all = {
            {"Open", &Menus::opens},
            {"Save", &Menus::saves},
            {"SaveAs", &Menus::asksForAName},
            {"Quit", &Menus::hidesTheWindow},
            {"Var", &Menus::showsVariables},
            {"Col", &Menus::collapses},
            {"SStart", &Menus::setsTheStart},
            {"Del", &Menus::deletes},
            {"ImgExp", &Menus::exports},
            {"plcoll", &Menus::showsTheCollection},
            {"zIn", &Menus::zoomsIn},
            {"zOut", &Menus::zoomsOut},
            {"z0", &Menus::resetsTheZoom},
            {"About", &Menus::tellsAboutItself},
            {"Examples", &Menus::showsTheExamples},
        };
        return all;
    }

    void opens(const Choice& choose) {
        Answers answers;
        answers.press("Open", Gtk::RESPONSE_CANCEL);
        choose();
        EXPECT_TRUE(answers.areAllGiven());
    }

    void saves(const Choice& choose) {
        manager->SetFileName((folder / "saved.zedra").string());
        std::filesystem::remove(folder / "saved.zedra");
        choose();
        EXPECT_TRUE(exists("saved.zedra"));
    }

    void asksForAName(const Choice& choose) {
        Answers answers;
        answers.press("Save as", Gtk::RESPONSE_CANCEL);
        choose();
        EXPECT_TRUE(answers.areAllGiven());
    }

    void hidesTheWindow(const Choice& choose) {
        window->show();
        choose();
        EXPECT_FALSE(window->get_visible());
    }

    void showsVariables(const Choice& choose) {
        twoWithTheSecondSelected();
        choose();
        ASSERT_NE(window->lastDialog, nullptr);
        EXPECT_EQ(window->lastDialog->get_title(), "Adder Variables");
        window->lastDialog->exit();
    }

    void collapses(const Choice& choose) {
        twoWithTheSecondSelected();
        choose();
        EXPECT_THAT(recording::callsOf("SetExpanded"), ElementsAre("Adder.SetExpanded(false)"));
    }

    void setsTheStart(const Choice& choose) {
        twoWithTheSecondSelected();
        choose();
        EXPECT_THAT(recording::callsOf("SetStart"), ElementsAre("SetStart(1)"));
    }

    void deletes(const Choice& choose) {
        twoWithTheSecondSelected();
        choose();
        EXPECT_THAT(recording::callsOf("DeletePlugin"), ElementsAre("DeletePlugin(1)"));
    }

    void exports(const Choice& choose) {
        add("Note");
        std::filesystem::remove(folder / "test.png");
        choose();
        EXPECT_TRUE(exists("test.png"));
    }

    void showsTheCollection(const Choice& choose) {
        choose();
        EXPECT_TRUE(window->pluginWindow.get_visible());
    }

    void showsTheExamples(const Choice& choose) {
        choose();
        EXPECT_TRUE(window->exampleWindow.get_visible());
    }

    void zoomsIn(const Choice& choose) {
        choose();
        EXPECT_DOUBLE_EQ(window->canvas.get_scale(), 1.1);
    }

    void zoomsOut(const Choice& choose) {
        choose();
        EXPECT_DOUBLE_EQ(window->canvas.get_scale(), 0.9);
    }

    void resetsTheZoom(const Choice& choose) {
        window->canvas.set_scale(3);
        choose();
        EXPECT_EQ(window->canvas.get_scale(), 1);
    }

    void tellsAboutItself(const Choice& choose) {
        Answers answers;
        answers.press("About Velmorak(Gtk)", Gtk::RESPONSE_CANCEL);
        choose();
        EXPECT_TRUE(answers.areAllGiven());
    }

    void twoWithTheSecondSelected() {
        add("Number");
        add("Adder");
        select("Adder");
        recording::forgetCalls();
    }

    Gtk::AccelKey keyOf(const std::string& action) const {
        Gtk::AccelKey key;
        Gtk::AccelMap::lookup_entry(window->actionGroup->get_action(action)->get_accel_path(), key);
        return key;
    }

    void press(const Gtk::AccelKey& key) {
        EXPECT_TRUE(gtk_accel_groups_activate(G_OBJECT(window->gobj()), key.get_key(),
                                              static_cast<GdkModifierType>(key.get_mod())));
    }
};

TEST_F(Menus, everyActionIsCovered) {
    std::vector<std::string> names;
    for (const auto& action : window->actionGroup->get_actions()) {
        const std::string name = action->get_name();
        if (!name.ends_with("Menu")) {
            names.push_back(name);
        }
    }
    std::vector<std::string> covered;
    for (const auto& [name, effect] : effects()) {
        covered.push_back(name);
    }
    EXPECT_THAT(names, ::testing::UnorderedElementsAreArray(covered));
}

TEST_F(Menus, everyActionHasItsEffect) {
    for (const auto& [name, effect] : effects()) {
        SCOPED_TRACE(name);
        restart(script());
        (this->*effect)([&, action = name] { act(action); });
    }
}

TEST_F(Menus, everyKeyHasTheEffectOfItsAction) {
    int keys = 0;
    for (const auto& [name, effect] : effects()) {
        SCOPED_TRACE(name);
        restart(script());
        const Gtk::AccelKey key = keyOf(name);
        if (key.get_key() != 0) {
            ++keys;
            (this->*effect)([&] { press(key); });
        }
    }
    EXPECT_EQ(keys, 12);
}

}  // namespace
