#include "../run/RunFixture.h"
#include "QuietContext.h"

#include "graph/Paths.h"
#include "graph/collections/Catalogue.h"
#include "run/HelperKind.h"
#include "run/NodeArguments.h"
#include "run/record/KindBuild.h"

#include <velmorak/Failure.h>
#include <velmorak/StateBytes.h>

#include <gmock/gmock.h>

#include <future>
#include <thread>

namespace velmorak::test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::ValuesIn;

constexpr std::size_t memoryBytes = std::size_t{64} << 20U;

IsolationConfig isolationOf(IsolationConfig::Which which) {
    IsolationConfig config = isolationConfigFromEnvironment(libraryFile());
    config.which = which;
    config.memoryBytes = memoryBytes;
    return config;
}

Catalogue loaded(IsolationConfig::Which which) {
    return {{{TEST_COLLECTIONS}, {}, {}, isolationOf(which)}, "QzAnalysisFactory"};
}

PipelineNode nodeOf(const Kind& kind, const std::string& name, const ValueTexts& values = {}) {
    const Ports ports = kind.ports({});
    PipelineNode node{name, kind.name(), &kind, {}, ports.outputs};
    for (const InputSpec& spec : ports.inputs) {
        const auto given = values.find(spec.name);
        node.inputs.push_back({spec, given == values.end() ? spec.value : given->second, std::nullopt});
    }
    return node;
}

const Kind& kindOf(const Catalogue& catalogue, const std::string& name) {
    return catalogue.kind(catalogue.find(name));
}

/// Pipelines of kinds that make trouble, in helper processes.
class HelperProcesses : public RunTest {
protected:
    const Kind& kind(const std::string& name) const { return kindOf(catalogue, name); }
    std::size_t add(const std::string& kindName, const std::string& name, const ValueTexts& values = {}) {
        return RunTest::add(kind(kindName), name, values);
    }
    /// Rows, their doubles, and the sum of these. @param place plug-in that makes the trouble.
    void addStream(const std::string& place, const std::string& how) {
        const auto at = [&](const std::string& name) {
            return ValueTexts{{"how", name == place ? how : "well"}, {"sign", sign().string()}};
        };
        add("TroubleSource", "rows", at("rows"));
        add("TroubleRows", "double", at("double"));
        add("TroubleSum", "sum", at("sum"));
        wire("rows", "table", "double", "table");
        wire("double", "table", "sum", "table");
    }
    fs::path sign() const { return folder / "sign"; }
    void waitForSign() const {
        while (!fs::exists(sign())) {
            std::this_thread::yield();
        }
    }

    Catalogue catalogue = loaded(IsolationConfig::Which::Foreign);
};

struct End {
    std::string how;
    std::string sentence;
};

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool isSanitized = true;
#else
constexpr bool isSanitized = false;
#endif

std::vector<End> ends() {
    std::vector<End> all{
        {"abort", "its process crashed (abort)"},
        {"exit", "its process ended with status 3"},
        {"kill", "its process was killed, perhaps because the machine has too little memory"},
        {"throw", "it failed without saying why"},
        {"fail", "input \"how\": it was made to fail"},
    };
    if (!isSanitized) {  // A sanitizer has handlers and memory of its own.
        all.push_back({"segfault", "its process crashed (segmentation fault)"});
        all.push_back({"memory", "there was not enough memory: its process may use 64 MB (VELMORAK_ISOLATE_MEMORY)"});
    }
    return all;
}

class TroubleIn : public HelperProcesses, public testing::WithParamInterface<End> {};

TEST_P(TroubleIn, aFunctionFailsThatPlugInOnly) {
    add("Trouble", "first");
    add("Trouble", "bad", {{"how", GetParam().how}});
    add("Trouble", "good");
    wire("first", "number", "bad", "after");
    wire("first", "number", "good", "after");
    run();
    EXPECT_EQ(sentence("bad"), GetParam().sentence);
    EXPECT_EQ(status("bad"), NodeStatus::Failed);
    EXPECT_EQ(status("good"), NodeStatus::Done);
    EXPECT_TRUE(wasSaid("Trouble \"bad\" failed: " + GetParam().sentence)) << messages.str();
}

TEST_P(TroubleIn, aRowOperationFailsThatPlugInOnly) {
    addStream("double", GetParam().how);
    add("TroubleSum", "others");
    wire("rows", "table", "others", "table");
    run();
    EXPECT_EQ(sentence("double"), GetParam().sentence);
    EXPECT_EQ(status("sum"), NodeStatus::Skipped);
    EXPECT_EQ(status("others"), NodeStatus::Done);
}

