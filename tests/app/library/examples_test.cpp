#include "LibraryTest.h"

#include <cairomm/context.h>
#include <cairomm/surface.h>

#include <algorithm>
#include <cmath>

namespace {

using ::testing::IsEmpty;
using ::testing::Not;

/// The examples as the window shows them. Saves their pictures for docs/.
class Examples : public LibraryTest {
protected:
    static constexpr double margin = 10;  ///< Around a picture, in canvas units.

    void show(const QzExample& example) {
        window->deleteAll();
        window->open(example.directory + '/' + example.name);
        window->canvas.update();  // Otherwise the boxes have no bounds yet.
    }

    Goocanvas::Bounds extent() const {
        Goocanvas::Bounds all(1e9, 1e9, -1e9, -1e9);
        for (const plugin* node : window->liveNodes()) {
            const Goocanvas::Bounds box = node->box->get_bounds();
            all.set_x1(std::min(all.get_x1(), box.get_x1() - margin));
            all.set_y1(std::min(all.get_y1(), box.get_y1() - margin));
            all.set_x2(std::max(all.get_x2(), box.get_x2() + margin));
            all.set_y2(std::max(all.get_y2(), box.get_y2() + margin));
        }
        return all;
    }

    /// Draws the used part of the canvas on a white background.
    void draw(const std::filesystem::path& file) const {
        const Goocanvas::Bounds all = extent();
        const int width = static_cast<int>(std::ceil(all.get_x2() - all.get_x1()));
        const int height = static_cast<int>(std::ceil(all.get_y2() - all.get_y1()));
        const auto surface = Cairo::ImageSurface::create(Cairo::FORMAT_RGB24, width, height);
        const auto context = Cairo::Context::create(surface);
        context->set_source_rgb(1, 1, 1);
        context->paint();
        context->set_source_rgb(0, 0, 0);  // Of the texts, as in a window.
        context->translate(-all.get_x1(), -all.get_y1());
        window->canvas.render(context, all, 1.0);
        surface->write_to_png(file.string());
    }

    /// Before scrolling, nothing is above or below the visible part of the canvas, and the start plug-in is inside it.
    /// A box with more ports than the view can show may begin above, so that all of them are on the canvas when it is
    /// opened.
    void expectInTheOpeningView(const std::string& example) const {
        constexpr double viewWidth = 600;
        constexpr double viewHeight = 400;
        double left = 0;
        double top = 0;
        double right = 0;
        double bottom = 0;
        window->canvas.get_bounds(left, top, right, bottom);
        for (plugin* node : window->liveNodes()) {
            const double opened = 70 + 20.0 * static_cast<double>(node->GetPlugin()->Inputs().size());
            EXPECT_GE(node->box->get_bounds().get_y1(), bottom - std::max(viewHeight, opened))
                << example << ": " << node->uniqueName;
            EXPECT_LE(node->box->get_bounds().get_y2(), bottom) << example << ": " << node->uniqueName;
        }
        const plugin* const start = window->nodeOf(manager->plugins.front()->name);
        EXPECT_LE(start->box->get_bounds().get_x2(), viewWidth) << example;
    }

    /// Minimal width of a readable layout: from the left edge to the right end of the longest chain of wires.
    double minRightOf(QzBase& object) const;

    /// If the longest chain fits into the view, nothing is outside it horizontally.
    void expectChainInTheOpeningView(const std::string& example) const {
        constexpr double viewWidth = 600;
        double least = 0;
        for (QzBase* object : manager->plugins) {
            least = std::max(least, minRightOf(*object));
        }
        for (const plugin* node : window->liveNodes()) {
            EXPECT_TRUE(least > viewWidth || node->box->get_bounds().get_x2() <= viewWidth)
                << example << ": " << node->uniqueName;
        }
    }

    /// Shows all ports of every box.
    void uncollapse() {
        GdkEventButton event{};
        event.button = 2;  // only selects
        for (plugin* node : window->liveNodes()) {
            if (!node->GetPlugin()->IsExpanded()) {
                window->click(node->box, &event);
                window->on_collapse();
            }
        }
        window->canvas.update();
    }

