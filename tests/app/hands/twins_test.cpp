#include "Walk.h"

#include <QzBase.h>
#include <QzManager.h>
#include <gtest/gtest.h>

namespace {

const std::string plain = "chi2";
const std::string raised = "chi\u00B2";
const std::string sink = "Sink";
const std::string misleading = "input";

/// A document with names that collation treats as equal, and a plug-in named "input", the title of every input's item.
void fillWithTwins(QzManager& library) {
    const WiredKind kind = WiredKind::first();
    struct Position {
        std::string name;
        float x, y;
    };
    for (const Position& place : {Position{plain, 30, 820}, Position{raised, 30, 1000}, Position{misleading, 210, 1090},
                                  Position{sink, 390, 900}}) {
        QzBase* object = library.CreatePlugin(static_cast<std::uint16_t>(kind.number), place.name);
        object->SetExpanded(true);
        float width = 0;
        float height = 0;
        object->GetOuterExtent(width, height);
        object->SetPosition(place.x, 1200 - place.y - height);
    }
    QzBase* last = library.FindPlugin(sink);
    last->Connect(kind.inputs[0], library.FindPlugin(plain), kind.output);
    last->Connect(kind.inputs[1], library.FindPlugin(raised), kind.output);
}

/// The installed program with such a document.
class TwinsOnScreen : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(walk.isOpen()); }

    std::string sourceOf(const std::string& input) const {
        const auto& sources = walk.saved().node(sink).sources;
        return sources.count(input) == 0 ? "" : sources.at(input);
    }

    Walk walk{View{"twins", 0, 1000, 800}, fillWithTwins};
    const std::string first = walk.kind().inputs[0];
    const std::string second = walk.kind().inputs[1];
    const std::string output = '.' + walk.kind().output;
};

TEST_F(TwinsOnScreen, theDocumentHoldsWhatTheHandDid) {
    ASSERT_TRUE(walk.dragBy(sink, 60, -40));
    EXPECT_EQ(sourceOf(first), plain + output);
    EXPECT_EQ(sourceOf(second), raised + output);
    ASSERT_TRUE(walk.dragBy(plain, 20, 10));
    EXPECT_EQ(sourceOf(first), plain + output);
    EXPECT_EQ(sourceOf(second), raised + output);
    walk.picture("dragged");

    ASSERT_TRUE(walk.wire(misleading, sink, first));
    EXPECT_EQ(sourceOf(second), raised + output);
    ASSERT_TRUE(walk.wire(plain, misleading, first));
    ASSERT_TRUE(walk.wire(plain, sink, second));
    ASSERT_TRUE(walk.wire(raised, sink, first));
    walk.picture("wired");
    ASSERT_TRUE(walk.pullOff(misleading, first, second));

    ASSERT_TRUE(walk.select(raised));
    ASSERT_TRUE(walk.key("Delete", [](const SavedPipeline& now) { return now.nodes.size() == 3; }));
    walk.picture("deleted");
    EXPECT_EQ(walk.saved().names(), (std::vector<std::string>{plain, misleading, sink}));
    EXPECT_EQ(sourceOf(first), "");
    EXPECT_EQ(sourceOf(second), plain + output);
    EXPECT_EQ(walk.saved().node(misleading).sources.at(second), plain + output);
    EXPECT_TRUE(walk.quit());
}

}  // namespace
