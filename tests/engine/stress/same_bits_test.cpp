#include "Artefacts.h"
#include "RandomEditor.h"
#include "ShuffledExecutor.h"

#include "executor/PipelineExecutor.h"
#include "graph/ManagerExtensions.h"

#include <velmorak/TemporaryFolder.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>
#include <set>
#include <sstream>

namespace velmorak::test {
namespace {

namespace fs = std::filesystem;

/// Everything that a run produced.
struct Produced {
    std::map<std::string, std::string> results;
    std::map<std::string, std::string> files;
};

/// Runs the same pipeline with different executors.
class SameBits : public testing::Test {
protected:
    SameBits() : quiet(std::cerr.rdbuf(nullptr)) {}
    ~SameBits() override { std::cerr.rdbuf(quiet); }

    Produced runWith(std::unique_ptr<Executor> executor, const Pipeline& pipeline, std::size_t threads = 1) {
        Pipeline own = pipeline;
        own.resultsFolder = folder / "bits.results";
        fs::remove_all(own.resultsFolder);
        std::ostringstream messages;
        Runner runner(messages, false);
        runner.setThreads(threads);
        runner.setExecutor(std::move(executor));
        report = runner.run(own);
        for (const NodeReport& node : report.nodes) {
            EXPECT_NE(node.status, NodeStatus::Reused);
        }
        said = messages.str();
        return {resultsOf(own, report), filesIn(own.resultsFolder)};
    }

    void expectSame(const Produced& expected, const Produced& found, const Pipeline& pipeline,
                    const std::string& executor) {
        EXPECT_EQ(found.results, expected.results) << executor << '\n' << textOf(pipeline);
        EXPECT_TRUE(found.files == expected.files) << executor << '\n' << textOf(pipeline);
    }

    void compareAll(const Pipeline& pipeline, std::uint32_t seed) {
        const Produced one = runWith(std::make_unique<PipelineExecutor>(1), pipeline);
        for (const std::size_t threads : {2U, 3U, 16U}) {
            expectSame(one, runWith(std::make_unique<PipelineExecutor>(threads), pipeline, threads), pipeline,
                       std::to_string(threads) + " threads");
        }
        for (std::uint32_t order = 0; order < 3; ++order) {
            expectSame(one, runWith(std::make_unique<ShuffledExecutor>(seed + order), pipeline), pipeline,
                       "order " + std::to_string(seed + order));
        }
    }

    /// Pictures are drawn by another program from the data that are compared here.
    void removePictures(QzManager& manager) {
        for (std::size_t i = manager.plugins.size(); i-- > 0;) {
            if (manager.plugins[i]->GetKind()->name == "Plot") {
                manager.DeletePlugin(static_cast<int>(i));
            }
        }
    }

    bool isDone(std::size_t node) const { return report.nodes.at(node).status == NodeStatus::Done; }

    TemporaryFolder ownFolder{"bits"};
    const fs::path& folder = ownFolder.path();
    std::streambuf* quiet;
    RunReport report;
    std::string said;
};

TEST_F(SameBits, comeFromEachExampleOnAnyExecutor) {
    for (const auto& entry : fs::recursive_directory_iterator(TEST_EXAMPLES)) {
        if (entry.path().extension() != ".zedra") {
            continue;
        }
        QzManager manager("QzAnalysisFactory");
        manager.ReadDocument(entry.path().string());
        removePictures(manager);
        compareAll(pipelineOf(manager), 1);
        EXPECT_FALSE(report.hasFailure()) << entry.path() << said;
        EXPECT_TRUE(isDone(0)) << entry.path() << said;
    }
}

/// A random pipeline that ends in a plug-in of one kind, with all its outputs written to files.
class SameBitsOfKinds : public SameBits {
protected:
    /// @return whether the plug-in completed.
    bool compare(std::size_t kind, std::uint32_t seed) {
        QzManager manager("QzAnalysisFactory");
        const fs::path own = folder / (std::to_string(kind) + '-' + std::to_string(seed));
        fs::create_directories(own);
        RandomEditor editor(manager, seed, own);
        // Some valid values of each type; everything else is random.
        for (const char* const example : {"/Histograms/Efficiency.zedra", "/Histograms/Plane.zedra"}) {
            manager.ReadDocument(std::string(TEST_EXAMPLES) + example);
        }
        manager.SetFileName((own / "bits.zedra").string());
        removePictures(manager);
        editor.build(manager.plugins.size() + 5);
        QzBase& node = editor.addOfKind(kind);
        for (std::size_t i = 0; i < node.Outputs().size(); ++i) {
            write(manager, node, node.Outputs()[i].name);
        }
        const int position = manager.IndexOf(node.GetName());
        manager.SetStart(position);
        compareAll(pipelineOf(manager), seed);
        return isDone(0);
    }

    /// Runs each plug-in of the kind in the examples. @return whether one of them completed.
    bool compareInExamples(const std::string& kind, std::uint32_t seed) {
        for (const auto& entry : fs::recursive_directory_iterator(TEST_EXAMPLES)) {
            if (entry.path().extension() == ".zedra" && compareInExample(entry.path(), kind, seed)) {
                return true;
            }
        }
        return false;
    }

    bool compareInExample(const fs::path& example, const std::string& kind, std::uint32_t seed) {
        QzManager manager("QzAnalysisFactory");
        manager.ReadDocument(example.string());
        removePictures(manager);
        const auto found = std::ranges::find_if(
            manager.plugins, [&](const QzBase* node) { return node->GetKind() && node->GetKind()->name == kind; });
        if (found == manager.plugins.end()) {
            return false;
        }
        manager.SetStart(static_cast<int>(found - manager.plugins.begin()));
        QzBase& node = *manager.plugins.front();
        for (std::size_t i = 0; i < node.Outputs().size(); ++i) {
            write(manager, node, node.Outputs()[i].name);
        }
        compareAll(pipelineOf(manager), seed);
        return isDone(0);
    }

    void write(QzManager& manager, QzBase& node, const std::string& output) {
        const auto kind = static_cast<std::uint16_t>(RandomEditor::kindOf("AidaWriter"));
        QzBase& writer = *manager.CreatePlugin(kind, "Written " + output);
        writer.Connect("object", &node, output);
    }
};

TEST_F(SameBitsOfKinds, comeFromRandomPipelinesOfEveryKindOnAnyExecutor) {
    const std::uint32_t seed = seedOfTest();
    const QzManager manager("QzAnalysisFactory");
    std::set<std::string> never;
    for (std::size_t kind = 0; kind < QzManager::GetPlugins().size(); ++kind) {
        const std::string& name = QzManager::GetPlugins()[kind].name;
        bool isTried = name == "Plot";
        constexpr std::uint32_t maxTries = 8;
        for (std::uint32_t i = 0; i < maxTries && !isTried; ++i) {
            isTried = compare(kind, seed + 100 * i);
        }
        // Random values rarely suit some kinds; what an example does with them always works.
        if (!isTried && !compareInExamples(name, seed)) {
            never.insert(name);
        }
    }
    EXPECT_THAT(never, testing::IsEmpty()) << "these kinds never did their work";
}

}  // namespace
}  // namespace velmorak::test