TEST_P(TroubleIn, aReaderFailsThatPlugInOnly) {
    add("Trouble", "first");
    addStream("rows", GetParam().how);
    add("Trouble", "good");
    wire("first", "number", "rows", "after");
    wire("first", "number", "good", "after");
    run();
    EXPECT_EQ(sentence("rows"), GetParam().sentence);
    EXPECT_EQ(status("sum"), NodeStatus::Skipped);
    EXPECT_EQ(status("good"), NodeStatus::Done);
}

TEST_P(TroubleIn, anAccumulatorFailsThatPlugInOnly) {
    addStream("sum", GetParam().how);
    add("TroubleSum", "others");
    wire("double", "table", "others", "table");
    run();
    EXPECT_EQ(sentence("sum"), GetParam().sentence);
    EXPECT_EQ(status("double"), NodeStatus::Done);
    EXPECT_EQ(status("others"), NodeStatus::Done);
}

INSTANTIATE_TEST_SUITE_P(Each, TroubleIn, ValuesIn(ends()), [](const auto& each) { return each.param.how; });

TEST_F(HelperProcesses, giveWhatTheKindsGiveInsideTheProgram) {
    addStream("", "");
    run();
    const double isolated = number("sum");
    const Catalogue inside = loaded(IsolationConfig::Which::None);
    for (PipelineNode& node : pipeline.nodes) {
        node.kind = &kindOf(inside, node.kindName);
    }
    run();
    EXPECT_EQ(number("sum"), isolated);
    EXPECT_GT(isolated, 0.0);
}

TEST_F(HelperProcesses, haveTheBuildOfTheKind) {
    const Catalogue inside = loaded(IsolationConfig::Which::None);
    const Kind& here = kindOf(inside, "Trouble");
    ASSERT_EQ(dynamic_cast<const HelperKind*>(&here), nullptr);
    ASSERT_NE(dynamic_cast<const HelperKind*>(&kind("Trouble")), nullptr);
    EXPECT_EQ(buildOf(kind("Trouble")), buildOf(here)) << "or results would be computed again";
}

TEST_F(HelperProcesses, tellPortsAndCheckValues) {
    EXPECT_EQ(kind("Trouble").ports({{"more", "extra"}}).inputs.back().name, "extra");
    EXPECT_EQ(kind("Trouble").refusal("sign", "bad"), "bad is no sign");
    EXPECT_EQ(kind("Trouble").refusal("sign", "good"), "");
}

TEST_F(HelperProcesses, areReplacedWhenTheyCrashAboutAValue) {
    EXPECT_THAT([&] { (void)kind("Trouble").refusal("sign", "crash"); },
                testing::ThrowsMessage<Failure>("its process crashed (abort)"));
    EXPECT_EQ(kind("Trouble").refusal("sign", "bad"), "bad is no sign");
    EXPECT_THAT(
        [&] {
            (void)kind("Trouble").ports({{"more", "crash"}});
        },
        testing::ThrowsMessage<Failure>("its process crashed (abort)"));
    EXPECT_EQ(kind("Trouble").ports({}).inputs.size(), 4U);
}

TEST_F(HelperProcesses, offerTheServicesOfTheRun) {
    add("Asks", "ask", {{"text", "a text"}});
    add("Trouble", "one");
    wire("one", "number", "ask", "number");
    run();
    EXPECT_EQ(text("ask"), "ask 1 a text entered no other one 2 file") << sentence("ask");
    EXPECT_EQ(content(pipeline.resultsFolder / "written.txt"), "by the kind\n");
    EXPECT_TRUE(wasSaid("Asks \"ask\": warning: from a thread of its own")) << messages.str();
}

TEST_F(HelperProcesses, passFailuresOfServicesOn) {
    add("Asks", "ask");
    run();
    EXPECT_THAT(text("ask"), HasSubstr("number: 0.1 is not a whole number"));
}

/// The first period of grace ends at once, the later ones when the run does.
TEST_F(HelperProcesses, areEndedWhenTheyDoNotStop) {
    add("Trouble", "deaf", {{"how", "hang"}, {"sign", sign().string()}});
    int periods = 0;
    runner.waitWith([&](Mutex& mutex, ConditionVariable& change, const std::function<bool()>& isOver)
                        VELMORAK_REQUIRES(mutex) {
                            if (periods++ > 0) {
                                while (!isOver()) {
                                    change.waitFor(mutex, std::chrono::milliseconds(10));
                                }
                            }
                        });
    auto caller = std::async(std::launch::async, [this] {
        waitForSign();
        runner.stop();
    });
    run();
    caller.get();
    EXPECT_EQ(sentence("deaf"), "it did not stop, and its process was ended");
    EXPECT_TRUE(report.wasStopped);
    set("deaf", "how", "well");
    run();
    EXPECT_EQ(status("deaf"), NodeStatus::Done) << "the kind is not refused: " << sentence("deaf");
}

