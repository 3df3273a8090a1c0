#include "GraphFixture.h"
#include "collections/TestCollection.h"

#include "graph/ManagerExtensions.h"
#include "graph/collections/Catalogue.h"

#include <dlfcn.h>
#include <future>
#include <optional>
#include <thread>
#include <typeinfo>
#include <utility>

namespace velmorak::test {
namespace {

class Runs : public Graph {
protected:
    /// Counts the plug-ins that wait inside a run.
    std::atomic<int>& waiting() {
        const Catalogue& catalogue = *sharedCatalogueIfMade();
        Dl_info loaded{};
        const auto& waiter = catalogue.kind(catalogue.find("Waiter"));
        dladdr(&typeid(waiter), &loaded);
        void* const collection = dlopen(loaded.dli_fname, RTLD_NOW | RTLD_NOLOAD);
        auto* const count = static_cast<std::atomic<int>*>(dlsym(collection, "waitersRunning"));
        dlclose(collection);
        return *count;
    }
    void waitUntilItRuns() {
        constexpr long maxPolls = 100'000'000;
        for (long poll = 0; waiting() == 0; ++poll) {
            ASSERT_LT(poll, maxPolls) << "no Waiter runs";
            std::this_thread::yield();
        }
    }
    std::future<void> runInBackground() {
        return std::async(std::launch::async, [this] { manager.Run(); });
    }
    NodeStatus outcomeOf(const std::string& name) {
        return lastReport(manager).nodes.at(static_cast<std::size_t>(manager.IndexOf(name))).status;
    }

    Errors errors;
};

TEST_F(Runs, anEmptyPipelineHasNothingToDo) {
    manager.Run();
    EXPECT_TRUE(lastReport(manager).nodes.empty());
}

TEST_F(Runs, valuesTravelAlongBindings) {
    add("Pair", "A");
    add("Pair", "B");
    setValue("A", "a", "1.5");
    setValue("A", "b", "2");
    setValue("B", "b", "10");
    wire("A", "sum", "B", "a");
    manager.Run();
    ASSERT_EQ(outcomeOf("B"), NodeStatus::Done) << errors.text();
    EXPECT_EQ(std::get<double>(lastReport(manager).nodes[1].outputs.at(0)), 13.5);
}

TEST_F(Runs, aPluginOfAnUnknownKindFailsByName) {
    read(R"({"zedra": 1, "plugins": [{"name": "S", "kind": "Teleporter"}]})");
    manager.Run();
    EXPECT_EQ(outcomeOf("S"), NodeStatus::Failed);
    EXPECT_THAT(lastReport(manager).nodes[0].sentence, testing::HasSubstr("Teleporter"));
}

TEST_F(Runs, stopEndsARunAndWithoutOneDoesNotStopTheNext) {
    add("Pair", "A");
    manager.Stop();
    manager.Run();
    EXPECT_EQ(outcomeOf("A"), NodeStatus::Done);
    add("Waiter", "W");
    manager.SetStart(1);
    auto run = runInBackground();
    waitUntilItRuns();
    manager.Stop();
    run.get();
    EXPECT_TRUE(lastReport(manager).wasStopped);
    EXPECT_EQ(outcomeOf("W"), NodeStatus::Unfinished);
}

// Whoever makes a thread for each run has asked for the run when the thread exists.
TEST_F(Runs, stopAppliesToARunThatIsRequestedButHasNotBegun) {
    add("Waiter", "W");
    std::promise<void> stopped;
    std::thread worker([&] {
        stopped.get_future().wait();
        manager.Run();
    });
    manager.Stop();
    stopped.set_value();
    worker.join();
    EXPECT_TRUE(lastReport(manager).wasStopped);
    EXPECT_EQ(outcomeOf("W"), NodeStatus::Unfinished);
}

TEST_F(Runs, stopIsNeverLostBetweenRequestAndBeginning) {
    add("Waiter", "W");
    for (int i = 0; i < 200; ++i) {
        std::thread worker([this] { manager.Run(); });
        manager.Stop();
        worker.join();
        ASSERT_TRUE(lastReport(manager).wasStopped);
    }
}

TEST_F(Runs, stopAfterARunDoesNotApplyToTheNextOne) {
    add("Pair", "A");
    for (int i = 0; i < 50; ++i) {
        manager.Stop();
        runInBackground().get();
        ASSERT_FALSE(lastReport(manager).wasStopped);
        manager.Stop();
    }
}

TEST_F(Runs, stopBetweenTwoRunsOfOneThreadAppliesToNeither) {
    add("Pair", "A");
    std::promise<void> hasRun;
    std::promise<void> stopped;
    std::thread worker([&] {
        manager.Run();
        hasRun.set_value();
        stopped.get_future().wait();
        manager.Run();
    });
    hasRun.get_future().wait();
    manager.Stop();
    stopped.set_value();
    worker.join();
    EXPECT_FALSE(lastReport(manager).wasStopped);
}

TEST_F(Runs, everyEditIsPossibleDuringARun) {
    add("Waiter", "W");
    add("Pair", "A");
    auto run = runInBackground();
    waitUntilItRuns();
    wire("W", "never", "A", "a");
    setValue("A", "b", "3");
    node("A").SetName("Z");
    read(R"({"zedra": 1, "plugins": [{"name": "Z", "kind": "Pair"}]})");
    manager.DeletePlugin(0);
    EXPECT_EQ(names(), (std::vector<std::string>{"Z", "Z1"}));
    manager.Reset();
    run.get();
    EXPECT_EQ(lastReport(manager).nodes.size(), 2U);
    expectInStep(manager);
}

TEST_F(Runs, aSecondRunWaitsForTheFirst) {
    add("Waiter", "W");
    auto first = runInBackground();
    waitUntilItRuns();
    auto second = runInBackground();
    EXPECT_EQ(waiting(), 1);
    manager.Stop();
    first.get();
    waitUntilItRuns();
    manager.Stop();
    second.get();
    EXPECT_TRUE(lastReport(manager).wasStopped);
}

/// That an optional may hold.
class OwnManager final : public QzManager {
public:
    using QzManager::QzManager;
};

TEST_F(Runs, destroyingTheManagerStopsItsRuns) {
    std::optional<OwnManager> dying(std::in_place, "QzAnalysisFactory");
    dying->CreatePlugin(kindNumber("Waiter"), "W");
    auto first = std::async(std::launch::async, [&] { dying->Run(); });
    waitUntilItRuns();
    dying.reset();
    EXPECT_EQ(waiting(), 0);
    first.get();
}

}  // namespace
}  // namespace velmorak::test
