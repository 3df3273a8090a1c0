#include "EditorTest.h"
#include "Widgets.h"

#include <gdkmm/pixbuf.h>
#include <gtkmm/aboutdialog.h>
#include <gtkmm/image.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

using ::testing::ElementsAre;

namespace {

class MainWindow : public EditorTest {
protected:
    std::vector<std::string> selectorEntries() {
        std::vector<std::string> entries;
        for (const auto& row : window->kindSelector.get_model()->children()) {
            Glib::ustring text;
            row.get_value(0, text);
            entries.push_back(text);
        }
        return entries;
    }

    /// Colour of a pixel of the window, as hexadecimal digits.
    std::string pixelAt(int x, int y) {
        const auto picture = Gdk::Pixbuf::create(window->get_window(), x, y, 1, 1);
        std::ostringstream text;
        for (int i = 0; i < 3; ++i) {
            text << std::hex << int{picture->get_pixels()[i]};
        }
        return text.str();
    }

    void showAll() {
        window->show();
        pumpUntil([this] { return window->canvas.get_mapped() && window->canvas.get_allocated_height() > 1; });
        pump();
    }
};

}  // namespace

TEST_F(MainWindow, opensAtSixHundredByFourHundredOfCanvasWithItsBottomInView) {
    showAll();
    EXPECT_EQ(window->canvas.get_allocated_width(), 600);
    EXPECT_EQ(window->canvas.get_allocated_height(), 400);
    const auto vertical = window->scroller.get_vadjustment();
    EXPECT_GE(vertical->get_value() + vertical->get_page_size(), 1200);
    EXPECT_DOUBLE_EQ(vertical->get_page_size(), 400);
    EXPECT_DOUBLE_EQ(window->scroller.get_hadjustment()->get_value(), 0);
}

TEST_F(MainWindow, theCanvasHasItsBoundsAndColour) {
    double left = 1;
    double top = 1;
    double right = 0;
    double bottom = 0;
    window->canvas.get_bounds(left, top, right, bottom);
    EXPECT_THAT((std::vector<double>{left, top, right, bottom}), ElementsAre(0, 0, 1500, 1200));
    showAll();
    EXPECT_TRUE(pumpUntil([this] { return pixelAt(300, 200) == "abbac9"; })) << pixelAt(300, 200);
}

TEST_F(MainWindow, stacksMenusCanvasAndControls) {
    EXPECT_THAT(window->mainBox.get_children(), ElementsAre(window->menuBar, &window->scroller, &window->controlRow));
    EXPECT_THAT(window->controlRow.get_children(),
                ElementsAre(&window->startButton, &window->resetButton, &window->kindSelector));
    EXPECT_EQ(window->startButton.get_label(), "Start");
    EXPECT_EQ(window->resetButton.get_label(), "Reset");
    EXPECT_EQ(window->scroller.get_child(), &window->canvas);
}

TEST_F(MainWindow, hasNoCloseButtonAndNoTitle) {
    EXPECT_FALSE(window->get_deletable());
    EXPECT_EQ(window->get_title(), "");
}

TEST_F(MainWindow, staysWhenTheWindowManagerWantsToCloseIt) {
    showAll();
    GdkEvent* request = gdk_event_new(GDK_DELETE);
    request->any.window = GDK_WINDOW(g_object_ref(window->get_window()->gobj()));
    gtk_main_do_event(request);
    gdk_event_free(request);
    pump();
    EXPECT_TRUE(window->get_visible());
}

TEST_F(MainWindow, theSelectorOffersTheKindsBelowItsHeading) {
    EXPECT_THAT(selectorEntries(), ElementsAre("Create...", "Number", "Adder", "Splitter", "Note"));
    EXPECT_EQ(window->kindSelector.get_active_row_number(), 0);
}

TEST_F(MainWindow, kindsOfOneNameShareTheNumberOfTheLast) {
    restart("kind Same One\nkind Other One\nkind Same Two\n");
    EXPECT_EQ(window->kindMap.size(), 2U);
    EXPECT_EQ(window->kindMap.at("Same"), 2);
    EXPECT_THAT(selectorEntries(), ElementsAre("Create...", "Same", "Other", "Same"));
}

TEST_F(MainWindow, choosingAKindAddsItAndTheSelectorGoesBack) {
    window->kindSelector.set_active(2);
    EXPECT_THAT(recording::callsOf("CreatePlugin"), ElementsAre("CreatePlugin(1, Adder)"));
    EXPECT_EQ(window->kindSelector.get_active_row_number(), 0);
    EXPECT_THAT(boxesOnCanvas(), ElementsAre("Adder"));
}

TEST_F(MainWindow, choosingTheHeadingAddsNothing) {
    window->on_combo_changed();
    EXPECT_THAT(recording::calls(), ElementsAre());
}

TEST_F(MainWindow, clearingTheSelectorAddsNothing) {
    window->kindSelector.unset_active();
    EXPECT_THAT(recording::calls(), ElementsAre());
}

TEST_F(MainWindow, zoomsOutToNothingAndBeyond) {
    add("Adder");
    showAll();
    for (int i = 0; i < 10; ++i) {
        window->on_zOut();
        pump();
    }
    EXPECT_NEAR(window->canvas.get_scale(), 0.0, 1e-12);
    window->on_zOut();
    pump();
    EXPECT_NEAR(window->canvas.get_scale(), -0.1, 1e-12);
    window->on_z0();
    EXPECT_EQ(window->canvas.get_scale(), 1.0);
}

TEST_F(MainWindow, zoomsInWithoutLimit) {
    for (int i = 0; i < 100; ++i) {
        window->on_zIn();
    }
    EXPECT_NEAR(window->canvas.get_scale(), 11.0, 1e-9);
}

