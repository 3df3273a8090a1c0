#include "CommaLocale.h"
#include "LibraryTest.h"

#include <array>
#include <random>

namespace {

using ::testing::IsEmpty;
using ::testing::Not;

class Documents : public LibraryTest {
protected:
    std::size_t dice(std::size_t sides) { return std::uniform_int_distribution<std::size_t>(0, sides - 1)(generator); }

    void bindAny(const QzManager& pipeline) {
        QzBase& receiver = *pipeline.plugins.at(dice(pipeline.plugins.size()));
        QzBase& sender = *pipeline.plugins.at(dice(pipeline.plugins.size()));
        if (!receiver.Inputs().empty() && !sender.Outputs().empty()) {
            receiver.Connect(receiver.Inputs()[dice(receiver.Inputs().size())].name, &sender,
                             sender.Outputs()[dice(sender.Outputs().size())].name);
        }
    }

    void setAny(QzManager& pipeline) {
        static constexpr std::array values = {"1.5", "-0.1", "1e-300", "a b", "x \"y\" \\z", "Größe\n\ttwo", "42", ""};
        const std::size_t index = dice(pipeline.plugins.size());
        const std::size_t inputs = pipeline.plugins[index]->Inputs().size();
        if (inputs != 0) {
            pipeline.SetInputValue(static_cast<int>(index), static_cast<int>(dice(inputs)),
                                   values.at(dice(values.size())));
        }
    }

    std::string randomPipeline() {
        QzManager pipeline("QzAnalysisFactory");
        std::uniform_real_distribution<float> place(-1e4F, 1e4F);
        for (std::size_t count = 1 + dice(8); count > 0; --count) {
            const auto kind = static_cast<std::uint16_t>(dice(QzManager::GetPlugins().size()));
            QzBase* made = pipeline.CreatePlugin(kind, "plug-in " + std::to_string(dice(5)));
            made->SetPosition(place(generator), place(generator));
            made->SetExpanded(dice(2) == 0);
        }
        for (std::size_t count = dice(12); count > 0; --count) {
            dice(2) == 0 ? bindAny(pipeline) : setAny(pipeline);
        }
        pipeline.SetStart(static_cast<int>(dice(pipeline.plugins.size())));
        return pipeline.DocumentText();
    }

    std::mt19937 generator{20261121};
};

TEST_F(Documents, everyExampleIsSavedAsItWasOpened) {
    ASSERT_THAT(QzManager::GetExamples(), Not(IsEmpty()));
    for (const QzExample& example : QzManager::GetExamples()) {
        const std::string text = contentOf(std::filesystem::path(example.directory) / example.name);
        ASSERT_NE(text, "");
        EXPECT_EQ(throughTheEditor(text), text) << example.name;
        EXPECT_THAT(manager->plugins, Not(IsEmpty()));
    }
}

TEST_F(Documents, anOpenedExampleIsNeverOverwritten) {
    const QzExample& example = QzManager::GetExamples().front();
    window->checkOpen(example.directory + '/' + example.name);
    EXPECT_EQ(manager->fileName, "");
    Answers answers;
    answers.save(folder / "mine.zedra");
    act("Save");
    EXPECT_EQ(contentOf(folder / "mine.zedra"), contentOf(std::filesystem::path(example.directory) / example.name));
}

TEST_F(Documents, aThousandRandomPipelinesAreSavedAsTheyWereOpened) {
    testing::internal::CaptureStderr();  // refused values and bindings are expected
    for (int i = 0; i < 1000 && !HasFailure(); ++i) {
        const std::string text = randomPipeline();
        EXPECT_EQ(throughTheEditor(text), text) << "pipeline " << i;
    }
    testing::internal::GetCapturedStderr();
}

TEST_F(Documents, whatThisBuildDoesNotKnowIsSavedAsItWasOpened) {
    const std::string text = R"({
  "zedra": 1,
  "plugins": [
    {
      "name": "Old friend",
      "kind": "KindOfAnotherVersion",
      "position": [12.25, -3],
      "inputs": [
        {"name": "value", "value": "seven"}
      ],
      "outputs": [
        {"name": "result", "type": "tensor"}
      ],
      "colour": [1, 2.50, "blue"]
    },
    {
      "name": "Sum",
      "kind": "Adder",
      "position": [300, 600],
      "inputs": [
        {"name": "a", "value": "1", "from": ["Old friend", "result"]},
        {"name": "b", "value": "no number"}
      ],
      "outputs": [
        {"name": "sum", "type": "number"}
      ]
    }
  ],
  "later": {"a": 1.0}
}
)";
    put(folder / "document.zedra", text);
    QzManager reader("QzAnalysisFactory");
    reader.ReadDocument((folder / "document.zedra").string());
    const std::string canonical = reader.DocumentText();
    for (const std::string part : {"KindOfAnotherVersion", "2.50", "no number", "tensor", "\"later\""}) {
        EXPECT_THAT(canonical, testing::HasSubstr(part));
    }
    EXPECT_EQ(throughTheEditor(canonical), canonical);
    EXPECT_EQ(window->pathMap.count({"Sum", "a"}), 1U);
}

TEST_F(Documents, aCommaLocaleChangesNoByte) {
    const CommaLocale comma;
    for (const QzExample& example : QzManager::GetExamples()) {
        const std::string text = contentOf(std::filesystem::path(example.directory) / example.name);
        EXPECT_EQ(throughTheEditor(text), text) << example.name;
    }
    window->deleteAll();
    window->addPlugin(nullptr, "Number");
    manager->plugins[0]->SetPosition(1.5F, 2.25F);
    EXPECT_THAT(manager->DocumentText(), testing::HasSubstr("[1.5, 2.25]"));
}

}  // namespace