TEST_F(HelperProcesses, saveAndLoadStatesAsKindsInsideTheProgramDo) {
    const Catalogue inside = loaded(IsolationConfig::Which::None);
    std::vector<std::string> bytes;
    for (const Catalogue* const each : {static_cast<const Catalogue*>(&catalogue), &inside}) {
        const Kind& kind = kindOf(*each, "TroubleSum");
        const PipelineNode node = nodeOf(kind, "sum");
        const NodeArguments arguments(node, std::vector<Arrival>(node.inputs.size()));
        const Schema schema(std::vector<ColumnInfo>{{.name = "x"}});
        QuietContext context;
        const auto accumulation = dynamic_cast<const Accumulator&>(kind).prepare(arguments, &schema, context);
        const auto state = accumulation->newState();
        Chunk chunk;
        chunk.rows = 2;
        chunk.columns = {columnOf(std::vector<double>{0.1, 0.2})};
        state->fill(chunk);
        bytes.push_back(savedState(*state, "TroubleSum"));
        const auto copy = accumulation->newState();
        loadState(*copy, bytes.back(), "TroubleSum");
        EXPECT_EQ(savedState(*copy, "TroubleSum"), bytes.back());
    }
    EXPECT_EQ(bytes[0], bytes[1]);
}

/// The text goes where that of a kind inside the program goes.
TEST(HelperProcess, printsOnTheOutputsOfTheProgram) {
    testing::internal::CaptureStdout();
    {
        std::ostringstream messages;
        const Catalogue catalogue = loaded(IsolationConfig::Which::Foreign);
        Pipeline pipeline;
        pipeline.nodes.push_back(nodeOf(kindOf(catalogue, "Trouble"), "prints", {{"how", "print"}}));
        Runner(messages, false).run(pipeline);
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "by a stream\nby the C library\n");
}

TEST(HelperProcess, thatCannotLoadACollectionDoesNotEndTheProgram) {
    testing::internal::CaptureStderr();
    const Catalogue catalogue({{TEST_HOSTILE}, {}, {}, isolationOf(IsolationConfig::Which::Foreign)},
                              "QzAnalysisFactory");
    EXPECT_TRUE(catalogue.kinds().empty());
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                HasSubstr("is skipped: the process that loads it ended with status 0."));
}

TEST(HelperProcess, isNotNeededWhereItsProgramIsMissing) {
    IsolationConfig config = isolationOf(IsolationConfig::Which::Foreign);
    config.program = "/no/such/program";
    testing::internal::CaptureStderr();
    const Catalogue catalogue({{TEST_COLLECTIONS}, {}, {}, config}, "QzAnalysisFactory");
    EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("Kinds run inside this program, because"));
    EXPECT_EQ(dynamic_cast<const HelperKind*>(&kindOf(catalogue, "Trouble")), nullptr);
}

TEST(IsolationSettings, isolateForeignCollectionsAllOrNone) {
    IsolationConfig config = isolationOf(IsolationConfig::Which::Foreign);
    const fs::path shipped = config.installed / "Data" / "Data.so";
    EXPECT_FALSE(config.isolates(shipped));
    EXPECT_TRUE(config.isolates("/elsewhere/Mine/Mine.so"));
    config.which = IsolationConfig::Which::All;
    EXPECT_TRUE(config.isolates(shipped));
    config.which = IsolationConfig::Which::None;
    EXPECT_FALSE(config.isolates("/elsewhere/Mine/Mine.so"));
}

TEST(IsolationSettings, comeFromTheEnvironment) {
    const auto configWith = [](const char* isolate, const char* memory) {
        setenv("VELMORAK_ISOLATE", isolate, 1);
        setenv("VELMORAK_ISOLATE_MEMORY", memory, 1);
        IsolationConfig config = isolationConfigFromEnvironment("/lib/QzManager.so");
        unsetenv("VELMORAK_ISOLATE");
        unsetenv("VELMORAK_ISOLATE_MEMORY");
        return config;
    };
    EXPECT_EQ(configWith("", "").which, IsolationConfig::Which::Foreign);
    EXPECT_EQ(configWith("0", "").which, IsolationConfig::Which::None);
    EXPECT_EQ(configWith("1", "").which, IsolationConfig::Which::All);
    EXPECT_EQ(configWith("1", "2 GB").memoryBytes, std::size_t{2} << 30U);
    EXPECT_EQ(configWith("yes", "2 GB").warning,
              "VELMORAK_ISOLATE=yes is neither 0 nor 1; the kinds outside the installation run in helper processes");
    EXPECT_THAT(configWith("1", "much").warning, HasSubstr("VELMORAK_ISOLATE_MEMORY=much is not a size"));
}

}  // namespace
}  // namespace velmorak::test
