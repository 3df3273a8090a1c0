#include "DialogTest.h"

#include <cairomm/surface.h>
#include <sys/resource.h>

#include <cmath>

namespace {

using ::testing::ElementsAre;

class ExportedImage : public DialogTest {
protected:
    Cairo::RefPtr<Cairo::ImageSurface> image() const {
        return Cairo::ImageSurface::create_from_png((folder / "test.png").string());
    }

    // Moves the node's box to these corners, as if the library's position were there.
    Glib::RefPtr<Goocanvas::Rect> place(const std::string& name, double x, double y, double width, double height) {
        const auto box = node(name).box;
        box->set_property("x", x);
        box->set_property("y", y);
        box->set_property("width", width);
        box->set_property("height", height);
        box->set_property("line_width", 0.0);
        return box;
    }

    // Opacity of a pixel of the image; the canvas's background is not painted.
    static int opacityAt(const Cairo::RefPtr<Cairo::ImageSurface>& picture, int x, int y) {
        return picture->get_data()[y * picture->get_stride() + 4 * x + 3];
    }
};

TEST_F(ExportedImage, isAsLargeAsTheBoxButShowsTheCanvasFromItsOrigin) {
    add("Note");
    place("Note", 100, 100, 160, 80);
    act("ImgExp");
    const auto picture = image();
    EXPECT_EQ(picture->get_width(), 160);
    EXPECT_EQ(picture->get_height(), 80);
    EXPECT_EQ(opacityAt(picture, 80, 40), 0);
    EXPECT_EQ(opacityAt(picture, 159, 79), 0);
}

TEST_F(ExportedImage, showsAllOfNodesThatBeginAtTheOrigin) {
    add("Note");
    add("Note");
    place("Note", 0, 0, 200, 100);
    place("Note1", 600, 500, 200, 100);
    act("ImgExp");
    const auto picture = image();
    EXPECT_EQ(picture->get_width(), 800);
    EXPECT_EQ(picture->get_height(), 600);
    EXPECT_EQ(opacityAt(picture, 100, 50), 0xe6);
    EXPECT_EQ(opacityAt(picture, 700, 550), 0xe6);
    EXPECT_EQ(opacityAt(picture, 400, 300), 0);
}

TEST_F(ExportedImage, theExtentIsThatOfTheBoxesAsTheCanvasReportsThem) {
    window->open("/x/chain.zedra");
    double x1 = 5000;
    double x2 = 0;
    for (const plugin* shown : window->liveNodes()) {
        x1 = std::min(x1, shown->box->get_bounds().get_x1());
        x2 = std::max(x2, shown->box->get_bounds().get_x2());
    }
    act("ImgExp");
    EXPECT_EQ(image()->get_width(), static_cast<int>(x2 - x1));
}

TEST_F(ExportedImage, theColourOfTheSelectionIsShown) {
    add("Note");
    const auto box = place("Note", 0, 0, 200, 100);
    box->set_property("fill_color_rgba", std::uint32_t{0xff0000ff});
    act("ImgExp");
    const auto picture = image();
    EXPECT_EQ(picture->get_data()[50 * picture->get_stride() + 4 * 100 + 2], 0xff);
    EXPECT_EQ(opacityAt(picture, 100, 50), 0xff);
}

TEST_F(ExportedImage, aPathBetweenTheBoxesIsShown) {
    window->open("/x/other.zedra");
    add("Note");
    place("Alone", 0, 0, 100, 100);
    place("Note", 300, 300, 100, 100);
    const auto wire = Goocanvas::Path::create("M 0 200 L 400 200");
    wire->set_property("line_width", 20.0);
    window->canvas.get_root_item()->add_child(wire);
    act("ImgExp");
    EXPECT_EQ(opacityAt(image(), 250, 200), 0xff);
    EXPECT_EQ(opacityAt(image(), 250, 250), 0);
}

TEST_F(ExportedImage, theZoomOfTheViewDoesNotMatter) {
    add("Note");
    place("Note", 0, 0, 160, 80);
    act("zIn");
    act("ImgExp");
    EXPECT_EQ(image()->get_width(), 160);
}

TEST_F(ExportedImage, theSecondExportReplacesTheFirst) {
    add("Note");
    place("Note", 100, 100, 160, 80);
    act("ImgExp");
    place("Note", 100, 100, 60, 40);
    act("ImgExp");
    EXPECT_EQ(image()->get_width(), 60);
    EXPECT_EQ(image()->get_height(), 40);
}

TEST_F(ExportedImage, anEmptyCanvasLeavesAnExistingImageAsItWas) {
    put("test.png", "former");
    add("Note");
    window->pldelete("Note");
    testing::internal::CaptureStderr();
    act("ImgExp");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(contentOf("test.png"), "former");
}

TEST_F(ExportedImage, anEmptyCanvasMakesNoImage) {
    act("ImgExp");
    EXPECT_FALSE(exists("test.png"));
}

TEST_F(ExportedImage, aCanvasTooLargeForAnImageLeavesAnExistingImageAsItWas) {
    put("test.png", "former");
    add("Note");
    add("Note");
    place("Note", 0, 0, 100, 100);
    place("Note1", 4e9, 0, 100, 100);
    act("ImgExp");
    place("Note1", 40000, 0, 100, 100);
    act("ImgExp");
    EXPECT_EQ(contentOf("test.png"), "former");
}

TEST_F(ExportedImage, aCanvasTooLargeForAnImageIsToldInOneLine) {
    add("Note");
    add("Note");
    place("Note", 0, 0, 100, 100);
    place("Note1", 32700, 0, 100, 100);
    testing::internal::CaptureStderr();
    act("ImgExp");
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "no image of the canvas: the plug-ins take 32800 x 100 units, and an image holds at most 32767 x 32767; "
              "move them closer together\n");
    place("Note1", 32667, 0, 100, 100);
    testing::internal::CaptureStderr();
    act("ImgExp");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_EQ(image()->get_width(), 32767);
}

TEST_F(ExportedImage, aFolderThatIsGoneLeavesNoMessage) {
    add("Note");
    std::filesystem::remove_all(folder);
    testing::internal::CaptureStderr();
    act("ImgExp");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_FALSE(exists("test.png"));
    std::filesystem::create_directory(folder);
}

TEST_F(ExportedImage, aDiskThatIsFullLeavesAnExistingImageAsItWas) {
    window->open("/x/chain.zedra");
    put("test.png", "former");
    rlimit former{};
    getrlimit(RLIMIT_FSIZE, &former);
    const rlimit limit{512, former.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
    act("ImgExp");
    setrlimit(RLIMIT_FSIZE, &former);
    EXPECT_EQ(contentOf("test.png"), "former");
}

}  // namespace
