#include "PointerTest.h"
#include "Widgets.h"

#include <filesystem>
#include <fstream>

namespace {

class Tooltips : public PointerTest {
protected:
    Tooltips() {
        show(R"(
kind Cut Data /kinds/data/
  in table "" "Rows with abs(eta) < 2.4 & <b>more</b>."
  out passed "The rows that passed: x > 3."
  about "Keeps rows; a < b & c."
)");
        add("Cut");
    }

    /// Waits for that tooltip while the pointer moves slightly.
    static bool comes(const std::string& text) {
        constexpr int looksBetweenMoves = 200;
        int looks = 0;
        return pumpUntil([&] {
            if (tooltip() != text && ++looks % looksBetweenMoves == 0) {
                nudge(looks % (2 * looksBetweenMoves) == 0 ? 1 : -1);
            }
            return tooltip() == text;
        });
    }

    void pointAtBox() {
        double x = propertyOf<double>(node("Cut").box, "x") + 30;
        double y = propertyOf<double>(node("Cut").box, "y") + 8;
        window->canvas.convert_to_pixels(x, y);
        moveTo(window->canvas, x - window->scroller.get_hadjustment()->get_value(),
               y - window->scroller.get_vadjustment()->get_value());
    }
};

TEST_F(Tooltips, ofABoxAndItsPortsAppearAsPlainText) {
    pointAtBox();
    EXPECT_TRUE(comes("Keeps rows; a < b & c.")) << tooltip();
    moveTo(node("Cut").inputTexts[0]);
    EXPECT_TRUE(comes("Rows with abs(eta) < 2.4 & <b>more</b>.")) << tooltip();
    moveTo(node("Cut").outputTexts[0]);
    EXPECT_TRUE(comes("The rows that passed: x > 3.")) << tooltip();
}

TEST_F(Tooltips, goWhereNothingIsDrawn) {
    pointAtBox();
    ASSERT_TRUE(comes("Keeps rows; a < b & c."));
    moveTo(window->canvas, 600, 100);
    EXPECT_TRUE(comes(""));
}

TEST_F(Tooltips, areFoundWhereTheCanvasIsZoomedAndScrolled) {
    for (const double scale : {0.6, 1.0, 1.7}) {
        window->canvas.set_scale(scale);
        window->scroller.get_vadjustment()->set_value(1200 * scale - 600);
        window->scroller.get_hadjustment()->set_value(30);
        pump();
        moveTo(window->canvas, 900, 20);
        ASSERT_TRUE(comes(""));
        moveTo(node("Cut").inputTexts[0]);
        EXPECT_TRUE(comes("Rows with abs(eta) < 2.4 & <b>more</b>.")) << scale;
    }
}

TEST_F(Tooltips, showWhatIsNoUtf8AsFarAsItGoes) {
    object("Cut").description = "Grenze 5 \xb5m";
    node("Cut").draw();
    pointAtBox();
    EXPECT_TRUE(comes("Grenze 5 \ufffdm")) << tooltip();
}

TEST_F(Tooltips, ofTheCollectionAppearAsPlainText) {
    std::string folder = (std::filesystem::temp_directory_path() / "velmorak-test-XXXXXX").string();
    ASSERT_NE(mkdtemp(folder.data()), nullptr);
    std::ofstream(folder + "/plugin_summary.txt")
        << "==== Cuts ====\nWhat passes: a < b & \xb5.\n\n---- Keep ----\n<i>x</i> & y\n----\nmore\n\n";
    show("kind Keep Cuts " + folder + "/\n");
    std::filesystem::remove_all(folder);
    activate("plcoll");
    ListView list(window->pluginWindow);
    list.widget().expand_all();
    pumpUntil([&list] { return list.widget().get_mapped() && list.widget().get_allocated_height() > 100; });
    const auto pointAt = [&list](const std::string& path, int shift) {
        Gdk::Rectangle cell;
        list.widget().scroll_to_row(Gtk::TreePath(path));
        pump();
        list.widget().get_cell_area(Gtk::TreePath(path), *list.widget().get_column(0), cell);
        int x = 0;
        int y = 0;
        list.widget().convert_bin_window_to_widget_coords(cell.get_x() + 5, cell.get_y() + cell.get_height() / 2, x, y);
        moveTo(list.widget(), x + shift, y);
    };
    // The list may scroll after it has been asked to: the row is looked for again while nothing appears.
    const auto appearsAt = [&](const std::string& path, const std::string& text) {
        constexpr int looksBetweenMoves = 200;
        int looks = 0;
        return pumpUntil([&] {
            if (looks++ % looksBetweenMoves == 0) {
                pointAt(path, looks / looksBetweenMoves % 2);
            }
            return tooltip() == text;
        });
    };
    EXPECT_TRUE(appearsAt("2:0", "<i>x</i> & y\n")) << tooltip();
    EXPECT_TRUE(appearsAt("2", "What passes: a < b & \ufffd.")) << tooltip();
}

}  // namespace
