#include "KindHarness.h"

#include <QzManager.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace {

using velmorak::test::textIn;

namespace fs = std::filesystem;

std::vector<fs::path> documentsIn(const fs::path& folder) {
    std::vector<fs::path> documents;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        if (entry.path().extension() == ".zedra") {
            documents.push_back(entry.path());
        }
    }
    std::sort(documents.begin(), documents.end());
    return documents;
}

struct Box {
    std::string name;
    float left, right, top, bottom;
};

/// The outline of a plug-in, in the library's coordinates: y upwards, the header above the ports.
Box drawn(const QzBase& node) {
    float x = 0, y = 0, width = 0, outer = 0, drawnWidth = 0, drawnHeight = 0;
    node.GetPosition(x, y);
    node.GetOuterExtent(width, outer);
    node.GetDrawnExtent(drawnWidth, drawnHeight);
    return {node.GetName(), x, x + drawnWidth, y + outer, y + outer - 30 - drawnHeight};
}

std::vector<Box> boxesOf(const fs::path& document) {
    QzManager manager("QzAnalysisFactory");
    manager.SetFontSize(9, 11);
    manager.ReadDocument(document.string());
    std::vector<Box> boxes;
    for (const QzBase* node : manager.plugins) {
        boxes.push_back(drawn(*node));
    }
    return boxes;
}

const fs::path examples = fs::path(VELMORAK_TEST_SOURCE) / "examples";

TEST(Examples, areListedByGroup) {
    const QzManager manager("QzAnalysisFactory");
    std::set<std::string> listed;
    for (const QzExample& example : QzManager::GetExamples()) {
        listed.insert(example.group + "/" + example.name);
        EXPECT_TRUE(fs::exists(example.directory + "/" + example.name)) << example.directory;
        EXPECT_TRUE(example.summary.ends_with('.')) << example.name;
    }
    std::set<std::string> kept;
    for (const fs::path& document : documentsIn(examples)) {
        std::string group = document.parent_path().filename();
        std::replace(group.begin(), group.end(), '_', ' ');
        kept.insert(group + "/" + document.filename().string());
    }
    EXPECT_EQ(listed, kept);
    EXPECT_GE(listed.size(), 14U);
}

TEST(Examples, standAsTheLibraryWritesThem) {
    for (const fs::path& folder : {examples, fs::path(VELMORAK_TEST_SOURCE) / "tests/collections/real_data"}) {
        for (const fs::path& document : documentsIn(folder)) {
            QzManager manager("QzAnalysisFactory");
            manager.ReadDocument(document.string());
            ASSERT_FALSE(manager.plugins.empty()) << document;
            EXPECT_EQ(manager.DocumentText(), textIn(document)) << document;
        }
    }
}

TEST(Examples, showEveryKindThatThereIs) {
    const QzManager catalogue("QzAnalysisFactory");
    std::set<std::string> offered;
    for (const QzKind& kind : QzManager::GetPlugins()) {
        offered.insert(kind.name);
    }
    std::set<std::string> used;
    for (const fs::path& document : documentsIn(examples)) {
        QzManager manager("QzAnalysisFactory");
        manager.ReadDocument(document.string());
        for (const QzBase* node : manager.plugins) {
            used.insert(node->GetKind()->name);
        }
    }
    EXPECT_EQ(used, offered);
}

TEST(Examples, beginInTheWindowAsItOpensAndFitOnAScreen) {
    for (const fs::path& document : documentsIn(examples)) {
        for (const Box& box : boxesOf(document)) {
            EXPECT_GE(box.left, 0) << document << " " << box.name;
            EXPECT_LE(box.right, 1200) << document << " " << box.name;
            EXPECT_GE(box.bottom, 0) << document << " " << box.name;
            EXPECT_LE(box.top, 700) << document << " " << box.name;
        }
    }
}

TEST(Examples, noBoxCoversAnother) {
    for (const fs::path& document : documentsIn(examples)) {
        const std::vector<Box> boxes = boxesOf(document);
        for (std::size_t i = 0; i < boxes.size(); ++i) {
            for (std::size_t j = i + 1; j < boxes.size(); ++j) {
                const bool areApart = boxes[i].right < boxes[j].left || boxes[j].right < boxes[i].left ||
                                      boxes[i].bottom > boxes[j].top || boxes[j].bottom > boxes[i].top;
                EXPECT_TRUE(areApart) << document << ": " << boxes[i].name << " and " << boxes[j].name;
            }
        }
    }
}

}  // namespace
