#include "RunFixture.h"

#include "run/record/RunRecordFile.h"

#include <nlohmann/json.hpp>

namespace velmorak::test {
namespace {

using Json = nlohmann::json;

/// A runner that leaves records; "one" -> "two", and "bad" fails.
class RunRecordFile : public RunTest {
protected:
    RunRecordFile() {
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

TEST_F(RunRecordFile, holdsWhatRanAndHow) {
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

TEST_F(RunRecordFile, holdsAllDigitsOfANumberAndItsError) {
    const FreeFunction measuring("Measure", {{}, {output("mass", ValueType::Number)}},
                                 [](const Arguments&, Results& results, RunContext& context) {
                                     const CovarianceMatrix variance{
                                         .origin = context.pluginName(), .names = {"mass"}, .elements = {0.01}};
                                     results.set("mass", numbersWithErrors({1.0 / 3.0}, variance).front());
                                 });
    add(measuring, "measure");
    start("measure");
    run();
    EXPECT_EQ(record()["plugins"][0]["outputs"][0],
              Json({{"name", "mass"}, {"value", "0.3333333333333333"}, {"error", "0.1"}}));
    const StoredRunRecord stored = readRunRecord(file());
    EXPECT_EQ(stored.plugins.at("measure").results.at("error of output \"mass\""), "0.1");
}

TEST_F(RunRecordFile, listsTheInputsThatTheirKindsDeclareAsSeeds) {
    InputSpec first = numberInput("first", "4711");
    first.isSeed = true;
    const FreeFunction drawing("Draw", {{first, numberInput("seed", "5")}, {}},
                               [](const Arguments&, Results&, RunContext&) {});
    add(drawing, "draw");
    run();
    EXPECT_EQ(record()["seed"], Json({{"draw", "4711"}}));
}

TEST_F(RunRecordFile, isIncompleteWhileTheRunGoesOn) {
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

TEST_F(RunRecordFile, isIncompleteAfterAStop) {
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

TEST_F(RunRecordFile, isReportedWhenItCannotBeWrittenAndTheRunGoesOn) {
    write("test.results", "a file");
    run();
    EXPECT_EQ(status("two"), NodeStatus::Done);
    EXPECT_NE(messages.str().find("The record of the run cannot be written: " + file().string()), std::string::npos);
}

TEST_F(RunRecordFile, isNotWrittenForAPipelineWithoutPlugIns) {
    pipeline.nodes.clear();
    run();
    EXPECT_FALSE(std::filesystem::exists(pipeline.resultsFolder));
}

TEST_F(RunRecordFile, hasNoSumsOfObjectsAfterAStop) {
    const FreeFunction making("Make", {{}, {output("object", ValueType::Histogram), output("text", ValueType::Text)}},
                              [](const Arguments&, Results& results, RunContext&) {
                                  results.set("object", std::make_shared<const Histogram1D>(Axis(2, 0.0, 1.0)));
                                  results.set("text", std::string("a"));
                              });
    const FreeFunction stopping("Stop", {{wireInput("object", ValueType::Any)}, {}},
                                [this](const Arguments&, Results&, RunContext&) { runner.stop(); });
    add(making, "make");
    run();
    EXPECT_EQ(record()["plugins"][2]["outputs"].size(), 0U) << "not requested";
    start("make");
    run();
    EXPECT_EQ(record()["plugins"][0]["outputs"].size(), 2U);
    add(stopping, "stop");
    wire("make", "object", "stop", "object");
    run();
    EXPECT_EQ(record()["plugins"][0]["outcome"], "reused");
    EXPECT_EQ(record()["plugins"][0]["outputs"].size(), 1U) << "the text";
}

TEST_F(RunRecordFile, isReadAsItWasWritten) {
    write("in.txt", "content");
    const FreeFunction reading(
        "Read", {{numberInput("value")}, {output("number", ValueType::Number), output("text", ValueType::Text)}},
        [](const Arguments&, Results& results, RunContext& context) {
            context.inputFile("in.txt");
            context.writeResult("out.txt", [](const std::filesystem::path& path) { std::ofstream(path) << "out"; });
            results.set("number", 2.5);
            results.set("text", std::string("out"));
        });
    add(reading, "read");
    set("two", "value", "13");
    add(pass, "after");
    wire("two", "number", "after", "value");
    inputOf("two", "value").wire = std::nullopt;
    start("read");
    run();
    start("two");
    run();
    const StoredRunRecord two = readRunRecord(file());
    EXPECT_EQ(two.documentText, "{}\n");
    EXPECT_EQ(two.documentFile, folder / "test.zedra");
    EXPECT_EQ(two.settings, std::vector<std::string>{"one.value=2"});
    EXPECT_FALSE(two.plugins.at("two").isDone) << "it failed";
    start("read");
    run();
    const StoredRunRecord read = readRunRecord(file());
    EXPECT_TRUE(read.plugins.at("read").isDone) << "reused counts as done";
    EXPECT_EQ(read.plugins.at("read").results.at("output \"number\""), "2.5");
    EXPECT_EQ(read.plugins.at("read").results.at("output \"text\""),
              read.plugins.at("read").results.at("file \"out.txt\""));
    EXPECT_EQ(read.inputs.at("in.txt").size(), 64U);
}

TEST_F(RunRecordFile, isRefusedWithTheReasonWhenItIsNone) {
    const auto refusal = [this](const std::string& text) -> std::string {
        write("other.json", text);
        try {
            readRunRecord(folder / "other.json");
        } catch (const Failure& failure) {
            return failure.what();
        }
        return "accepted";
    };
    run();
    const std::string whole = content(file());
    EXPECT_EQ(refusal(whole), "accepted");
    const std::string start = "\"" + (folder / "other.json").string() + "\" is not a record of a run: ";
    EXPECT_EQ(refusal(whole.substr(0, 40)), start + "it is not JSON or is cut off, at byte 41");
    Json other = Json::parse(whole);
    other["run"] = 2;
    EXPECT_EQ(refusal(other.dump()), start + "its format has an unknown version");
    other["run"] = 1;
    other.erase("document");
    EXPECT_EQ(refusal(other.dump()), start + "a field that every record has is missing or has the wrong type");
    EXPECT_THROW(readRunRecord(folder / "none.json"), Failure);
}

}  // namespace
}  // namespace velmorak::test
