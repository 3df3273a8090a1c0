#include "Artefacts.h"
#include "RandomEditor.h"

#include "graph/ManagerImpl.h"

#include <velmorak/TemporaryFolder.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <mutex>
#include <set>
#include <sstream>
#include <thread>

namespace velmorak::test {
namespace {

namespace fs = std::filesystem;

std::size_t numberOfEdits() {
    const char* const setting = std::getenv("VELMORAK_STRESS_EDITS");
    return !setting ? STRESS_EDITS : std::strtoul(setting, nullptr, 10);
}

/// A pipeline that this thread edits while a second one runs it, and a third one stops and resets it.
class Stress : public testing::Test {
protected:
    Stress() : quiet(std::cerr.rdbuf(nullptr)) { setResultsFolder(manager, folder / "stress.results"); }
    ~Stress() override { std::cerr.rdbuf(quiet); }

    void noteState() {
        const std::string text = textOf(pipelineOf(manager));
        const std::lock_guard guard(statesLock);
        states.insert(std::hash<std::string>()(text));
    }
    bool wasState(const Pipeline& plan) {
        const std::size_t hash = std::hash<std::string>()(textOf(plan));
        const std::lock_guard guard(statesLock);
        return states.contains(hash);
    }

    void countUp(std::atomic<std::size_t>& count) {
        ++count;
        count.notify_all();
    }
    void waitBeyond(const std::atomic<std::size_t>& count, std::size_t seen) {
        while (count <= seen && !isOver) {
            count.wait(seen);
        }
    }

    void editDuringRuns(RandomEditor& editor, std::uint32_t seed, const std::function<void()>& run) {
        const std::size_t wanted = numberOfEdits();
        editor.build(12);
        std::thread runner([&] {
            while (!isOver) {
                countUp(runs);
                run();
            }
        });
        std::thread stopper([this, seed] { stopAndReset(seed + 1); });
        while (edits < wanted) {
            editor.edit();
            countUp(edits);
            if (edits % 20 == 0) {
                waitBeyond(runs, runs);
            }
        }
        isOver = true;
        countUp(edits);
        countUp(runs);
        manager.Stop();
        runner.join();
        stopper.join();
        std::cout << wanted << " edits, " << runs - 1 << " runs\n";
    }

    /// Does what QzManager::Run does, and keeps the plan.
    void runAndCompare() {
        Pipeline plan;
        QzManager::Part::of(manager).runs.run([&] { return plan = pipelineOf(manager); });
        const RunReport report = lastReport(manager);
        EXPECT_EQ(report.nodes.size(), plan.nodes.size());
        EXPECT_FALSE(hasTemporaryFile());
        if (!report.wasStopped) {
            compareWithARunAlone(plan, report);
        }
    }

    bool hasTemporaryFile() const {
        for (const auto& [name, content] : filesIn(folder / "stress.results")) {
            if (name.starts_with(".velmorak")) {
                return true;
            }
        }
        return false;
    }

    /// Compares all plug-ins of the plan except those that a run with cached results need not execute.
    void compareWithARunAlone(const Pipeline& plan, const RunReport& report) {
        ++compared;
        // An edit may have changed the pipeline and not noted the state yet.
        constexpr int maxTries = 100000;
        for (int i = 0; i < maxTries && !wasState(plan); ++i) {
            std::this_thread::yield();
        }
        EXPECT_TRUE(wasState(plan)) << "the plan is not a state between two edits:\n" << textOf(plan);
        Pipeline alone = plan;
        alone.resultsFolder = folder / "alone.results";
        fs::remove_all(alone.resultsFolder);
        std::ostringstream messages;
        Runner runner(messages, false);
        const RunReport expected = runner.run(alone);
        auto wanted = resultsOf(plan, expected);
        auto found = resultsOf(plan, report);
        for (std::size_t i = 0; i < plan.nodes.size(); ++i) {
            done[plan.nodes[i].kindName] += expected.nodes[i].status == NodeStatus::Done ? 1 : 0;
        }
        for (std::size_t i = 0; i < plan.nodes.size(); ++i) {
            const bool isStream = !dynamic_cast<const Function*>(plan.nodes[i].kind) &&
                                  !dynamic_cast<const Accumulator*>(plan.nodes[i].kind);
            if (!isStream && report.nodes[i].status != NodeStatus::NotRequested) {
                EXPECT_EQ(found[plan.nodes[i].name], wanted[plan.nodes[i].name]) << textOf(plan) << messages.str();
            }
        }
        const auto files = filesIn(folder / "stress.results");
        for (const auto& [name, content] : filesIn(alone.resultsFolder)) {
            EXPECT_TRUE(files.contains(name) && files.at(name) == content) << name << '\n' << textOf(plan);
        }
    }

    void stopAndReset(std::uint32_t seed) {
        std::mt19937 random(seed);
        while (!isOver) {
            const std::size_t last = edits + random() % 60;
            while (edits < last && !isOver) {
                waitBeyond(edits, edits);
            }
            random() % 4 == 0 ? manager.Reset() : manager.Stop();
        }
    }

    TemporaryFolder ownFolder{"stress"};
    const fs::path& folder = ownFolder.path();
    QzManager manager{"QzAnalysisFactory"};
    std::streambuf* quiet;
    std::mutex statesLock;
    std::set<std::size_t> states;
    std::atomic<bool> isOver = false;
    std::atomic<std::size_t> edits = 0;
    std::atomic<std::size_t> runs = 0;
    std::size_t compared = 0;
    std::map<std::string, std::size_t> done;  ///< By kind: plug-ins that succeeded in compared runs.
};

TEST_F(Stress, editsDuringRunsLeaveEachRunTheResultsOfItsPlan) {
    const std::uint32_t seed = seedOfTest();
    RandomEditor editor(manager, seed, folder, [this] { noteState(); });
    noteState();
    editDuringRuns(editor, seed, [this] { runs % 4 == 0 ? manager.Run() : runAndCompare(); });
    std::cout << compared << " runs compared\n";
    std::size_t allDone = 0;
    for (const auto& [kind, count] : done) {
        std::cout << "  " << kind << ' ' << count << '\n';
        allDone += count;
    }
    EXPECT_GT(compared, 0U);
    EXPECT_GT(allDone, 0U);
}

/// Uses only the interface of the editor, so that no lock of the test hides a missing one.
TEST_F(Stress, editsDuringRunsAreHarmless) {
    const std::uint32_t seed = seedOfTest() + 1;
    RandomEditor editor(manager, seed, folder);
    editDuringRuns(editor, seed, [this] { manager.Run(); });
    const std::string text = manager.DocumentText();
    QzManager again("QzAnalysisFactory");
    std::ofstream(folder / "again.zedra") << text;
    again.ReadDocument(folder / "again.zedra");
    EXPECT_EQ(again.DocumentText(), text);
}

}  // namespace
}  // namespace velmorak::test

int main(int argc, char** argv) {
    setenv("VELMORAK_COLLECTIONS", TEST_COLLECTIONS, 1);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