    void expectOnTheCanvas(const Glib::RefPtr<Goocanvas::Item>& item, const std::string& what) const {
        double left = 0;
        double top = 0;
        double right = 0;
        double bottom = 0;
        window->canvas.get_bounds(left, top, right, bottom);
        const Goocanvas::Bounds bounds = item->get_bounds();
        EXPECT_TRUE(bounds.get_x1() >= left && bounds.get_y1() >= top) << what;
        EXPECT_TRUE(bounds.get_x2() <= right && bounds.get_y2() <= bottom) << what;
    }

    /// All bindings of the library are drawn, and each sender is to the left of its receiver.
    void expectWiresToTheRight(const std::string& example);

    static bool overlap(const Goocanvas::Bounds& one, const Goocanvas::Bounds& other) {
        return one.get_x1() < other.get_x2() && other.get_x1() < one.get_x2() && one.get_y1() < other.get_y2() &&
               other.get_y1() < one.get_y2();
    }
};

void Examples::expectWiresToTheRight(const std::string& example) {
    std::size_t wires = 0;
    for (QzBase* object : manager->plugins) {
        const double left = window->nodeOf(object->name)->box->get_bounds().get_x1();
        for (const QzBase::Input& input : object->Inputs()) {
            if (input.source) {
                ++wires;
                EXPECT_LT(window->nodeOf(input.source->name)->box->get_bounds().get_x2(), left)
                    << example << ": " << input.source->name << " to " << object->name;
            }
        }
    }
    EXPECT_EQ(window->pathMap.size(), wires) << example;
}

double Examples::minRightOf(QzBase& object) const {
    constexpr double margin = 6;
    constexpr double gap = 16;  // Less hides the wire.
    double left = margin;
    for (const QzBase::Input& input : object.Inputs()) {
        if (input.source) {
            left = std::max(left, minRightOf(*input.source) + gap);
        }
    }
    const Goocanvas::Bounds box = window->nodeOf(object.name)->box->get_bounds();
    return left + box.get_x2() - box.get_x1();
}

TEST_F(Examples, everyBoxCanBeOpenedWithAllItsPortsOnTheCanvas) {
    for (const QzExample& example : QzManager::GetExamples()) {
        show(example);
        uncollapse();
        for (plugin* node : window->liveNodes()) {
            const std::string what = example.name + ": " + node->uniqueName.raw();
            EXPECT_EQ(node->inputTexts.size(), node->GetPlugin()->Inputs().size()) << what;
            EXPECT_EQ(node->outputTexts.size(), node->GetPlugin()->Outputs().size()) << what;
            for (const auto* texts : {&node->inputTexts, &node->outputTexts}) {
                for (const auto& text : *texts) {
                    expectOnTheCanvas(text, what);
                }
            }
        }
    }
}

TEST_F(Examples, boxesStandApartOnTheCanvasAndAllWiresLeadToTheRight) {
    const std::filesystem::path pictures = VELMORAK_PICTURES;
    std::filesystem::create_directories(pictures);
    ASSERT_THAT(QzManager::GetExamples(), Not(IsEmpty()));
    for (const QzExample& example : QzManager::GetExamples()) {
        show(example);
        const auto nodes = window->liveNodes();
        for (const plugin* one : nodes) {
            EXPECT_GE(one->box->get_bounds().get_x1(), 0) << example.name << ": " << one->uniqueName;
            EXPECT_GE(one->box->get_bounds().get_y1(), 0) << example.name << ": " << one->uniqueName;
            for (const plugin* other : nodes) {
                EXPECT_TRUE(one == other || !overlap(one->box->get_bounds(), other->box->get_bounds()))
                    << example.name << ": " << one->uniqueName << " and " << other->uniqueName;
            }
        }
        expectWiresToTheRight(example.name);
        expectInTheOpeningView(example.name);
        expectChainInTheOpeningView(example.name);
        const std::string name = std::filesystem::path(example.name).stem();
        draw(pictures / ("example-" + name + ".png"));
    }
}

}  // namespace
