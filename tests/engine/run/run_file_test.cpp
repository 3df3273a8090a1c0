#include "RunFixture.h"

#include "run/RunRecordFile.h"

#include <nlohmann/json.hpp>

namespace velmorak::test {
namespace {

using Json = nlohmann::json;

/// A runner that leaves records; "one" -> "two", and "bad" fails.
class RunFile : public RunTest {
protected:
    RunFile() {
        runner.leaveRecords();
        add(pass, "one", {{"value", "2"}});
        add(pass, "two");
        wire("one", "number", "two", "value");
        pipeline.documentText = "{}\n";
        pipeline.document = folder / "test.zedra";
        pipeline.settings = {"one.value=2"};
    }

    std::filesystem::path file() const { return pipeline.resultsFolder / "run.json"; }
    Json record() const { return Json::parse(content(file())); }

    PassKind pass;
};

TEST_F(RunFile, saysWhatRanAndHow) {
    runner.setThreads(3);
    run();
    const Json left = record();
    EXPECT_EQ(left["threads"], 3);
    EXPECT_EQ(left["complete"], true);
    EXPECT_EQ(left["settings"], Json({"one.value=2"}));
    EXPECT_EQ(left["document"]["file"], (folder / "test.zedra").string());
    EXPECT_EQ(left["document"]["sha256"], "ca3d163bab055381827226140568f3bef7eaac187cebd76878e0b63e9e442356");
    EXPECT_EQ(left["plugins"][0]["inputs"][0]["value"], "2");
    EXPECT_EQ(left["plugins"][1]["inputs"][0]["from"], Json({"one", "number"}));
    EXPECT_EQ(left["plugins"][1]["outcome"], "done");
    EXPECT_EQ(left["plugins"][1]["outputs"][0]["value"], "2");
}

TEST_F(RunFile, listsTheInputsThatTheirKindsDeclareAsSeeds) {
    InputSpec first = numberInput("first", "4711");
    first.isSeed = true;
    const FreeFunction drawing("Draw", {{first, numberInput("seed", "5")}, {}},
                               [](const Arguments&, Results&, RunContext&) {});
    add(drawing, "draw");
    run();
    EXPECT_EQ(record()["seed"], Json({{"draw", "4711"}}));
}

TEST_F(RunFile, isIncompleteWhileTheRunGoesOn) {
    Json meanwhile;
    const FreeFunction looking("Look", {{numberInput("value")}, {}},
                               [&](const Arguments&, Results&, RunContext&) { meanwhile = record(); });
    add(looking, "look");
    wire("two", "number", "look", "value");
    run();
    EXPECT_EQ(meanwhile["complete"], false);
    EXPECT_EQ(meanwhile["plugins"][0]["outcome"], "unfinished");
    EXPECT_EQ(record()["complete"], true);
}

TEST_F(RunFile, isIncompleteAfterAStop) {
    const FreeFunction stopping("Stop", {{numberInput("value")}, {}}, [this](const Arguments&, Results&, RunContext&) {
        runner.stop();
        throw Stopped();
    });
    add(stopping, "stop");
    wire("two", "number", "stop", "value");
    run();
    EXPECT_EQ(record()["complete"], false);
    EXPECT_EQ(record()["plugins"][1]["outcome"], "done");
    EXPECT_EQ(record()["plugins"][2]["outcome"], "unfinished");
}

TEST_F(RunFile, isNoHindranceWhereItCannotBeWritten) {
    write("test.results", "a file");
    run();
    EXPECT_EQ(status("two"), NodeStatus::Done);
    EXPECT_NE(messages.str().find("The record of the run cannot be written: " + file().string()), std::string::npos);
}

TEST_F(RunFile, isNotLeftByAPipelineWithoutPlugIns) {
    pipeline.nodes.clear();
    run();
    EXPECT_FALSE(std::filesystem::exists(pipeline.resultsFolder));
}

}  // namespace
}  // namespace velmorak::test