TEST_F(MainWindow, quitsAtOnceWithoutAChange) {
    window->open("chain.zedra");
    window->quit();
    EXPECT_FALSE(window->get_visible());
}

TEST_F(MainWindow, quitAsksWhereSomethingChangedAndNoDoesNotSave) {
    add("Adder");
    answerNext(Gtk::RESPONSE_NO);
    window->quit();
    EXPECT_EQ(lastQuestion, "Save changes?");
    EXPECT_FALSE(window->get_visible());
    EXPECT_THAT(recording::callsOf("DocumentText"), ElementsAre());
}

TEST_F(MainWindow, quitSavesByReturn) {
    add("Adder");
    std::pair<bool, bool> isYes;
    answerNext(Gtk::RESPONSE_NO, [&isYes](Gtk::Dialog& shown) {
        const Gtk::Widget* yes = shown.get_widget_for_response(Gtk::RESPONSE_YES);
        isYes = {shown.get_default_widget() == yes, shown.get_focus() == yes};
    });
    window->quit();
    EXPECT_TRUE(isYes.first);
    EXPECT_TRUE(isYes.second);
}

TEST_F(MainWindow, quitHidesAlsoWhenTheQuestionIsClosed) {
    add("Adder");
    answerNext(Gtk::RESPONSE_DELETE_EVENT);
    window->quit();
    EXPECT_FALSE(window->get_visible());
    EXPECT_THAT(recording::callsOf("DocumentText"), ElementsAre());
}

TEST_F(MainWindow, quitAsksWhereOnlyANodeChanged) {
    window->open("chain.zedra");
    node("Parts").changed = true;
    answerNext(Gtk::RESPONSE_NO);
    window->quit();
    EXPECT_EQ(lastQuestion, "Save changes?");
    EXPECT_TRUE(window->modified);
}

TEST_F(MainWindow, theFlagsOfNodesThatAreGoneDoNotCount) {
    window->open("chain.zedra");
    node("Parts").changed = true;
    window->pldelete("Parts");
    window->modified = false;
    EXPECT_FALSE(window->hasChanges());
}

TEST_F(MainWindow, theAboutBoxSaysWhoMadeIt) {
    unsetenv("HOME");
    Glib::ustring program, version, comments, address, label;
    std::vector<Glib::ustring> authors;
    bool hasLogo = true;
    answerNext(Gtk::RESPONSE_CANCEL, [&](Gtk::Dialog& shown) {
        auto& dialog = dynamic_cast<Gtk::AboutDialog&>(shown);
        program = dialog.get_program_name();
        version = dialog.get_version();
        comments = dialog.get_comments();
        address = dialog.get_website();
        label = dialog.get_website_label();
        authors = dialog.get_authors();
        hasLogo = gtk_about_dialog_get_logo(dialog.gobj()) != nullptr;
    });
    activate("About");
    EXPECT_EQ(program, "Velmorak(Gtk)");
    EXPECT_EQ(version, "0.2");
    EXPECT_EQ(comments,
              "A graphical analyzer for physical data. This program uses Open Scientist that needs to be installed "
              "separately, at least version 16.10.");
    EXPECT_EQ(label, "Velmorak Website");
    EXPECT_EQ(address.substr(0, 8), "file:///");
    EXPECT_THAT(address.raw(), ::testing::Not(::testing::HasSubstr("..")));
    ASSERT_EQ(authors.size(), 3U);
    for (const auto& author : authors) {
        EXPECT_THAT(author.raw(), ::testing::MatchesRegex(".+ \\(.+\\)"));
    }
    EXPECT_FALSE(hasLogo);
}

namespace {

class Logo : public MainWindow {
protected:
    Logo() {
        folder = std::filesystem::temp_directory_path() / ("velmorak-home-" + std::to_string(getpid()));
        std::filesystem::create_directories(folder / ".VelmorakGtk");
        setenv("HOME", folder.c_str(), 1);
    }
    ~Logo() override { std::filesystem::remove_all(folder); }

    int widthOfLogo() {
        int width = 0;
        answerNext(Gtk::RESPONSE_CANCEL, [&](Gtk::Dialog& shown) {
            GdkPixbuf* logo = gtk_about_dialog_get_logo(dynamic_cast<Gtk::AboutDialog&>(shown).gobj());
            width = logo ? gdk_pixbuf_get_width(logo) : 0;
        });
        activate("About");
        return width;
    }

    /// Whether the about box shows any picture.
    bool isAnyShown() {
        bool isAny = false;
        answerNext(Gtk::RESPONSE_CANCEL, [&isAny](Gtk::Dialog& shown) {
            for (const Gtk::Image* image : widgetsIn<Gtk::Image>(shown)) {
                isAny = isAny || (image->get_mapped() && image->get_storage_type() != Gtk::IMAGE_EMPTY);
            }
        });
        activate("About");
        return isAny;
    }

    void write(const char* text) { std::ofstream(folder / ".VelmorakGtk/velko_lin.svg") << text; }

    std::filesystem::path folder;
};

}  // namespace

TEST_F(Logo, isTheOneInTheHomeFolder) {
    // The toolkit detects the format by the content: this picture is three pixels wide.
    write("P3\n3 1\n255\n0 0 0 0 0 0 0 0 0\n");
    EXPECT_EQ(widthOfLogo(), 3);
    EXPECT_TRUE(isAnyShown());
}

TEST_F(Logo, isLeftOutWhereThereIsNone) {
    EXPECT_EQ(widthOfLogo(), 0);
    EXPECT_FALSE(isAnyShown());
}

TEST_F(Logo, isLeftOutWhereTheFileIsNoPicture) {
    write("not a picture");
    EXPECT_EQ(widthOfLogo(), 0);
    EXPECT_FALSE(isAnyShown());
}
