#include "RandomEdits.h"
#include "ShownPipeline.h"
#include "colours.h"

#include <QzManager.h>

#include <iostream>
#include <set>

namespace {

constexpr int editsEach = 2000;

}  // namespace

void RandomEdits::compareNode(int number, QzBase& object) {
    const Model::Node& wanted = model.nodes.at(number);
    ASSERT_EQ(object.name, wanted.name);
    ASSERT_EQ(object.IsExpanded(), wanted.isExpanded);
    const plugin* shown = window->nodeOf(wanted.name);
    ASSERT_TRUE(shown) << wanted.name;
    ASSERT_EQ(window->nodeOf(wanted.name)->GetPlugin(), &object) << wanted.name;
    ASSERT_EQ(propertyOf<Glib::ustring>(shown->box, "title"), wanted.name);
    ASSERT_EQ(propertyOf<double>(shown->box, "x"), wanted.x);
    ASSERT_EQ(propertyOf<double>(shown->box, "y"), wanted.y);
    float x = 0;
    float y = 0;
    float width = 0;
    float height = 0;
    object.GetPosition(x, y);
    object.GetOuterExtent(width, height);
    ASSERT_EQ(x, wanted.x);
    ASSERT_EQ(1200 - y - height, wanted.y);
    for (const QzBase::Input& input : object.Inputs()) {
        const auto written = wanted.values.find(input.name);
        ASSERT_TRUE(written == wanted.values.end() || input.value == written->second)
            << wanted.name << '.' << input.name << ": " << input.value;
        const auto source = model.sources.find({number, input.name});
        ASSERT_EQ(input.source != nullptr, source != model.sources.end()) << wanted.name << '.' << input.name;
        if (input.source) {
            ASSERT_EQ(input.source->name, nameOf(source->second.first));
            ASSERT_EQ(input.source->Outputs().at(input.sourceOutput).name, source->second.second);
        }
    }
}

void RandomEdits::compareWires() {
    ASSERT_EQ(window->connectionMap.size(), model.sources.size());
    ASSERT_EQ(window->pathMap.size(), model.sources.size());
    ASSERT_EQ(static_cast<std::size_t>(pathsOnCanvas()), model.sources.size());
    for (const auto& [target, source] : model.sources) {
        const PortRef input{nameOf(target.first), target.second};
        ASSERT_EQ(window->connectionMap.count(input), 1) << input[0] << '.' << input[1];
        const PortRef& output = window->connectionMap.at(input);
        ASSERT_EQ(window->nodeOf(output[0]), window->nodeOf(nameOf(source.first))) << output[0];
        ASSERT_EQ(output[1], source.second);
        ASSERT_TRUE(window->pathMap.at(input)->get_canvas());
    }
}

void RandomEdits::compareColours() {
    for (const auto& [number, wanted] : model.nodes) {
        const auto colour = propertyOf<guint>(window->nodeOf(wanted.name)->box, "fill_color_rgba");
        const bool isBright = colour == colours::startSelected || colour == colours::otherSelected;
        ASSERT_EQ(isBright, number == selected && looksSelected) << wanted.name;
    }
}

void RandomEdits::compare() {
    ASSERT_EQ(manager->plugins.size(), model.order.size());
    for (std::size_t i = 0; i < model.order.size(); ++i) {
        ASSERT_NO_FATAL_FAILURE(compareNode(model.order[i], *manager->plugins[i]));
    }
    const std::vector<std::string> boxes = boxesOnCanvas();
    ASSERT_EQ(boxes.size(), model.nodes.size());
    ASSERT_EQ(std::set<std::string>(boxes.begin(), boxes.end()).size(), model.nodes.size());
    ASSERT_NO_FATAL_FAILURE(compareWires());
    ASSERT_NO_FATAL_FAILURE(compareColours());
    ASSERT_EQ(differencesBetween(*window, *manager), "");
    ASSERT_FALSE(window->rubberBand.isShown());
    ASSERT_FALSE(window->wiring);
    ASSERT_FALSE(window->dragging);
}

namespace {

TEST_P(RandomEdits, leaveTheCanvasTheMapsAndTheLibraryAsOne) {
    std::cout << "seed " << GetParam() << std::endl;
    for (int number = 0; number < editsEach; ++number) {
        SCOPED_TRACE(number);
        edit();
        ASSERT_NO_FATAL_FAILURE(compare());
        recording::forgetCalls();
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomEdits, testing::Values(1U, 20U, 300U, 4000U, 50000U));

}  // namespace
